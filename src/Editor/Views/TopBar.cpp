#include "Editor/Views/TopBar.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <cmath>
#include <cstdlib>

#include "Editor/Surfaces/TimeEntry.h"
#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/DigitText.h"
#include "Editor/Views/EventTools.h"

namespace kiv {

namespace {

using Role = AudioEditorThemeColor;
using Command = EditorCommand;
using Item = TopBarItem;

// A button that performs a command, with its icon and its words where it has any.
struct CommandButton {
    Item item;
    Command command;
    const char *icon;
    bool hasWords = false;
    Corners corners = Corners::all;
};

constexpr CommandButton commandButtons[] = {
    {Item::goToStart, Command::goToStart, "go-to-start"},
    {Item::playStop, Command::playStop, "play"},
    {Item::goToEnd, Command::goToEnd, "go-to-end"},
    {Item::loop, Command::loop, "loop-playback"},
    {Item::slicer, Command::slicer, "slicer", true},
    {Item::editLoop, Command::editLoop, "edit-loop", true},
    {Item::spectral, Command::spectral, "spectral", true},
    {Item::eq, Command::eq, "eq", true},
    {Item::verticalZoomOut, Command::verticalZoomOut, "minus", false, Corners::left},
    {Item::verticalZoomIn, Command::verticalZoomIn, "plus", false, Corners::right},
    {Item::zoomOut, Command::zoomOut, "zoom-out", false, Corners::left},
    {Item::zoomIn, Command::zoomIn, "zoom-in", false, Corners::none},
    {Item::zoomFit, Command::zoomFit, "zoom-fit", false, Corners::none},
    {Item::zoomSelection, Command::zoomSelection, "zoom-selection", false, Corners::right},
    {Item::followPlayhead, Command::followPlayhead, "follow-playhead"},
};

}  // namespace

TopBar::TopBar(AudioEditorModel &model, ViewStyle &style, CommandTarget &target, QWidget *parent)
    : QWidget(parent), model_(model), style_(style), target_(target) {
    makeControls();
    connectButtons();
    connectPosition();
    shareVerticalZoomWheel();
    modelChanges_ = model.observers.add([this](const Changes &changes) { changed(changes); });
    styleChanges_ = style.changed.add([this](const ViewStyle &) {
        layOut();
        update();
    });
    refresh();
    refreshCommands();
    refreshTips();
}

// In their order on the bar, which is that of the Tab key.
void TopBar::makeControls() {
    for (int i = 0; i < topBarItemCount; ++i) {
        const auto item = Item(i);
        if (item == Item::position)
            position_ = new ValueButton(style_, this);
        else
            buttons_[std::size_t(i)] = new Button(style_, item == Item::playStop ? ButtonKind::action : ButtonKind::bar, this);
    }
}

void TopBar::connectButtons() {
    for (const CommandButton &row : commandButtons) {
        Button *made = button(row.item);
        made->setIconName(row.icon);
        made->setCorners(row.corners);
        made->setCheckable(target_.isToggle(row.command));
        made->setAccessibleName(titleText(row.command));
        connect(made, &QPushButton::clicked, this, [this, command = row.command] {
            target_.perform(command);
            refreshCommands();  // the click has turned the button over, whatever the command did
        });
    }
    setAccessibleName("Controls");
    button(Item::maxLevel)->setAccessibleName("Max");
    button(Item::maxLevel)->setToolTip("Highest level heard while playing. Click to reset.");
    button(Item::maxLevel)->setHasDigits(true);
    connect(button(Item::maxLevel), &QPushButton::clicked, this, [this] { model_.setMaxLevel({}); });
    button(Item::verticalZoomValue)->setAccessibleName(titleText(Command::verticalZoomReset));
    button(Item::verticalZoomValue)->setCorners(Corners::none);
    button(Item::verticalZoomValue)->setHasDigits(true);
    connect(button(Item::verticalZoomValue), &QPushButton::clicked, this,
            [this] { target_.perform(Command::verticalZoomReset); });
}

void TopBar::connectPosition() {
    position_->setType(20, QFont::DemiBold);
    position_->setAccessibleName("Cursor");
    position_->onEntered = [this](const std::string &typed) { return enterPosition(typed); };
    position_->onLeft = [this] {
        if (onLeft) onLeft();
    };
}

bool TopBar::enterPosition(const std::string &typed) {
    const AudioEditorState &state = model_.state();
    const auto frame = parseTimeEntry(typed, state.timeUnit, state.buffer.sampleRate(), state.buffer.frames());
    if (!frame) return false;
    model_.placeCursor(*frame);
    model_.revealFrame(double(model_.state().cursorFrame));
    return true;
}

void TopBar::changed(const Changes &changes) {
    refresh();
    // While sound plays, only the read-outs move.
    Changes rest = changes;
    rest.bits &= ~(std::uint32_t(Change::playheads) | std::uint32_t(Change::maxLevel) | std::uint32_t(Change::pointer));
    if (rest.bits) refreshCommands();
    if (changes.containsAny({Change::audio, Change::timeUnit})) layOut();
}

void TopBar::refresh() {
    const TopBarScene scene = topBarScene(model_.state());
    if (scene == scene_) return;
    scene_ = scene;
    position_->setValue(onScreen(scene.position));
    Button &max = *button(Item::maxLevel), &zoom = *button(Item::verticalZoomValue);
    max.setLabelAndText("Max", onScreen(scene.maxLevel));
    max.setOver(scene.isOver);
    zoom.setLabelAndText({}, onScreen(scene.verticalZoom));
    zoom.setToolTip(tipText("Reset vertical zoom (now " + onScreen(scene.verticalZoom) + ")",
                            target_.shortcutText(Command::verticalZoomReset)));
    max.setAccessibleDescription(onScreen(scene.maxLevel) + ". " + max.toolTip());
    zoom.setAccessibleDescription(onScreen(scene.verticalZoom) + ". " + zoom.toolTip());
    button(Item::playStop)->setIconName(scene.isPlaying ? "stop" : "play");
    button(Item::playStop)->setOn(scene.isPlaying);
}

void TopBar::refreshCommands() {
    for (const CommandButton &row : commandButtons) {
        if (!target_.isWaiting(row.command)) button(row.item)->setEnabled(target_.isEnabled(row.command));
        if (button(row.item)->isCheckable()) button(row.item)->setChecked(target_.isChecked(row.command));
    }
    position_->setEnabled(!model_.state().buffer.isEmpty());
}

void TopBar::refreshTips() {
    for (const CommandButton &row : commandButtons)
        button(row.item)->setToolTip(tipText(titleText(row.command), target_.shortcutText(row.command)));
}

int TopBar::positionWidth() const {
    const AudioEditorState &state = model_.state();
    const auto longest = format(state.timeUnit, double(state.buffer.frames()), state.buffer.sampleRate());
    const double width = digitTextWidth(style_.font(20, QFont::DemiBold), onScreen(longest));
    // The control reaches a little beyond its place, which is room for a long text too.
    return std::max(int(std::lround(104 * style_.textFactor())), int(std::ceil(width)) - ValueButton::reach);
}

TopBarMeasures TopBar::measures() const {
    const auto widthOf = [&](const QString &label, const QString &value, const char *icon) {
        return buttonWidth({.icon = icon, .label = label, .text = value, .hasDigits = !*icon}, style_);
    };
    TopBarMeasures measures;
    for (const CommandButton &row : commandButtons)
        if (row.hasWords)
            measures.wordedWidths[std::size_t(int(row.item) - int(Item::slicer))] =
                widthOf({}, titleText(row.command), row.icon);
    measures.positionWidth = positionWidth();
    measures.maxLevelWidth = std::max(106, widthOf("Max", "−88.8 dB", ""));
    measures.verticalValueWidth = std::max(60, widthOf({}, "−88 dB", "") - 4);
    measures.barHeight = barHeight();
    measures.buttonHeight = style_.grown(28);
    return measures;
}

void TopBar::layOut() {
    const TopBarLayout layout(width(), measures());
    separator_ = layout.separator;
    for (const CommandButton &row : commandButtons)
        if (row.hasWords) button(row.item)->setLabelAndText({}, layout.showsWords ? titleText(row.command) : QString());
    for (int i = 0; i < topBarItemCount; ++i) {
        const std::optional<Box> &box = layout[Item(i)];
        QWidget *control = Item(i) == Item::position ? static_cast<QWidget *>(position_) : button(Item(i));
        control->setVisible(box.has_value());
        if (!box) continue;
        control == position_ ? position_->placeText(toRect(*box)) : control->setGeometry(toRect(*box));
    }
    update();
}

void TopBar::resizeEvent(QResizeEvent *) { layOut(); }

void TopBar::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), style_.color(Role::topbarBg));
    fillCrisp(painter, toRect(separator_), toColor(style_.colors().hairline));
}

void TopBar::wheelEvent(QWheelEvent *event) { event->accept(); }

void TopBar::mousePressEvent(QMouseEvent *event) { event->accept(); }

void TopBar::shareVerticalZoomWheel() {
    for (Item item : {Item::verticalZoomOut, Item::verticalZoomValue, Item::verticalZoomIn})
        button(item)->installEventFilter(this);
}

// The wheel over the vertical zoom group steps it.
bool TopBar::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::Wheel) return QWidget::eventFilter(watched, event);
    const int steps = wheelSteps_.add(controlTurn(*static_cast<QWheelEvent *>(event)).up);
    for (int i = 0; i < std::abs(steps); ++i) target_.perform(steps > 0 ? Command::verticalZoomIn : Command::verticalZoomOut);
    return true;
}

}  // namespace kiv
