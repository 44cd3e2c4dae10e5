#include "Editor/AudioEditorCore/AudioEditorMonoSource.h"

namespace kiv {

std::string_view storedText(AudioEditorMonoSource source) {
    switch (source) {
        case AudioEditorMonoSource::left:
            return "left";
        case AudioEditorMonoSource::right:
            return "right";
        case AudioEditorMonoSource::mix:
            break;
    }
    return "mix";
}

std::optional<AudioEditorMonoSource> monoSourceFromText(std::string_view text) {
    for (const AudioEditorMonoSource source : allMonoSources)
        if (storedText(source) == text) return source;
    return std::nullopt;
}

}  // namespace kiv
