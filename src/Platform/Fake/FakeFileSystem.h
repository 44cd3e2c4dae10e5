#pragma once

#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <random>
#include <system_error>
#include <vector>

#include "Platform/FileSystem.h"

namespace kiv {

// A file system in memory that knows what of it is on the device and what is only written. Every call of the FileSystem
// interface and of its files counts as a step; a chosen step can fail, or the power can go at it. After a loss of power nothing
// happens any more until restart(), which keeps what was synced, and of the rest what it is told to keep.
//
// The device is a mean one: data, lengths, attributes and names reach it in any order, a byte at a time. Only what a single
// rename does stays together. After a sync that failed it takes what it was given for written, as kernels do: only what is
// written again reaches it.
//
// Links are followed only as the last part of a path. All members may be called from any thread.
class FakeFileSystem : public FileSystem {
public:
    using Bytes = std::vector<std::byte>;
    static constexpr const char *stateFolder = "/home/state";
    static constexpr const char *trashFolder = "/home/trash";

    // The world as it stands, all of it on the device. Folders above a path are made too.
    void makeFolder(const std::string &path);
    void put(const std::string &path, Bytes bytes, const std::string &attributes = "usual");
    void link(const std::string &path, const std::string &target);
    void makeOther(const std::string &path);  // neither file nor folder nor link
    void protect(const std::string &path);    // from being written; a folder from changes of the names in it
    void unprotect(const std::string &path);
    void setSticky(const std::string &folder);  // names may be added, but not put in the place of others
    // What not every file system can do: share(), addName(), hold files.
    struct Abilities {
        bool sharing = false, names = false, locks = true;
    };
    void setAbilities(Abilities abilities) { can_ = abilities; }
    void setFree(std::int64_t bytes) { free_ = bytes; }  // what freeBytes() says, whatever is written
    void passTime(std::int64_t ns) { clock_ += ns; }     // which else goes on by a nanosecond with each change
    void vanish(const std::string &path);                // with all that is below it

    bool exists(const std::string &path) const;
    Bytes bytes(const std::string &path) const;
    std::string attributes(const std::string &path) const;  // stands for mode, owner, extended attributes and lists
    std::vector<std::string> names(const std::string &folder) const;

    // Faults. Steps count from 1, anew whenever a fault is armed; one of each kind may be.
    enum class Lasting { once, on, full };  // this step · it and all after it · those from it on that need more space
    void failAt(int step, std::errc error, Lasting lasting = Lasting::once);
    void losePowerAt(int step);
    void heal();  // no more faults
    int steps() const;
    struct PowerLost {};  // thrown by the step and all that follow

    // What has survived of that which was not synced.
    enum class Survival { nothing, everything, namesOnly, contentsOnly, anything };
    void restart(Survival survival, unsigned seed = 0);

    std::string resolve(const std::string &path) override;
    std::optional<Identity> identity(const std::string &path) override;
    std::unique_ptr<ByteSource> open(const std::string &path) override;
    std::unique_ptr<File> create(const std::string &path, Access access) override;
    bool removeAbandoned(const std::string &path) override;
    std::unique_ptr<File> holdAbandoned(const std::string &path) override;
    bool share(const std::string &path, const std::string &as) override;
    bool addName(const std::string &path, const std::string &name) override;
    std::unique_ptr<File> overwrite(const std::string &path) override;
    void copyAttributes(const std::string &from, const std::string &to) override;
    void rename(const std::string &from, const std::string &to) override;
    void remove(const std::string &path) override;
    void makeFolders(const std::string &path) override;
    void createFolder(const std::string &path) override;
    std::vector<std::string> list(const std::string &folder) override;
    void moveToTrash(const std::string &path) override;  // into trashFolder
    std::int64_t freeBytes(const std::string &folder) override;
    void syncFolder(const std::string &folder) override;
    void requireWritable(const std::string &path) override;
    std::string temporaryFolder() override { return stateFolder; }

private:
    struct State {
        Bytes bytes;
        std::string attributes;
    };
    struct Node {
        Kind kind = Kind::file;
        std::string linkTarget;
        bool writable = true;
        bool sticky = false;
        bool dirty = false;
        std::uint64_t inode = 0;
        std::int64_t modified = 0;
        State now;
        State onDevice;
        std::vector<State> unsynced;  // each state since the last sync, while a loss of power is to come
        std::weak_ptr<int> held;
    };
    using NodePtr = std::shared_ptr<Node>;
    using Names = std::map<std::string, NodePtr>;
    // What one call does to the names of a folder: null takes a name away.
    struct NameChange {
        std::string folder;
        std::vector<std::pair<std::string, NodePtr>> names;
    };
    using Lock = std::unique_lock<std::recursive_mutex>;
    class OpenFile;
    class OpenSource;

    NodePtr make(const std::string &path, Kind kind, State state = {});
    NodePtr find(const std::string &path) const;  // null: there is none
    NodePtr demand(const std::string &path) const;
    NodePtr demandWritable(const std::string &path) const;
    std::string target(std::string path) const;  // behind its links
    std::unique_ptr<File> hold(const NodePtr &node);
    void requireFolder(const std::string &path) const;
    void change(NameChange change);
    static void apply(const NameChange &change, Names &names);
    void changed(Node &node);
    enum class Need { nothing, space };
    Lock step(Need need = Need::nothing, const std::function<void()> &half = {});
    bool failsNow(Need need) const;
    State survivor(const Node &node, Survival survival, std::mt19937 &random) const;
    bool survives(Survival survival, std::mt19937 &random) const;

    mutable std::recursive_mutex mutex_;
    Names names_;
    Names onDevice_;
    std::vector<NameChange> unsynced_;
    std::uint64_t lastInode_ = 0;
    std::int64_t clock_ = 0;
    Abilities can_;
    std::int64_t free_ = std::numeric_limits<std::int64_t>::max();

    int steps_ = 0;
    int failStep_ = 0;
    std::errc error_{};
    Lasting lasting_ = Lasting::once;
    int powerStep_ = 0;
    bool dead_ = false;
};

}  // namespace kiv
