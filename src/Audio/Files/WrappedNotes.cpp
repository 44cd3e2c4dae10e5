#include <algorithm>
#include <array>

#include "Audio/Files/CafChunks.h"
#include "Audio/Files/SoundNotes.h"
#include "Audio/Files/WavMetadata.h"
#include "Audio/Files/WrappingChunks.h"

namespace kiv {
namespace {

// Chunks that say nothing of the sound which the samples and the notes do not say.
bool isSilent(const SampleWrapping::Part &part) {
    static constexpr std::array<std::string_view, 11> silent{"mark", "regn", "info", "strg", "free", "kuki",
                                                             "pakt", "JUNK", "junk", "PAD ", "FLLR"};
    return part.isBare || std::ranges::find(silent, part.chunk.id) != silent.end();
}

}  // namespace

SoundNotes wrappedNotes(const AudioFileContents &contents, const SampleWrapping &wrapping) {
    if (wrapping.isFormLike()) return soundNotes(formView(contents, wrapping));
    SoundNotes notes;
    const std::vector<std::string> names = cafNames(contents, wrapping);
    for (std::uint32_t i = 0; i < names.size(); ++i) notes.markers.push_back({i, names[i]});
    const auto isCut = [](const std::string &name) { return name.size() == longestCafName; };
    if (std::ranges::any_of(names, isCut)) notes.others.push_back("the ends of long marker names");
    notes.texts = cafTexts(wrapping);
    const std::string comment = wrapping.kind == SampleWrapping::Kind::au ? noteText(wrapping.parts.at(0).chunk.data) : "";
    if (!comment.empty()) notes.texts.emplace_back("COMMENT", comment);
    for (const SampleWrapping::Part &part : wrapping.parts)
        if (!isSilent(part))
            notes.others.push_back(part.chunk.id.empty() ? "what stood behind the end" : quotedId(part.chunk.id));
    return notes;
}

}  // namespace kiv
