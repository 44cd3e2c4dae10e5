#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
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
        leavesEqOut = indexOf("Save Without EQ") < question.buttons.size();
        if (leavesEqOut) return answer(indexOf("Save Without EQ"));
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

    // Says on standard error that a file was saved without what the equalizer does.
    void tellIfEqIsLeftOut(const std::string &file) const {
        if (leavesEqOut) std::fprintf(stderr, "%s: the equalizer is not applied, so it was not saved\n", file.c_str());
    }

    // Says there what a file could not take, to those who do not get the notices.
    void tellWarnings(const std::string &file) const {
        for (const std::string &text : warnings) std::fprintf(stderr, "%s: %s\n", file.c_str(), text.c_str());
    }

    std::string error;
    std::vector<std::string> notices, warnings;  // the warnings are among the notices
    bool leavesEqOut = false;                    // what was saved was saved without the equalizer
};

}  // namespace kiv::Cli
