#include "Editor/Views/InfoLine.h"

#include <QPainter>
#include <cmath>

#include "Editor/Views/CommandTarget.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;

constexpr std::pair<InfoField, const char *> fieldNames[] = {
    {InfoField::cursor, "Cursor"},
    {InfoField::selectionStart, "Start"},
    {InfoField::selectionEnd, "End"},
    {InfoField::selectionLength, "Length"},
};

}  // namespace

InfoLine::InfoLine(AudioEditorModel &model, ViewStyle &style, QWidget *parent) : QWidget(parent), model_(model), style_(style) {
    setAccessibleName(onScreen("Information"));
    makeValues();
    modelChanges_ = model.observers.add([this](const Changes &changes) {
        if (changes.containsAny({Change::audio, Change::cursor, Change::selection, Change::timeUnit})) refresh();
    });
    styleChanges_ = style.changed.add([this](const ViewStyle &) { layOut(); });
    refresh();
}

void InfoLine::makeValues() {
    for (const auto &[field, name] : fieldNames) {
        auto *value = values_[field] = new ValueReadout(style_, this);
        value->setAccessibleName(onScreen(name));
        connectInfoField(*value, model_, field);
        value->inPlace().onLeft = [this] {
            if (onLeft) onLeft();
        };
    }
}

void InfoLine::setPointer(std::optional<WaveformHover> pointer) {
    if (pointer == pointer_) return;
    pointer_ = pointer;
    refresh();
}

void InfoLine::setFacts(const FileFacts &facts) {
    if (facts == facts_) return;
    facts_ = facts;
    refresh();
    const std::vector<InfoGroup> right = infoLineScene(model_.state(), {}, facts_).right;
    setAccessibleDescription(right.empty() ? QString() : onScreen(right.front().texts.front().text));
}

void InfoLine::setProgress(std::optional<double> fraction) {
    if (fraction == progress_) return;
    progress_ = fraction;
    refresh();
}

void InfoLine::refresh() {
    const std::string spoken = spokenPlaces(scene_);
    InfoLineScene scene = infoLineScene(model_.state(), pointer_, facts_);
    if (progress_) addProgress(scene, *progress_);
    if (scene == scene_) return;
    scene_ = scene;
    layOut();
    if (onSpokenText && spokenPlaces(scene_) != spoken) onSpokenText(spokenText());
}

QString InfoLine::spokenText() const { return onScreen(spokenPlaces(scene_)); }

QFont InfoLine::fontOf(const InfoText &part) const {
    return style_.font(12, part.isLabel || part.text == "–" || part.text == "·" ? QFont::Normal : QFont::Medium);
}

void InfoLine::layOut() {
    placed_ = placedInfoTexts(scene_, width(), [this](const InfoText &part) {
        return int(std::ceil(digitTextWidth(fontOf(part), onScreen(part.text))));
    });
    for (const auto &[field, value] : values_) {
        const auto placed =
            std::find_if(placed_.begin(), placed_.end(), [field = field](const auto &p) { return p.text.field == field; });
        value->setVisible(placed != placed_.end());
        if (placed == placed_.end()) continue;
        value->setValue(onScreen(placed->text.text), infoFieldFacts(model_.state(), field));
        value->setToolTip(onScreen(infoFieldHelp(model_.state().timeUnit, field)));
        value->placeText(QRect(placed->x, 1, placed->width, height() - 1));
    }
    update();
}

void InfoLine::resizeEvent(QResizeEvent *) { layOut(); }

void InfoLine::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const ThemeColors &colors = style_.colors();
    painter.fillRect(rect(), toColor(colors[Role::topbarBg]));
    const double line = lineWidth(painter);
    fillCrisp(painter, QRectF(0, 0, width(), line), toColor(colors.hairline));
    for (const PlacedInfoText &placed : placed_) {
        if (placed.text.field) continue;  // its button shows it
        const QColor color = toColor(placed.text.isLabel ? colors[Role::infoText] : colors[Role::topbarButtonText]);
        paintDigitText(painter, QRectF(placed.x, 1, placed.width, height() - 1), Qt::AlignLeft, fontOf(placed.text), color,
                       onScreen(placed.text.text));
    }
}

}  // namespace kiv
