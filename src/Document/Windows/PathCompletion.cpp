#include "Document/Windows/PathCompletion.h"

#include <QKeyEvent>
#include <QPointer>

namespace kiv {

PathCompletion::PathCompletion(Field &field, Files &files, Jobs &jobs)
    : QObject(&field), field_(field), files_(files), jobs_(jobs) {
    field.installEventFilter(this);
}

void PathCompletion::complete(const std::optional<BegunPath> &begun) {
    begun_ = begun;
    matches_.clear();
    typed_ = field_.text();
    if (!begun || isDeleting_) return;
    if (readFolder_ == begun->folder && !begun->part.empty()) return match();
    read();
}

// A disk that takes its time is asked once, not at every letter.
void PathCompletion::read() {
    if (readingFolder_ == begun_->folder) return;
    readingFolder_ = begun_->folder;
    auto listing = std::make_shared<FolderListing>();
    const auto progress = std::make_shared<Progress>();
    jobs_.read(
        progress, [listing, &files = files_, folder = begun_->folder](Progress &p) { *listing = listFolder(files, folder, p); },
        [self = QPointer(this), listing, folder = begun_->folder](std::exception_ptr) {
            if (!self || self->readingFolder_ != folder) return;
            self->readingFolder_.clear();
            self->readFolder_ = folder;
            self->entries_ = std::move(listing->entries);
            if (self->begun_ && self->begun_->folder == folder && self->field_.text() == self->typed_) self->match();
        });
}

void PathCompletion::match() {
    if (begun_->part.empty()) return;
    matches_ = completions(entries_, begun_->part);
    if (!matches_.empty()) offer(0);
}

void PathCompletion::offer(std::size_t index) {
    offered_ = index;
    const QString above = typed_.left(typed_.size() - QString::fromStdString(begun_->part).size());
    const QString text = above + QString::fromStdString(matches_[index]) + '/';
    field_.setText(text);
    field_.setSelection(int(text.size()), int(typed_.size() - text.size()));  // the cursor stays after what was typed
    if (onCompleted) onCompleted(text);
}

bool PathCompletion::isOffered() const {
    return !matches_.empty() && field_.hasSelectedText() && field_.selectionStart() == typed_.size() &&
           field_.selectionEnd() == field_.text().size();
}

bool PathCompletion::takesOffer(int key) {
    const std::size_t count = matches_.size();
    switch (key) {
        case Qt::Key_Tab:
            field_.end(false);
            matches_.clear();
            return true;
        case Qt::Key_Down:
            return offer((offered_ + 1) % count), true;
        case Qt::Key_Up:
            return offer((offered_ + count - 1) % count), true;
        default:
            return false;
    }
}

bool PathCompletion::eventFilter(QObject *, QEvent *event) {
    if (event->type() != QEvent::KeyPress) return false;
    const auto *press = static_cast<QKeyEvent *>(event);
    isDeleting_ = press->key() == Qt::Key_Backspace || press->key() == Qt::Key_Delete;
    return press->modifiers() == Qt::NoModifier && isOffered() && takesOffer(press->key());
}

}  // namespace kiv
