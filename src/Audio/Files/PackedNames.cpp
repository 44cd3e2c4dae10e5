#include "Audio/Files/PackedNames.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kiv {
namespace {

constexpr const char *muLaw = "\u00B5-law", *aLaw = "A-law";

template <class Key, std::size_t count>
std::string found(const std::array<std::pair<Key, const char *>, count> &names, Key key) {
    const auto name = std::ranges::find(names, key, &std::pair<Key, const char *>::first);
    return name == names.end() ? "" : name->second;
}

}  // namespace

std::string packedWavName(unsigned formatTag) {
    static constexpr std::array<std::pair<unsigned, const char *>, 12> names{{{0x02, "Microsoft ADPCM"},
                                                                              {0x06, aLaw},
                                                                              {0x07, muLaw},
                                                                              {0x11, "IMA ADPCM"},
                                                                              {0x14, "G.723"},
                                                                              {0x31, "GSM 6.10"},
                                                                              {0x40, "G.721"},
                                                                              {0x50, "MPEG"},
                                                                              {0x55, "MP3"},
                                                                              {0xFF, "AAC"},
                                                                              {0x161, "WMA"},
                                                                              {0x2000, "AC-3"}}};
    return found(names, formatTag);
}

std::string packedName(std::string_view fourCharacters) {
    static constexpr std::array<std::pair<std::string_view, const char *>, 13> names{{{"ulaw", muLaw},
                                                                                      {"ULAW", muLaw},
                                                                                      {"alaw", aLaw},
                                                                                      {"ALAW", aLaw},
                                                                                      {"ima4", "IMA ADPCM"},
                                                                                      {"GSM ", "GSM 6.10"},
                                                                                      {"MAC3", "MACE"},
                                                                                      {"MAC6", "MACE"},
                                                                                      {"alac", "ALAC"},
                                                                                      {"aac ", "AAC"},
                                                                                      {".mp3", "MP3"},
                                                                                      {"flac", "FLAC"},
                                                                                      {"opus", "Opus"}}};
    return found(names, fourCharacters);
}

std::string packedAuName(unsigned encoding) {
    static constexpr std::array<std::pair<unsigned, const char *>, 5> names{
        {{1, muLaw}, {23, "G.721"}, {25, "G.723"}, {26, "G.723"}, {27, aLaw}}};
    return found(names, encoding);
}

}  // namespace kiv
