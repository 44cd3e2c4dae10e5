#include "Document/Windows/BrowsingPanel.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QTimer>

#include "Editor/Views/CommandTarget.h"

namespace kiv {

namespace {

constexpr auto longAsking = std::chrono::milliseconds(200);

}  // namespace

BrowsingPanel::BrowsingPanel(const PanelServices &services, const Texts &texts, FolderBrowser::Shows shows, QWidget *owner)
    : QWidget(owner, Qt::Dialog),
      services_(services),
      fieldLabel_(texts.field),
      note_(new NoteLabel(services.style, NoteLabel::Kind::box, this)),
      status_(new NoteLabel(services.style, NoteLabel::Kind::line, this)) {
    setWindowModality(Qt::WindowModal);
    setWindowTitle(onScreen(texts.title));
    setAccessibleName(windowTitle());
    setAccessibleDescription(onScreen(texts.message));
    note_->setNote(NoteTone::plain, onScreen(texts.message));
    makeField(texts.field);
    browser_ = std::make_unique<FolderBrowser>(services.style, services.files, services.jobs, shows, this);
    connectBrowser();
    makeButtons(texts.confirm);
}

void BrowsingPanel::begin(const std::string &folder) {
    ring_ = new FocusRing(services_.style, this);
    browser_->onCrumbMade = [this](QWidget *crumb) { ring_->follow(crumb); };
    for (auto *button : findChildren<QAbstractButton *>()) ring_->follow(button);
    styleChanges_ = services_.style.changed.add([this](const ViewStyle &) { layOut(); });
    resize(usualSize());
    layOut();
    browser_->goTo(folder);
}

void BrowsingPanel::open() {
    restoreFrame();
    show();
    field_->setFocus(Qt::OtherFocusReason);
    selectStem();
}

void BrowsingPanel::selectStem() { field_->setSelection(0, stemLength()); }

void BrowsingPanel::showText() {
    const QString shown = QString::fromStdString(text());
    if (field_->text() != shown) field_->setText(shown);
    refresh();
}

void BrowsingPanel::refresh() {
    const PathVerdict now = verdict();
    confirm_->setEnabled(now.canConfirm && !checking_);
    field_->setReadable(!now.isInText);
    say(now.isFault ? NoteTone::error : NoteTone::plain, now.words);
    refreshChoices();
}

void BrowsingPanel::say(NoteTone tone, const std::string &words) { status_->setNote(tone, onScreen(words)); }

void BrowsingPanel::makeField(const std::string &name) {
    field_ = new Field(services_.style, FieldContent::text, this);
    field_->setType(13, QFont::Normal);
    field_->setPadding(11);
    field_->setAccessibleName(onScreen(name));
    field_->onEnter = [this] { confirm(); };
    field_->onEscape = [this] { cancel(); };
    completion_ = new PathCompletion(*field_, services_.files, services_.jobs);
    completion_->onCompleted = [this](const QString &text) {
        setText(text.toStdString());
        refresh();
    };
    connect(field_, &QLineEdit::textEdited, this, [this] { edited(); });
}

void BrowsingPanel::connectBrowser() {
    browser_->onFolder = [this](const std::string &folder) {
        forgetCheck();
        setFolder(folder);
        showText();
    };
    browser_->onRead = [this](FolderListing::Access access) {
        setAccess(access);
        refresh();
    };
    browser_->onTaken = [this](const std::string &name, FolderBrowser::Taken taken) {
        forgetCheck();
        take(name);
        showText();
        if (taken == FolderBrowser::Taken::toSave) confirm();
    };
    browser_->onFault = [this](const std::string &words) { say(NoteTone::error, words); };
    browser_->onNewFolderLeft = [this] { field_->setFocus(Qt::OtherFocusReason); };
    browser_->onPathBegun = [this](const QString &typed) { beginPath(typed); };
}

void BrowsingPanel::beginPath(const QString &typed) {
    keepText();
    field_->setFocus(Qt::ShortcutFocusReason);
    field_->selectAll();
    field_->insert(typed);
    edited();
}

// A path begun over the proposed stem has no use for the extension that is left of the name.
void BrowsingPanel::edited() {
    forgetCheck();
    const QString before = QString::fromStdString(text()), rest = field_->text().mid(1);
    const bool isPathBegun = field_->text().startsWith('/') || field_->text().startsWith('~');
    if (isPathBegun && rest.startsWith('.') && before.endsWith(rest)) field_->setText(field_->text().left(1));
    setText(field_->text().toStdString());
    browser_->clearRow();  // what is typed is no longer the name of a row
    refresh();
    completion_->complete(begun());
}

// Whether the place can be written is asked when it is wanted, for it may be one that was typed. A disk may take its time.
void BrowsingPanel::confirm() {
    if (checking_ || !verdict().canConfirm) return;
    const auto asked = checking_ = std::make_shared<Progress>();
    const auto outcome = std::make_shared<PathCheck>();
    services_.jobs.read(
        asked, [outcome, &files = services_.files, ask = check()](Progress &) { *outcome = ask(files); },
        [self = QPointer(this), outcome, asked](std::exception_ptr) {
            if (self && self->checking_ == asked) self->checked(*outcome);
        });
    QTimer::singleShot(longAsking, this, [this, asked] {
        if (checking_ != asked) return;
        confirm_->setEnabled(false);
        say(NoteTone::plain, "Waiting for the disk…");
    });
}

void BrowsingPanel::checked(const PathCheck &check) {
    checking_.reset();
    using enum PathCheck::Outcome;
    if (check.outcome == take) return finish(check.path);
    if (check.outcome == enterFolder) {
        browser_->goTo(check.path);
        return selectStem();
    }
    refresh();
    say(NoteTone::error, check.words);
    field_->setReadable(false);
}

// Something else is chosen: what the disk says about the last choice is of no use any more.
void BrowsingPanel::forgetCheck() {
    if (checking_) checking_->cancel();
    checking_.reset();
}

void BrowsingPanel::cancel() { finish(std::nullopt); }

void BrowsingPanel::finish(const std::optional<std::string> &path) {
    if (std::exchange(isAnswered_, true)) return;
    forgetCheck();
    saveFrame();
    hide();
    deleteLater();
    answer(path);
}

void BrowsingPanel::closeEvent(QCloseEvent *event) {
    event->ignore();
    cancel();
}

bool BrowsingPanel::focusNextPrevChild(bool next) {
    const QList<QWidget *> all = stops();
    const qsizetype count = all.size();
    qsizetype at = next ? -1 : count;
    for (qsizetype i = 0; i < count; ++i)
        if (all[i] == focusWidget() || all[i]->isAncestorOf(focusWidget())) at = i;
    for (qsizetype step = 1; step <= count; ++step) {
        QWidget *stop = all[(at + (next ? step : -step) + 2 * count) % count];
        if (!stop->isVisible() || !stop->isEnabled()) continue;
        stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return true;
}

void BrowsingPanel::keyPressEvent(QKeyEvent *event) {
    if (!takeShortcut(event->key(), event->modifiers() & ~Qt::KeypadModifier)) QWidget::keyPressEvent(event);
}

bool BrowsingPanel::takeShortcut(int key, Qt::KeyboardModifiers modifiers) {
    const bool isControl = modifiers == Qt::ControlModifier;
    if (key == Qt::Key_Escape) return cancel(), true;
    if (key == Qt::Key_Return || key == Qt::Key_Enter) return confirm(), true;
    if (key == Qt::Key_Up && modifiers == Qt::AltModifier) return browser_->goToParent(), true;
    if (key == Qt::Key_Home && modifiers == Qt::AltModifier) return browser_->goHome(), true;
    if (key == Qt::Key_N && modifiers == (Qt::ControlModifier | Qt::ShiftModifier)) return browser_->beginNewFolder(), true;
    if (key == Qt::Key_L && isControl) return beginPath(QString::fromStdString(pathWithin(browser_->folder(), ""))), true;
    if (key == Qt::Key_F5 || (key == Qt::Key_R && isControl)) return browser_->read(), true;
    return false;
}

}  // namespace kiv
