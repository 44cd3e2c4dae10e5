#include "ComponentSheet.h"

#include <QPainter>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/KnobGeometry.h"
#include "Editor/Surfaces/LevelSlider.h"
#include "Editor/Surfaces/RulerScene.h"
#include "Editor/Surfaces/WaveformScene.h"
#include "Editor/Views/ButtonPainter.h"
#include "Editor/Views/ChoicePainter.h"
#include "Editor/Views/DigitText.h"
#include "Editor/Views/FieldPainter.h"
#include "Editor/Views/FloatPainter.h"
#include "Editor/Views/FocusRing.h"
#include "Editor/Views/KnobPainter.h"
#include "Editor/Views/LevelSliderView.h"
#include "Editor/Views/ListRowPainter.h"
#include "Editor/Views/NoteBoxPainter.h"
#include "Editor/Views/ParameterCellPainter.h"
#include "Editor/Views/PathBar.h"
#include "Editor/Views/RulerPainter.h"
#include "Editor/Views/WaveformPainter.h"
#include "Platform/Fake/FakeDefaults.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

// Where to paint and with what.
struct Page {
    QPainter &painter;
    ViewStyle &style;

    void text(double x, double y, double height, const QFont &font, Rgba color, const QString &words) const {
        painter.setFont(font);
        painter.setPen(toColor(color));
        painter.drawText(QRectF(x, y, 600, height), Qt::AlignLeft | Qt::AlignVCenter, words);
    }
    void heading(double x, double y, const QString &words) const {
        text(x, y, 16, style.font(13, QFont::DemiBold), style.colors()[Role::topbarButtonText], words);
    }
    void label(double x, double y, const QString &words) const { text(x, y, 14, style.font(11), style.colors().dim, words); }
};

void paintButtons(const Page &page) {
    page.heading(32, 24, "Buttons");
    const std::pair<const char *, ButtonLook> states[] = {
        {"rest", {}},           {"hover", {.isHovered = true}},           {"pressed", {.isPressed = true}},
        {"on", {.isOn = true}}, {"action", {.kind = ButtonKind::action}}, {"disabled", {.isEnabled = false}},
        {"keyboard focus", {}},
    };
    double x = 32;
    for (const auto &[name, state] : states) {
        const bool isFocused = QString(name) == "keyboard focus";
        page.label(x, 52, name);
        ButtonLook words = state, icon = state;
        words.icon = "slicer";
        words.text = "Slicer";
        icon.icon = "zoom-fit";
        const QRectF wide(x + (isFocused ? 0 : 0), 72, buttonWidth(words, page.style), 28), small(wide.left(), 110, 32, 28);
        paintButton(page.painter, wide, words, page.style);
        paintButton(page.painter, small, icon, page.style);
        if (isFocused)
            for (const QRectF &ringed : {wide, small}) paintFocusRing(page.painter, ringed, page.style);
        x += 118;
    }
}

void paintSegments(const Page &page) {
    page.heading(32, 164, "Segments and parameter cells");
    const struct {
        const char *text;
        Corners corners;
        bool isOn;
    } segments[] = {
        {"Strip Silence", Corners::none, false}, {"Grid", Corners::right, false}, {"Transients", Corners::left, true}};
    double x = 32 + 82;
    for (const auto &segment : segments) {
        const ButtonLook look{.corners = segment.corners, .text = segment.text, .isSegment = true, .isOn = segment.isOn};
        const int width = buttonWidth(look, page.style);
        paintButton(page.painter, QRectF(segment.isOn ? 32 : x, 192, width, 28), look, page.style);
        x += width - 1;
    }
}

void paintCells(const Page &page) {
    const struct {
        const char *name, *value;
        ParameterCellLook look;
        double x;
        bool isFocused;
    } cells[] = {
        {"rest", "50", {}, 280, false},
        {"hover", "50", {.isHovered = true}, 372, false},
        {"focus", "50", {.isHovered = true}, 464, true},
        {"dragging", "65", {.isDragged = true}, 564, false},
        {"typing", "72", {.isTyping = true}, 660, false},
    };
    for (const auto &cell : cells) {
        const QRectF box(cell.x, 200, 80, 40);
        page.label(cell.x + 8, 184, cell.name);
        paintParameterCell(page.painter, box, {.label = "Sensitivity", .value = cell.value, .unit = "%"}, cell.look,
                           page.style);
        if (cell.isFocused) paintFocusRing(page.painter, box, page.style);
    }
    page.text(668, 218, 18, page.style.font(13, QFont::DemiBold), page.style.colors()[Role::topbarButtonText], "72");
    page.text(694, 218, 18, page.style.font(13), page.style.colors().dim, "%");
}

void paintFields(const Page &page) {
    const ThemeColors &colors = page.style.colors();
    page.heading(32, 268, "Fields, choices, knobs");
    paintBox(page.painter, QRectF(32, 296, 788, 120), 10, toColor(colors[Role::dialogBg]));
    for (const auto &[x, text, isEdited] : {std::tuple{48, "−1.0", false}, std::tuple{160, "+3.0", true}}) {
        const QRectF box(x, 312, 96, 32);
        paintFieldBox(page.painter, box, {.isEdited = isEdited}, page.style);
        page.text(x + 69, 312, 32, page.style.font(13), colors.dialogDim, "dB");
        paintDigitText(page.painter, box.adjusted(0, 0, -33, 0), Qt::AlignRight, page.style.font(13, QFont::Medium),
                       toColor(colors[Role::dialogText]), text);
    }
    const LevelSlider slider{.ticks = 3, .left = 16, .width = 192};
    paintLevelSlider(page.painter, QRectF(46, 358, 224, 44), slider, 6, page.style);
}

void paintChoices(const Page &page) {
    const struct {
        const char *text;
        ChoiceLook look;
        QRectF rect;
    } choices[] = {
        {"Checked", {.kind = ChoiceKind::check, .isOn = true}, {300, 312, 120, 28}},
        {"Not checked", {.kind = ChoiceKind::check}, {300, 340, 120, 28}},
        {"Seconds", {.kind = ChoiceKind::radio, .isOn = true}, {300, 374, 90, 28}},
        {"Samples", {.kind = ChoiceKind::radio}, {397, 374, 90, 28}},
    };
    for (const auto &choice : choices) paintChoice(page.painter, choice.rect, choice.look, choice.text, page.style);
    const struct {
        const char *text;
        ButtonKind kind;
        bool isEnabled;
        QRectF rect;
    } buttons[] = {
        {"Cancel", ButtonKind::sheet, true, {500, 312, 84, 32}},
        {"Apply", ButtonKind::sheetDefault, true, {592, 312, 84, 32}},
        {"Apply", ButtonKind::sheetDefault, false, {500, 362, 84, 32}},
    };
    for (const auto &button : buttons)
        paintButton(page.painter, button.rect, {.kind = button.kind, .text = button.text, .isEnabled = button.isEnabled},
                    page.style);
}

void paintKnobs(const Page &page) {
    const struct {
        KnobScene scene;
        double x, y;
    } knobs[] = {
        {{.fraction = 0.62, .text = "1.10 kHz"}, 705, 309},
        {{.fraction = 0.66, .origin = 0.5, .text = "+6.4 dB"}, 758, 309},
        {{.fraction = 0.5, .text = "off", .isOn = false}, 700, 361},
        {{.fraction = 0.5, .origin = 0.5, .text = "0.0 dB"}, 756, 361},
    };
    for (const auto &knob : knobs) {
        paintKnob(page.painter, QRectF(knob.x, knob.y, KnobGeometry::width, KnobGeometry::height), knob.scene, {}, page.style);
        paintKnobText(page.painter, QRectF(knob.x - 20, knob.y + 36, KnobGeometry::width + 40, 14), knob.scene, {}, page.style);
    }
}

void paintType(const Page &page) {
    page.heading(32, 448, "Type");
    const struct {
        const char *name;
        int pixels;
        QFont::Weight weight;
        const char *sample;
    } lines[] = {
        {"20 / 28 semibold", 20, QFont::DemiBold, "1:05.250"},
        {"15 / 20 semibold", 15, QFont::DemiBold, "Convert to Mono"},
        {"13 / 16 medium", 13, QFont::Medium, "Edit Loop"},
        {"13 / 16 regular", 13, QFont::Normal, "Scroll the view with the playhead"},
        {"12 / 16 regular", 12, QFont::Normal, "WAV · 24-bit · 48 kHz · Stereo"},
        {"11 / 14 regular", 11, QFont::Normal, "500 ms   −12   1k"},
    };
    double y = 475;
    for (const auto &line : lines) {
        page.label(32, y + 7, line.name);
        page.text(168, y, 28, page.style.font(line.pixels, line.weight), page.style.colors()[Role::topbarButtonText],
                  line.sample);
        y += 34;
    }
}

// The real ruler, lane and waveform, of two seconds of silence.
void paintMarks(const Page &page) {
    page.heading(448, 448, "Marks");
    FakeDefaults defaults;
    Settings settings(defaults);
    Clipboard clipboard;
    AudioEditorModel model(settings, clipboard);
    model.load(AudioEditorBuffer(std::vector<float>(372 * 16), 1, 8000), {64 * 16}, FrameRange{206 * 16, 282 * 16});
    model.select({96 * 16, 156 * 16});
    model.setPlayheads({{.frame = 180 * 16}});
    const double scale = page.painter.device()->devicePixelRatioF();
    TextCache texts;
    page.painter.save();
    page.painter.setClipRect(QRectF(448, 476, 372, 40));
    page.painter.translate(448 - 44, 476);
    const RulerScene ruler = rulerScene(model.state(), {416, 40, scale}, {});
    page.painter.scale(1 / scale, 1 / scale);
    paintRuler(page.painter, ruler, page.style, texts, QRect(0, 0, int(416 * scale), int(40 * scale)));
    page.painter.restore();
    page.painter.save();
    page.painter.setClipRect(QRectF(448, 516, 372, 172));
    page.painter.translate(448, 516);
    page.painter.scale(1 / scale, 1 / scale);
    const WaveformScene scene = waveformScene(model.state(), {372, 172, scale}, {});
    paintWaveform(page.painter, scene, {}, page.style, texts, QRect(0, 0, int(372 * scale), int(172 * scale)));
    page.painter.restore();
}

void paintMenu(const Page &page) {
    page.heading(872, 24, "Menu");
    const MenuRowLook rows[] = {
        {"Cut", "Ctrl+X"},
        {"Copy", "Ctrl+C"},
        {"Paste", "Ctrl+V"},
        {"Delete", "Backspace"},
        {"Trim to Selection", "Shift+T"},
        {},
        {.text = "Gain…", .shortcut = "Shift+G", .isChosen = true},
        {"Normalize…", "Shift+N"},
        {"Fade In", "Shift+I"},
        {"Fade Out", "Shift+O"},
        {"Silence", "Shift+S"},
        {"Reverse", "Shift+R"},
        {},
        {"Zoom to Selection", "Z"},
        {"Save Selection As…", "Alt+Shift+S"},
    };
    paintFloat(page.painter, QRectF(872, 52, 288, 394), menuRadius, page.style);
    double y = 52 + menuPadding;
    for (const MenuRowLook &look : rows) {
        const int height = look.text.isEmpty() ? menuRuleHeight : menuRowHeight(page.style);
        const QRectF row(872 + menuPadding, y, 288 - 2 * menuPadding, height);
        look.text.isEmpty() ? paintMenuRule(page.painter, row, page.style) : paintMenuRow(page.painter, row, look, page.style);
        y += height;
    }
}

void paintTipAndNotice(const Page &page) {
    page.heading(872, 520, "Help tip");
    const QString tip =
        "Minimum time to accept as silence: shorter dips below the threshold do not split a slice. Scroll or drag up / down = "
        "10 "
        "ms, with Shift = 1 ms; double-click = default. Resets the slices.";
    const QRectF box(QPointF(872, 548), QSizeF(360, tipSize(tip, page.style, 360).height()));
    paintFloat(page.painter, box, tipRadius, page.style);
    paintTipText(page.painter, box, tip, page.style);
    page.heading(872, 648, "Notice");
    const QString notice = "18 slices saved in “late train.slices”";
    const QRectF pill(QPointF(872, 676), noticeSize(notice, page.style));
    paintFloat(page.painter, pill, pill.height() / 2, page.style);
    paintNotice(page.painter, pill, NoticeKind::done, notice, page.style);
}

// In a window.
void paintNotes(const Page &page) {
    page.heading(32, 716, "Notes and the way to a folder");
    paintBox(page.painter, QRectF(32, 744, 372, 232), 10, page.style.color(Role::dialogBg));
    const std::tuple<NoteTone, const char *, int> notes[] = {
        {NoteTone::plain, "MP3 files can't be written: choose a format.", 760},
        {NoteTone::warning, "The chosen device is not connected.", 804},
        {NoteTone::error, "Something is wrong.", 848},
    };
    for (const auto &[tone, text, y] : notes)
        paintNoteBox(page.painter, QRectF(48, y, 340, noteBoxHeight(text, 340, page.style)), tone, text, page.style);
    paintNoteLine(page.painter, QRectF(48, 900, 340, 16), NoteTone::error, "This folder cannot be written to", page.style);
    QWidget window;
    auto *bar = new PathBar(page.style, &window);
    bar->setCrumbs(folderCrumbs("/home/ann/Music/Interviews", "/home/ann"));
    bar->resize(340, bar->barHeight());
    bar->render(&page.painter, QPoint(48, 932), {}, QWidget::DrawChildren);
}

void paintList(const Page &page) {
    page.heading(448, 716, "List rows");
    paintListBox(page.painter, QRectF(448, 744, 372, 232), page.style);
    const ListColumns columns{.second = 80, .third = 100};
    paintListHeader(page.painter, QRectF(456, 752, 356, 24), {"Name", "Size", "Changed"}, columns, page.style);
    const std::pair<ListRow, ListRowLook> rows[] = {
        {{"A folder", "", "Today", "folder"}, {}},
        {{"dim.mp3", "28.8 MB", "Today"}, {.isDim = true}},
        {{"under the pointer.wav", "115 MB", "Yesterday"}, {.isHovered = true}},
        {{"chosen.wav", "17.3 MB", "3 Nov"}, {.isChosen = true}},
        {{"chosen by a key.wav", "9.1 MB", "3 Nov 2024"}, {.isChosen = true, .isFocused = true}},
        {{"a name that is too long for the room that it has.wav", "1 byte", "Today"}, {}},
    };
    double y = 777;
    for (const auto &[row, look] : rows) {
        paintListRow(page.painter, QRectF(456, y, 356, listRowHeight(page.style)), row, look, columns, page.style);
        y += listRowHeight(page.style);
    }
}

}  // namespace

QImage componentSheet(ViewStyle &style, double scale) {
    QImage image(QSize(1280, 1000) * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(style.color(Role::topbarBg));
    QPainter painter(&image);
    const Page page{painter, style};
    for (const auto paint : {paintButtons, paintSegments, paintCells, paintFields, paintChoices, paintKnobs, paintType,
                             paintMarks, paintMenu, paintTipAndNotice, paintNotes, paintList})
        paint(page);
    return image;
}

}  // namespace kiv
