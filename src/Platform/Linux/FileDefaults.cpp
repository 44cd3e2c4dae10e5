#include "Platform/Linux/FileDefaults.h"

#include <fcntl.h>
#include <sys/file.h>

#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/UserFolders.h"
#include "Platform/SafeReplace.h"

namespace kiv {
namespace {

// Nothing but an empty map where there is no file yet; throws when there is one that cannot be read.
SettingsMap read(FileSystem &fileSystem, const std::string &path) {
    if (!fileSystem.identity(path)) return {};
    const auto source = fileSystem.open(path);
    std::string text(std::size_t(source->size()), '\0');
    text.resize(source->read(0, std::as_writable_bytes(std::span(text))));
    return settingsFromText(text);
}

// Keeps other programs from writing in the folder at the same time. One that is stuck is not waited for long: then the last
// one to write may take the other's change away, which is better than losing both or never ending.
FileDescriptor lockFolder(const std::string &folder) {
    FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int tries = 0; tries < 100 && ::flock(*file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK; ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return file;
}

}  // namespace

std::string FileDefaults::usualPath() { return userFolder(UserFolder::config) + "/settings"; }

FileDefaults::FileDefaults(std::string path) : path_(std::move(path)) {
    try {
        values_ = read(fileSystem_, path_);
    } catch (const std::system_error &) {  // then it counts as empty
    }
}

FileDefaults::~FileDefaults() {
    writer_.request_stop();  // the thread writes what is left before it ends
}

std::optional<std::string> FileDefaults::text(std::string_view key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void FileDefaults::setText(std::string_view key, const std::string &value) {
    if (text(key) == value) return;
    values_.insert_or_assign(std::string(key), value);
    change(key, value);
}

void FileDefaults::remove(std::string_view key) {
    const auto found = values_.find(key);
    if (found == values_.end()) return;
    change(key, std::nullopt);
    values_.erase(found);
}

void FileDefaults::change(std::string_view key, std::optional<std::string> value) {
    {
        const std::lock_guard lock(mutex_);
        unwritten_.insert_or_assign(std::string(key), std::move(value));
        isNew_ = true;
    }
    if (!writer_.joinable()) writer_ = std::jthread([this](std::stop_token stop) { writeUntilStopped(stop); });
    changed_.notify_one();
}

void FileDefaults::writeUntilStopped(std::stop_token stop) {
    for (;;) {
        Changes changes;
        {
            std::unique_lock lock(mutex_);
            if (!changed_.wait(lock, stop, [this] { return isNew_; })) return;
            changes.swap(unwritten_);
            isNew_ = false;
        }
        if (write(changes)) continue;
        const std::lock_guard lock(mutex_);
        unwritten_.merge(changes);  // to be tried again with the next change
    }
}

bool FileDefaults::write(const Changes &changes) {
    try {
        const std::string folder = folderOf(path_);
        fileSystem_.makeFolders(folder);
        const auto held = lockFolder(folder);
        SettingsMap settings = read(fileSystem_, path_);
        for (const auto &[key, value] : changes) {
            settings.erase(key);
            if (value) settings.emplace(key, *value);
        }
        const std::string text = textFromSettings(settings);
        replaceSafely(fileSystem_, path_, [&](ByteSink &sink) { sink.write(std::as_bytes(std::span(text))); });
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

}  // namespace kiv
