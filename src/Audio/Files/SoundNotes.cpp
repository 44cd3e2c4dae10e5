#include "Audio/Files/SoundNotes.h"

#include <array>
#include <set>

namespace kiv {
namespace {

constexpr std::array keys{
    TextKey{"TITLE", "INAM", "NAME"}, TextKey{"ARTIST", "IART", "AUTH"},  TextKey{"COMMENT", "ICMT", "ANNO"},
    TextKey{"ALBUM", "IPRD", ""},     TextKey{"DATE", "ICRD", ""},        TextKey{"COPYRIGHT", "ICOP", "(c) "},
    TextKey{"GENRE", "IGNR", ""},     TextKey{"TRACKNUMBER", "ITRK", ""}, TextKey{"ENCODER", "ISFT", ""},
};

std::string fromLatin1(std::string_view text) {
    std::string utf8;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) utf8 += char(0xC0 | byte >> 6);
        utf8 += byte >= 0x80 ? char(0x80 | (byte & 0x3F)) : c;
    }
    return utf8;
}

}  // namespace

std::span<const TextKey> textKeys() { return keys; }

SoundNotes soundNotes(const AudioFileContents &contents) {
    if (contents.wrapping) return wrappedNotes(contents);
    if (contents.format.container == AudioContainer::wav) return wavNotes(contents);
    return contents.format.container == AudioContainer::coreAudio ? flacNotes(contents) : aiffNotes(contents);
}

std::vector<std::string> leftOfNotes(const SoundNotes &notes) {
    std::vector<std::string> left;
    if (notes.isAllInId3) return left;
    if (!notes.pictures.empty()) left.push_back("pictures");
    const std::vector<std::string> others = eachOnce(notes.others);
    left.insert(left.end(), others.begin(), others.end());
    return left;
}

std::vector<std::string> eachOnce(std::vector<std::string> names) {
    std::set<std::string> seen;
    std::erase_if(names, [&](const std::string &name) { return !seen.insert(name).second; });
    return names;
}

std::string noteText(std::span<const std::byte> bytes) {
    while (!bytes.empty() && bytes.back() == std::byte{0}) bytes = bytes.first(bytes.size() - 1);
    const std::string text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    return displayText(text) == text ? text : fromLatin1(text);
}

std::string quotedId(const std::string &id) {
    std::string name = displayText(id);
    while (!name.empty() && name.back() == ' ') name.pop_back();
    return "“" + name + "”";
}

}  // namespace kiv
