#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "Platform/Defaults.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/SettingsText.h"

namespace kiv {

// Settings in a text file, read once. Changes are written by a thread of its own, soon, since bringing a file safely to a disk
// takes longer than a slider may stand still. Two programs may run on one file: each writes only what it has changed itself
// into what it finds there, one after the other, and sees the other's changes when it is started anew.
class FileDefaults : public Defaults {
public:
    explicit FileDefaults(std::string path);
    ~FileDefaults() override;

    // Waits until all changes are written, or cannot be; also what the destructor does.
    void finish() { writer_ = {}; }

    static std::string usualPath();  // settings in the user's configuration folder; throws std::system_error without a home

    std::optional<std::string> text(std::string_view key) const override;
    void setText(std::string_view key, const std::string &value) override;
    void remove(std::string_view key) override;

private:
    using Changes = std::map<std::string, std::optional<std::string>, std::less<>>;

    void change(std::string_view key, std::optional<std::string> value);
    void writeUntilStopped(std::stop_token stop);
    bool write(const Changes &changes);

    std::string path_;
    LinuxFileSystem fileSystem_;
    SettingsMap values_;

    std::mutex mutex_;
    std::condition_variable_any changed_;
    Changes unwritten_;
    bool isNew_ = false;   // there are changes that writing has not been tried for
    std::jthread writer_;  // from the first change on; last, so that it ends first
};

}  // namespace kiv
