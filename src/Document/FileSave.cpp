#include "Document/FileSave.h"

#include <utility>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/AudioFileConversion.h"
#include "Audio/Files/SampleWrapping.h"
#include "Document/AudioFileReading.h"
#include "Document/AudioFileWriting.h"
#include "Document/FileNames.h"

namespace kiv {
namespace {

// The contents to be written, in the format asked for, with the loop as it is now; what that format has no place for is named.
AudioFileContents prepared(AudioFileContents contents, std::optional<FrameRange> loop, std::optional<AudioSaveFormat> format,
                           std::vector<std::string> &left) {
    if (contents.loop && !loop) contents = AudioFileCodec::removingLoop(std::move(contents));
    if (format) {
        auto conversion = AudioFileCodec::converted(std::move(contents), *format);
        contents = std::move(conversion.contents);
        left = std::move(conversion.left);
    }
    if (!contents.loop && loop) return AudioFileCodec::addingLoop(std::move(contents), loop->lo, loop->hi);
    return contents;
}

// The file as it stands on the disk, for the next save; the samples are the model's.
AudioFileContents asWritten(AudioFileContents contents) {
    if (contents.wrapping) contents.wrapping = wrappingFor(std::move(*contents.wrapping), contents.buffer);
    contents.buffer = AudioEditorBuffer(contents.buffer.channels(), contents.buffer.sampleRate());
    std::erase_if(contents.chunks, [](const AudioFileChunk &chunk) { return isStaleChunkId(chunk.id); });
    return contents;
}

void requireAsExpected(Files &files, DecodedReader *decoders, const std::string &path, const DocumentFile::Identity &expected,
                       const SoundFile &onDisk, Progress &progress) {
    const auto now = files.identity(path);
    // Without its folder it cannot be written anew either, which is said then.
    if (expected && !now && files.identity(parentFolder(path))) throw GoneFromDisk();
    if (expected && now && now != expected && !holdsStill(files, decoders, path, onDisk.whole(), progress))
        throw ChangedOnDisk();
}

// After a save has succeeded its success is not to be lost again.
DocumentFile::Identity identityIfKnown(Files &files, const std::string &path) {
    try {
        return files.identity(path);
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

}  // namespace

AudioFileContents SoundFile::whole() const {
    AudioFileContents all = *contents;
    if (sound) all.buffer = *sound;
    return all;
}

void FileSave::run(Files &files, DecodedReader *decoders, Progress &progress) {
    if (!mayBeGone || files.identity(path)) requireAsExpected(files, decoders, path, expected, onDisk, progress);
    onDisk = {};  // which may hold a sound of its own
    contents = withEditorPositions(SoundFile{file, sound}.whole(), markers, loop);
    contents = prepared(std::move(contents), loop, format, left);
    NotedFiles noted(files, note);
    writeAudioFile(noted, decoders, path, contents, progress);
    written = identityIfKnown(files, path);
    contents = asWritten(std::move(contents));
}

}  // namespace kiv
