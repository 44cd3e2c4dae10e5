#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Audio/Files/AudioSaveFormat.h"
#include "Document/DocumentFile.h"
#include "Document/Journal/DocumentJournal.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Support/Progress.h"

namespace kiv {

// Another program has changed the file that was to be replaced, or removed it.
struct ChangedOnDisk : std::exception {};
struct GoneFromDisk : ChangedOnDisk {};

// What a file holds, to be put together where it is needed: the contents can be large.
struct SoundFile {
    std::shared_ptr<const AudioFileContents> contents;  // without the samples
    std::optional<AudioEditorBuffer> sound;             // none where nobody holds it any more

    AudioFileContents whole() const;
};

// One writing of a document's file, with everything that it needs, so that edits may go on.
struct FileSave {
    std::string path;
    std::shared_ptr<const AudioFileContents> file;  // positions and loop as they were read
    AudioEditorBuffer sound;
    std::vector<std::int64_t> markers;
    std::optional<FrameRange> loop;
    std::optional<AudioSaveFormat> format;  // another than the file's own
    DocumentFile::Identity expected;        // of the file that is to be replaced; none: whatever is there
    bool mayBeGone = false;                 // also where that is
    SoundFile onDisk;                       // what that file holds
    DocumentJournal::SaveNote note;
    std::int64_t version = 0;  // of the model's content

    // Afterwards.
    AudioFileContents contents;     // as the file stands on the disk, without samples
    std::vector<std::string> left;  // what the format has no place for
    DocumentFile::Identity written;

    // Blocks; any thread but the main and audio threads. Throws ChangedOnDisk and GoneFromDisk where another file than the
    // expected one is found, and what writeAudioFile does; the file is then as it was.
    void run(Files &files, DecodedReader *decoders, Progress &progress);
};

}  // namespace kiv
