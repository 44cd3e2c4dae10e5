#include "Document/SlicesFolder.h"

#include <algorithm>

#include "Audio/Files/AudioFileConversion.h"
#include "Document/AudioFileWriting.h"
#include "Document/FileNames.h"
#include "Document/SaveFormats.h"
#include "Editor/AudioEditorCore/AudioEditorOps.h"

namespace kiv {
namespace {

AudioFileContents sliceContents(const SlicesToSave &saving, FrameRange slice) {
    const AudioEditorBuffer sound = AudioEditorOps::slice(saving.sound, slice);
    return AudioFileCodec::partContents(AudioEditorOps::sliceFaded(sound, saving.fadeIn, saving.fadeOut), *saving.contents);
}

}  // namespace

std::string slicesFolderName(const std::string &path) { return fileStem(path) + ".slices"; }

std::string sliceFileStem(std::string name, std::size_t index, std::size_t count) {
    std::ranges::replace_if(
        name, [](char c) { return c == '/' || c == ':'; }, '-');
    std::string number = std::to_string(index + 1);
    const std::size_t width = std::max<std::size_t>(2, std::to_string(count).size());
    number.insert(0, width - std::min(width, number.size()), '0');
    return name + "-" + number;
}

std::vector<std::string> audioFilesIn(Files &files, const std::string &folder) {
    std::vector<std::string> names = files.names(folder);
    std::erase_if(names, [&](const std::string &name) {
        if (!isAudioExtension(extensionOf(name))) return true;
        const auto identity = files.identity(folder + "/" + name);
        return !identity || identity->kind != FileSystem::Kind::file;
    });
    return names;
}

void writeSlices(Files &files, DecodedReader *decoders, const SlicesToSave &saving, Progress &progress) {
    files.createFolder(saving.folder);
    for (const std::string &name : audioFilesIn(files, saving.folder)) files.moveToTrash(saving.folder + "/" + name);
    progress.start(std::int64_t(saving.slices.size()));
    for (std::size_t i = 0; i < saving.slices.size(); ++i) {
        const AudioFileContents contents = sliceContents(saving, saving.slices[i]);
        const std::string stem = sliceFileStem(saving.name, i, saving.slices.size());
        Progress unwatched;
        writeAudioFile(files, decoders, saving.folder + "/" + stem + "." + contents.format.fileExtension, contents, unwatched);
        progress.add(1);
    }
}

}  // namespace kiv
