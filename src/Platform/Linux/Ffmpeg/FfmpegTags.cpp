#include "Platform/Linux/Ffmpeg/FfmpegTags.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <string_view>

#include "Platform/Linux/Ffmpeg/FfmpegInput.h"

namespace kiv {
namespace {

// FFmpeg's names, and those that FLAC files have.
constexpr std::array<std::pair<std::string_view, const char *>, 4> names{
    {{"track", "TRACKNUMBER"}, {"disc", "DISCNUMBER"}, {"album_artist", "ALBUMARTIST"}, {"encoded_by", "ENCODED-BY"}}};

// What is said of the file it was, and of nothing that goes elsewhere.
bool isOfTheFile(std::string_view name) {
    static constexpr std::array<std::string_view, 17> technical{
        "encoder",      "major_brand",   "minor_version", "compatible_brands", "creation_time",
        "handler_name", "vendor_id",     "language",      "iTunSMPB",          "gapless_playback",
        "DURATION",     "WMFSDKVersion", "IsVBR",         "WMFSDKNeeded",      "DeviceConformanceTemplate",
        "PeakValue",    "AverageLevel"};
    return std::ranges::find(technical, name) != technical.end();
}

std::string keyOf(std::string_view name) {
    const auto known = std::ranges::find(names, name, &std::pair<std::string_view, const char *>::first);
    if (known != names.end()) return known->second;
    std::string key(name.starts_with("lyrics-") ? "lyrics" : name);
    std::ranges::transform(key, key.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    return key;
}

void addOnce(std::vector<std::string> &list, std::string text) {
    if (std::ranges::find(list, text) == list.end()) list.push_back(std::move(text));
}

void readTexts(const AVDictionary *from, DecodedTags &tags) {
    constexpr std::string_view privately = "id3v2_priv.";
    for (const AVDictionaryEntry *entry = nullptr; (entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX));) {
        const std::string_view name = entry->key;
        if (name.starts_with(privately))
            addOnce(tags.others, "what programs keep in the file");
        else if (!isOfTheFile(name) && *entry->value)
            tags.texts.emplace_back(keyOf(name), entry->value);
    }
}

const char *mediaTypeOf(AVCodecID codec) {
    static const std::map<AVCodecID, const char *> types{
        {AV_CODEC_ID_MJPEG, "image/jpeg"}, {AV_CODEC_ID_PNG, "image/png"},   {AV_CODEC_ID_GIF, "image/gif"},
        {AV_CODEC_ID_BMP, "image/bmp"},    {AV_CODEC_ID_TIFF, "image/tiff"}, {AV_CODEC_ID_WEBP, "image/webp"},
    };
    const auto type = types.find(codec);
    return type == types.end() ? "image/" : type->second;
}

std::string textOf(const AVDictionary *from, const char *name) {
    const AVDictionaryEntry *const entry = av_dict_get(from, name, nullptr, 0);
    return entry ? entry->value : "";
}

DecodedPicture pictureOf(const AVStream &stream) {
    const auto bytes = std::as_bytes(std::span(stream.attached_pic.data, std::size_t(stream.attached_pic.size)));
    return {mediaTypeOf(stream.codecpar->codec_id),
            textOf(stream.metadata, "comment"),
            textOf(stream.metadata, "title"),
            {bytes.begin(), bytes.end()}};
}

}  // namespace

std::optional<DecodedTags> tagsWithFfmpeg(const ByteSource &source) {
    std::array<char, 3> mark{};
    source.read(0, std::as_writable_bytes(std::span(mark)));
    const bool isTagged = std::string_view(mark.data(), mark.size()) == "ID3";
    const AVInputFormat *kind = inputFormatOf(source);
    if (!kind && isTagged) kind = av_find_input_format("mp3");  // behind a tag that is longer than what is looked at
    FfmpegInput input(source);
    const bool isOpen = kind && input.open(kind);
    input.rethrow();
    if (!isOpen) return std::nullopt;
    DecodedTags tags;
    const AVFormatContext &file = *input.file();
    readTexts(file.metadata, tags);
    for (unsigned i = 0; i < file.nb_streams; ++i) {
        const AVStream &stream = *file.streams[i];
        if (stream.disposition & AV_DISPOSITION_ATTACHED_PIC)
            tags.pictures.push_back(pictureOf(stream));
        else if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            readTexts(stream.metadata, tags);
        else
            addOnce(tags.others, "other tracks");
    }
    if (file.nb_chapters > 0) tags.others.push_back("chapters");
    return tags;
}

}  // namespace kiv
