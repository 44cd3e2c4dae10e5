#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "Document/FolderListing.h"
#include "Document/PanelPaths.h"
#include "Editor/Views/Field.h"
#include "Platform/Jobs.h"

namespace kiv {

// Completes the names of folders while a path is typed: what is added stands chosen after what was typed, so that typing goes
// on over it. The Tab key takes it, Up and Down show the next one. Folders are read off the main thread.
class PathCompletion : public QObject {
public:
    PathCompletion(Field &field, Files &files, Jobs &jobs);

    // What is being typed; nothing when it is no path. What a key has taken away is not put back.
    void complete(const std::optional<BegunPath> &begun);
    // The field has been given another text by the completion.
    std::function<void(const QString &text)> onCompleted;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool takesOffer(int key);
    bool isOffered() const;
    void offer(std::size_t index);
    void read();
    void match();

    Field &field_;
    Files &files_;
    Jobs &jobs_;
    std::optional<BegunPath> begun_;
    std::string readFolder_, readingFolder_;  // whose entries these are · which are being read
    std::vector<FolderEntry> entries_;
    std::vector<std::string> matches_;
    std::size_t offered_ = 0;
    bool isDeleting_ = false;
    QString typed_;  // all of the text that is the user's own
};

}  // namespace kiv
