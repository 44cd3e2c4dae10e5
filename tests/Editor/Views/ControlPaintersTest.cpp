#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <functional>

#include "Editor/Views/ButtonPainter.h"
#include "Editor/Views/ChoicePainter.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"
#include "Editor/Views/FieldPainter.h"
#include "Editor/Views/FloatPainter.h"
#include "Editor/Views/KnobPainter.h"
#include "Editor/Views/LevelSliderView.h"
#include "Editor/Views/Paragraph.h"
#include "Editor/Views/ParameterCellPainter.h"
#include "Editor/Views/TestApplication.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

// A picture of `logical` size at a scale, probed in logical pixels.
class Picture {
public:
    Picture(QSize logical, double scale, const QColor &background)
        : image_(logical * scale, QImage::Format_ARGB32_Premultiplied) {
        image_.setDevicePixelRatio(scale);
        image_.fill(background);
    }
    template <class Paint>
    Picture &paint(Paint call) {
        QPainter painter(&image_);
        call(painter);
        return *this;
    }
    QColor at(double x, double y) const {
        const double scale = image_.devicePixelRatio();
        return image_.pixelColor(int(x * scale), int(y * scale));
    }
    QColor device(int x, int y) const { return image_.pixelColor(x, y); }
    // How many pixels of a device row have exactly this colour.
    int count(int row, const QColor &color) const {
        int found = 0;
        for (int x = 0; x < image_.width(); ++x) found += image_.pixelColor(x, row) == color;
        return found;
    }
    bool contains(const QRect &logical, const QColor &color) const {
        const double scale = image_.devicePixelRatio();
        for (int y = int(logical.top() * scale); y < (logical.bottom() + 1) * scale; ++y)
            for (int x = int(logical.left() * scale); x < (logical.right() + 1) * scale; ++x)
                if (image_.pixelColor(x, y) == color) return true;
        return false;
    }

private:
    QImage image_;
};

struct ControlPaintersTest : testing::TestWithParam<double> {
    QApplication &application = testApplication();
    ViewStyle style{AudioEditorTheme::dark()};
    const ThemeColors &colors = style.colors();
    double scale = GetParam();

    QColor color(Role role) const { return style.color(role); }
    static int lineOf(double scale) { return std::max(1, int(scale)); }
    Picture button(const ButtonLook &look) const {
        Picture picture({75, 28}, scale, color(Role::topbarBg));
        picture.paint([&](QPainter &painter) { paintButton(painter, QRectF(0, 0, 75, 28), look, style); });
        return picture;
    }
};

INSTANTIATE_TEST_SUITE_P(Scales, ControlPaintersTest, testing::Values(1.0, 1.25, 1.5, 2.0));

TEST_P(ControlPaintersTest, ButtonStatesHaveTheirColors) {
    struct Row {
        const char *name;
        ButtonLook look;
        QColor fill, border;
    };
    const Rgba rest = colors[Role::topbarButtonBg], text = colors[Role::topbarButtonText];
    const QColor line = color(Role::topbarButtonBorder), accent = color(Role::accentBg);
    const Row rows[] = {
        {"rest", {}, toColor(rest), line},
        {"hover", {.isHovered = true}, toColor(mix(rest, text, 0.08)), line},
        {"pressed", {.isHovered = true, .isPressed = true}, toColor(mix(rest, text, 0.16)), line},
        {"on", {.isOn = true}, accent, accent},
        {"action", {.kind = ButtonKind::action}, color(Role::topbarActionBg), color(Role::topbarActionBorder)},
        {"disabled", {.isEnabled = false}, toColor(rest), line},
        {"tab", {.kind = ButtonKind::tab}, color(Role::topbarBg), color(Role::topbarBg)},
        {"tab, on", {.kind = ButtonKind::tab, .isOn = true}, accent, accent},
        {"sheet", {.kind = ButtonKind::sheet}, color(Role::dialogBg), toColor(colors.fieldBorder)},
        {"default", {.kind = ButtonKind::sheetDefault}, accent, accent},
        {"default, disabled",
         {.kind = ButtonKind::sheetDefault, .isEnabled = false},
         toColor(mix(colors[Role::dialogBg], colors[Role::accentBg], 0.4)),
         toColor(mix(colors[Role::dialogBg], colors[Role::accentBg], 0.4))},
    };
    for (const Row &row : rows) {
        const Picture picture = button(row.look);
        EXPECT_EQ(picture.at(37, 5), row.fill) << row.name;
        EXPECT_EQ(picture.device(int(37 * scale), 0), row.border) << row.name;
        EXPECT_EQ(picture.device(0, int(14 * scale)), row.border) << row.name;
    }
}

TEST_P(ControlPaintersTest, CornersAreRoundOnlyWhereTheButtonStandsAlone) {
    const QColor background = color(Role::topbarBg), line = color(Role::topbarButtonBorder);
    const int right = int(std::round(75 * scale)) - 1;
    const struct {
        Corners corners;
        QColor left, right;
    } rows[] = {{Corners::all, background, background},
                {Corners::left, background, line},
                {Corners::none, line, line},
                {Corners::right, line, background}};
    for (const auto &row : rows) {
        const Picture picture = button({.corners = row.corners});
        EXPECT_EQ(picture.device(0, 0), row.left) << int(row.corners);
        EXPECT_EQ(picture.device(right, 0), row.right) << int(row.corners);
        // The border is one sharp line.
        const int thickness = lineOf(scale), middle = int(14 * scale);
        for (int i = 0; i < thickness; ++i) EXPECT_EQ(picture.device(i, middle), line);
        EXPECT_EQ(picture.device(thickness, middle), color(Role::topbarButtonBg));
    }
}

// As widgets paint: at 0, with the painter moved to the widget's place in the window.
TEST_P(ControlPaintersTest, BoxesAreFilledEvenlyWhereverTheyStand) {
    const QColor fill(Qt::red);
    for (Corners corners : {Corners::all, Corners::left, Corners::right, Corners::bottom, Corners::none})
        for (int place = 0; place < 1200; place += 7) {
            Picture picture({1240, 40}, scale, Qt::black);
            picture.paint([&](QPainter &painter) {
                painter.translate(place, 8);
                paintBox(painter, QRectF(0, 0, 32, 28), 6, fill, Qt::green, corners);
            });
            const int row = int(22 * scale);
            EXPECT_EQ(picture.count(row, fill),
                      int(std::round((place + 32) * scale)) - int(std::round(place * scale)) - 2 * lineOf(scale))
                << place << " " << int(corners);
        }
}

TEST_P(ControlPaintersTest, EveryIconIsThereAndTakesTheColorOfItsText) {
    for (const char *name :
         {"play", "stop", "go-to-start", "go-to-end", "loop-playback", "slicer", "edit-loop", "spectral", "eq", "zoom-in",
          "zoom-out", "zoom-fit", "zoom-selection", "follow-playhead", "plus", "minus", "warning", "check"}) {
        const QImage icon = style.icon(name, Qt::white, scale).toImage();
        ASSERT_EQ(icon.width(), int(std::round(16 * scale))) << name;
        int painted = 0;
        for (int y = 0; y < icon.height(); ++y)
            for (int x = 0; x < icon.width(); ++x) painted += qAlpha(icon.pixel(x, y)) > 128;
        EXPECT_GT(painted, 6 * scale) << name;
    }
    EXPECT_TRUE(style.icon("no such icon", Qt::white, scale).isNull());
    for (const bool isEnabled : {true, false}) {
        const Picture picture = button({.icon = "stop", .isEnabled = isEnabled});
        EXPECT_EQ(picture.contains({30, 6, 16, 16}, color(Role::topbarButtonText)), isEnabled);
        EXPECT_EQ(picture.contains({30, 6, 16, 16}, toColor(colors.disabled)), !isEnabled);
    }
}

TEST_P(ControlPaintersTest, SliderIsFilledFromItsOriginToItsThumb) {
    const struct {
        LevelSlider slider;
        double value;
        std::vector<int> filled, empty;
    } rows[] = {{{}, 12, {200}, {150, 300}}, {{}, -12, {150}, {200}}, {{.lo = -24, .hi = 0, .origin = -24}, -12, {20}, {300}}};
    for (const auto &row : rows) {
        LevelSlider place = row.slider;
        place.left = 16;
        place.width = 320;
        Picture picture({352, 44}, scale, color(Role::dialogBg));
        picture.paint([&](QPainter &painter) { paintLevelSlider(painter, QRectF(0, 0, 352, 44), place, row.value, style); });
        for (int x : row.filled) EXPECT_EQ(picture.at(x, 15), color(Role::accentBg)) << x;
        for (int x : row.empty) EXPECT_NE(picture.at(x, 15), color(Role::accentBg)) << x;
        EXPECT_EQ(picture.at(place.x(row.value) - 5, 15), color(Role::dialogText)) << "the thumb";
    }
}

TEST_P(ControlPaintersTest, EveryControlHasTheColorsOfItsState) {
    const QRectF place(4, 4, 80, 40);
    const Rgba bar = colors[Role::topbarBg], dialog = colors[Role::dialogBg], text = colors[Role::dialogText];
    const ParameterCellScene cell{.label = "Tail", .value = "5"};
    const auto cellIs = [&](ParameterCellLook look) {
        return [=, this](QPainter &painter) { paintParameterCell(painter, place, cell, look, style); };
    };
    const auto choiceIs = [&](ChoiceLook look) {
        return [=, this](QPainter &painter) { paintChoice(painter, place, look, {}, style); };
    };
    const auto fieldIs = [&](FieldLook look) {
        return [=, this](QPainter &painter) { paintFieldBox(painter, place, look, style); };
    };
    const auto knobIs = [&](KnobScene scene) {
        return [=, this](QPainter &painter) { paintKnob(painter, QRectF(4, 4, 38, 36), scene, {}, style); };
    };
    const auto rowIs = [&](MenuRowLook look) {
        return [=, this](QPainter &painter) { paintMenuRow(painter, place, look, style); };
    };
    const QPointF middle(76, 10), frame(44, 3), edge(44, 4.2);
    struct Row {
        const char *name;
        std::function<void(QPainter &)> paint;
        QPointF at;
        Rgba color;
    };
    const Row rows[] = {
        {"cell at rest", cellIs({}), middle, bar},
        {"cell, hover", cellIs({.isHovered = true}), middle, colors[Role::topbarButtonBg]},
        {"cell, dragged", cellIs({.isDragged = true}), middle, colors[Role::accentBg]},
        {"cell, typing", cellIs({.isTyping = true}), middle, colors[Role::waveBg]},
        {"cell, typing, frame", cellIs({.isTyping = true}), frame, colors[Role::accentBg]},
        {"cell, error", cellIs({.isTyping = true, .isReadable = false}), frame, colors.over},
        {"cell, disabled", cellIs({.isHovered = true, .isEnabled = false}), middle, bar},
        {"field", fieldIs({}), middle, colors.field},
        {"field, border", fieldIs({}), edge, colors.fieldBorder},
        {"field, typing", fieldIs({.isEdited = true}), frame, colors[Role::accentBg]},
        {"field, error", fieldIs({.isEdited = true, .isReadable = false}), frame, colors.over},
        {"check", choiceIs({}), {9, 24}, dialog},
        {"check, on", choiceIs({.isOn = true}), {7, 20}, colors[Role::accentBg]},
        {"radio, on", choiceIs({.kind = ChoiceKind::radio, .isOn = true}), {12, 24}, colors[Role::accentFg]},
        {"radio, hover", choiceIs({.kind = ChoiceKind::radio, .isHovered = true}), {12, 24}, mix(dialog, text, 0.08)},
        {"knob, value", knobIs({.fraction = 1}), {23, 6.6}, colors[Role::accentBg]},
        {"knob, gain below 0", knobIs({.fraction = 0, .origin = 0.5}), {7.6, 22}, colors[Role::accentBg]},
        {"knob, gain below 0, right", knobIs({.fraction = 0, .origin = 0.5}), {38.4, 22}, mix(dialog, text, 0.19)},
        {"knob, off", knobIs({.fraction = 1, .isOn = false}), {23, 6.6}, mix(dialog, text, 0.42)},
        {"menu row, chosen", rowIs({.text = "Cut", .shortcut = "Ctrl+X", .isChosen = true}), QPointF(7, 24),
         colors[Role::accentBg]},
    };
    for (const Row &row : rows) {
        const bool isOnBar = std::string_view(row.name).starts_with("cell");
        const Picture picture = Picture({88, 48}, scale, toColor(isOnBar ? bar : dialog)).paint(row.paint);
        EXPECT_EQ(picture.at(row.at.x(), row.at.y()), toColor(row.color)) << row.name;
    }
}

TEST_P(ControlPaintersTest, NoticesWearTheSignOfTheirKind) {
    const auto sign = [&](NoticeKind kind) {
        Picture picture({120, 36}, scale, color(Role::dialogBg));
        picture.paint([&](QPainter &painter) { paintNotice(painter, QRectF(0, 0, 120, 36), kind, "A", style); });
        return picture.contains(QRect(16, 10, 16, 16), color(Role::waveMarker));
    };
    EXPECT_TRUE(sign(NoticeKind::warning));
    EXPECT_FALSE(sign(NoticeKind::done));
    EXPECT_FALSE(sign(NoticeKind::information));
    const QString text = QString("A long story ").repeated(20);
    EXPECT_LE(noticeSize(noticeText(text, 400, style), style).width(), 401);
}

TEST(Paragraph, HasLinesOfItsHeightAndBreaksWordsThatAreTooLong) {
    testApplication();
    const ViewStyle style(AudioEditorTheme::dark());
    const ParagraphType type{style.font(13), 16};
    EXPECT_EQ(paragraphSize("", type, 200).height(), 0);
    EXPECT_EQ(paragraphSize("One line", type, 200).height(), 16);
    EXPECT_EQ(paragraphSize("One\nafter another", type, 200).height(), 32);
    const QSize wrapped = paragraphSize(QString("name").repeated(40), type, 200);
    EXPECT_LE(wrapped.width(), 200);
    EXPECT_GT(wrapped.height(), 32);
}

TEST_P(ControlPaintersTest, DigitsKeepTheirPlaces) {
    const QFont font = style.font(20, QFont::DemiBold);
    EXPECT_EQ(digitTextWidth(font, "1111.111 s"), digitTextWidth(font, "8088.808 s"));
    // The unit behind the digits is painted at the same columns whatever the digits are.
    const auto tail = [&](const char *text) {
        Picture picture({160, 28}, scale, Qt::black);
        picture.paint(
            [&](QPainter &painter) { paintDigitText(painter, QRectF(0, 0, 160, 28), Qt::AlignLeft, font, Qt::white, text); });
        std::vector<QRgb> pixels;
        const double from = digitTextWidth(font, "0.000");
        for (int y = 0; y < 28 * scale; ++y)
            for (int x = int(from * scale) + 1; x < 160 * scale; ++x) pixels.push_back(picture.device(x, y).rgb());
        return pixels;
    };
    EXPECT_EQ(tail("1.111 s"), tail("8.808 s"));
    EXPECT_NE(tail("1.111 s"), tail("1.111 m"));
}

TEST_P(ControlPaintersTest, ShadowsFallDownwardsAndFadeOut) {
    Picture picture({200, 200}, scale, Qt::white);
    picture.paint([&](QPainter &painter) { paintShadow(painter, QRectF(60, 60, 80, 60), style); });
    const auto darkness = [&](double x, double y) { return 255 - picture.at(x, y).red(); };
    EXPECT_GT(darkness(100, 130), darkness(100, 50));  // below more than above
    EXPECT_GT(darkness(100, 130), darkness(100, 160));
    EXPECT_NEAR(darkness(50, 100), darkness(149, 100), 2);  // the same at both sides
    EXPECT_LE(darkness(14, 14), 4);
}

TEST(CrispPainting, LinesAreWholeDevicePixels) {
    testApplication();
    for (const auto &[scale, one, two] : {std::tuple{1.0, 1.0, 2.0}, {1.25, 1.0, 2.0}, {1.5, 1.0, 3.0}, {2.0, 2.0, 4.0}}) {
        QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        QPainter painter(&image);
        EXPECT_DOUBLE_EQ(lineWidth(painter) * scale, one);
        EXPECT_DOUBLE_EQ(lineWidth(painter, 2) * scale, two);
        const QRectF rect = snapped(painter, QRectF(1.3, 2.1, 3.3, 1));
        for (double edge : {rect.left(), rect.right(), rect.top(), rect.bottom()})
            EXPECT_NEAR(edge * scale, std::round(edge * scale), 1e-9);
    }
}

TEST(ViewStyle, GrowsWithTheDesktopFont) {
    testApplication();
    ViewStyle style(AudioEditorTheme::dark());
    int told = 0;
    const Subscription subscription = style.changed.add([&](const ViewStyle &) { ++told; });
    struct Row {
        double points;
        double factor;
        int height;  // of what is 28 high
    };
    for (const Row &row : {Row{10, 1, 28}, Row{12.5, 1.25, 36}, Row{16, 1.6, 44}, Row{40, 1.6, 44}, Row{7, 0.9, 28}}) {
        QFont font("Inter");
        font.setPointSizeF(row.points);
        style.setDesktopFont(font);
        EXPECT_EQ(style.textFactor(), row.factor);
        EXPECT_EQ(style.grown(28), row.height);
        EXPECT_EQ(style.font(13).pixelSize(), int(std::lround(13 * row.factor)));
    }
    EXPECT_EQ(told, 3) << "16 and 40 points are the same, 10 is where it began";
    style.setDesktopFont(QFont("Sans Serif", 9));
    EXPECT_EQ(style.textFactor(), 1) << "a desktop without a font of its own has no size either";
    EXPECT_EQ(style.font(13).families().first(), "Inter");
}

}  // namespace
}  // namespace kiv
