#include "Document/FileFaults.h"

#include "Editor/AudioEditorCore/AudioEditorTimeUnit.h"

namespace kiv {

std::vector<std::string> faultTexts(const std::string &name, const AudioFileContents &contents, std::int64_t frames) {
    const auto seconds = [&](std::int64_t count) {
        return format(AudioEditorTimeUnit::seconds, double(count), contents.buffer.sampleRate());
    };
    std::vector<std::string> texts;
    if (contents.missingFrames > 0)
        texts.push_back(name + " ends early: " + seconds(frames) + " of " + (contents.isCutOff ? "at least " : "") +
                        seconds(frames + contents.missingFrames) + " are there");
    else if (contents.isCutOff)
        texts.push_back(name + " ends early: only the first " + seconds(frames) + " are there");
    if (contents.damagedFrames > 0)
        texts.push_back(name + " is damaged: " + seconds(contents.damagedFrames) + " of " + seconds(frames) +
                        " could not be read and are silent");
    return texts;
}

}  // namespace kiv
