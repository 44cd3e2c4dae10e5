#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Audio/Files/AudioSaveFormat.h"

namespace kiv {

enum class NoticeKind { done, information, warning };

// What the document asks and tells its user. Windows answer with sheets, tests from a script, `kiv` from its options. Main
// thread only; an answer may come at once or much later, and not at all once the document is gone.
class DocumentUi {
public:
    virtual ~DocumentUi() = default;

    struct Question {
        std::string message;
        std::string informative;
        std::vector<std::string> buttons;  // the first is the default, "Cancel" or "Later" the one that Esc means
    };
    // The answer is the index of the button.
    virtual void ask(const Question &question, std::function<void(std::size_t)> answer) = 0;
    // Where to write; nothing when the user will not say, which is also the answer of who cannot ask.
    struct FolderChoice {
        std::string folder;  // to begin with
        std::string message;
        std::string prompt;  // of the button
    };
    virtual void chooseFolder(const FolderChoice &, std::function<void(const std::optional<std::string> &)> answer) {
        answer(std::nullopt);
    }
    // A file to write, and in what format. Whether a file there may be replaced is asked for afterwards, by the document.
    struct SavePanel {
        std::string title;                      // "Save As"
        std::string message;                    // in a note box at the top; may be empty
        std::string path;                       // proposed
        std::optional<AudioSaveFormat> format;  // chosen at first; without one there is no choice of format
    };
    struct SaveTarget {
        std::string path;
        std::optional<AudioSaveFormat> format;  // where there was a choice
    };
    virtual void chooseFile(const SavePanel &, std::function<void(const std::optional<SaveTarget> &)> answer) {
        answer(std::nullopt);
    }
    virtual void showError(const std::string &message, const std::string &informative) = 0;
    virtual void showNotice(NoticeKind kind, const std::string &text) = 0;
};

}  // namespace kiv
