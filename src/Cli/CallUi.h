#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "Document/DocumentUi.h"

namespace kiv::Cli {

// Nobody is there to ask: a question is answered by not doing what it asks about, and a folder is taken as it is, so that
// writing in it fails with the reason.
class CallUi : public DocumentUi {
public:
    void ask(const Question &question, std::function<void(std::size_t)> answer) override {
        const auto indexOf = [&](const char *button) {
            return std::size_t(std::ranges::find(question.buttons, button) - question.buttons.begin());
        };
        if (const std::size_t withoutEq = indexOf("Save Without EQ"); withoutEq < question.buttons.size()) {
            leavesEqOut = true;
            return answer(withoutEq);
        }
        error = question.message + ".";
        answer(indexOf("Cancel"));
    }
    void chooseFolder(const FolderChoice &choice, std::function<void(const std::optional<std::string> &)> answer) override {
        answer(choice.folder);
    }
    void chooseFile(const SavePanel &panel, std::function<void(const std::optional<SaveTarget> &)> answer) override {
        error = panel.message;
        answer(std::nullopt);
    }
    void showError(const std::string &, const std::string &informative) override { error = informative; }
    void showNotice(NoticeKind kind, const std::string &text) override {
        notices.push_back(text);
        if (kind == NoticeKind::warning) warnings.push_back(text);
    }

    // Says on standard error that this file was saved without what the equalizer does, if it was.
    void tellIfEqIsLeftOut(const std::string &file) {
        if (std::exchange(leavesEqOut, false))
            std::fprintf(stderr, "%s: the equalizer is not applied, so it was not saved\n", file.c_str());
    }

    // Says there what is wrong with a file that was read, or could not be put into one that was written, to those who do not
    // get the notices.
    void tellWarnings(const std::string &file) {
        for (const std::string &text : std::exchange(warnings, {}))
            std::fprintf(stderr, "%s: %s\n", file.c_str(), text.c_str());
    }

    std::string error;
    std::vector<std::string> notices;
    std::vector<std::string> warnings;  // those of the notices that have not been told yet
    bool leavesEqOut = false;           // what was saved last was saved without the equalizer, which has not been told yet
};

}  // namespace kiv::Cli
