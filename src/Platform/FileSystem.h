#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Support/ByteSource.h"

// The few things a file system does that safe saving is made of, one call each, so that a fake can fail or lose power at any of
// them. Every call may block and throws std::system_error; any thread but the main and audio threads.
namespace kiv {

class FileSystem {
public:
    virtual ~FileSystem() = default;

    // A file open for writing. It is held for as long as the object lives: nobody else can overwrite() it, and it is not
    // abandoned. What can go wrong is told by sync(), so that nothing is left for closing to report.
    class File {
    public:
        virtual ~File() = default;
        virtual void write(std::span<const std::byte> bytes) = 0;  // after what was written before, or from the start on
        virtual void rewind() = 0;                                 // the next write is at the start again
        virtual void truncate(std::int64_t size) = 0;
        // Makes this the time of its last change, until the next write, where that is allowed: it is the owner's right.
        virtual void setModified(std::int64_t ns) = 0;
        virtual void sync() = 0;          // contents, length and attributes to the device
        virtual bool isHeld() const = 0;  // false where the file system knows no locks
    };

    enum class Kind { file, folder, other };
    struct Identity {
        std::uint64_t device = 0, inode = 0;
        std::int64_t size = 0, modifiedNs = 0;
        Kind kind = Kind::file;
        friend bool operator==(const Identity &, const Identity &) = default;
    };

    // The file that symbolic links lead to, whether it exists or not, as an absolute path; its folder must exist.
    virtual std::string resolve(const std::string &path) = 0;
    virtual std::optional<Identity> identity(const std::string &path) = 0;  // follows links; nothing: no such file
    virtual std::unique_ptr<ByteSource> open(const std::string &path) = 0;

    enum class Access { owner, usual };  // readable and writable by its owner only · as the folder and the user's mask say
    // Creates a file that must not exist yet.
    virtual std::unique_ptr<File> create(const std::string &path, Access access) = 0;
    // Removes a file that was created by a program which has died since. False: there is none, or it is held, or one cannot
    // tell.
    virtual bool removeAbandoned(const std::string &path) = 0;
    // Holds a file that was created by a program which has died since. Null: there is none, or it is held, or one cannot tell.
    virtual std::unique_ptr<File> holdAbandoned(const std::string &path) = 0;
    // Makes a file that must not exist yet of another one's contents at no cost, the two sharing their space until one is
    // written to. False where that cannot be done.
    virtual bool share(const std::string &path, const std::string &as) = 0;
    // Gives a file another name, which must not exist yet: whoever writes to one writes to both. False where that is not
    // allowed.
    virtual bool addName(const std::string &path, const std::string &name) = 0;
    // Opens an existing file to be written over from its start; it keeps its length until written or truncated. Throws
    // std::errc::resource_unavailable_try_again when it is held elsewhere.
    virtual std::unique_ptr<File> overwrite(const std::string &path) = 0;
    // Gives `to` the mode, extended attributes and access lists of `from`, and its owner where that is allowed.
    virtual void copyAttributes(const std::string &from, const std::string &to) = 0;
    virtual void rename(const std::string &from, const std::string &to) = 0;  // in one step, replacing `to`
    virtual void remove(const std::string &path) = 0;
    virtual void makeFolders(const std::string &path) = 0;   // what is missing of it, for the user alone
    virtual void createFolder(const std::string &path) = 0;  // must not exist yet; what is missing above it too; usual access
    virtual std::vector<std::string> list(const std::string &folder) = 0;  // the names in it, in their order
    // To where the desktop keeps what may be wanted back. Throws where there is no such place; the file is then still there.
    virtual void moveToTrash(const std::string &path) = 0;
    virtual std::int64_t freeBytes(const std::string &folder) = 0;  // that this user may write; as many as can be if unknown
    virtual void syncFolder(const std::string &folder) = 0;
    virtual void requireWritable(const std::string &path) = 0;  // throws what stands against it
    // The user's own folder for copies kept while a file is written over in place. It need not exist yet.
    virtual std::string temporaryFolder() = 0;
};

}  // namespace kiv
