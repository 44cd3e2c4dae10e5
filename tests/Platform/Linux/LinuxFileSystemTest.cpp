#include "Platform/Linux/LinuxFileSystem.h"

#include <gmock/gmock.h>
#include <sys/xattr.h>

#include "Platform/Files.h"
#include "Platform/Linux/World.h"

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::function<void(ByteSink &)> makes(const std::string &text) {
    return [text](ByteSink &sink) { sink.write(std::as_bytes(std::span(text))); };
}

// A file system with a state folder of its own, so that tests leave the user's alone.
class RealFiles : public testing::Test {
protected:
    RealFiles() {
        setenv("XDG_STATE_HOME", state.path().c_str(), 1);
        files = makeFiles(fileSystem);
    }

    // The error of a replacement, empty when it went well.
    std::string errorOf(const std::string &path, const std::string &text = "new") {
        try {
            files->replace(path, makes(text));
            return "";
        } catch (const std::system_error &error) {
            return error.what();
        }
    }

    std::string run(const std::string &command) {
        std::string out;
        FILE *pipe = popen(command.c_str(), "r");
        for (int c; (c = std::fgetc(pipe)) != EOF;) out += char(c);
        EXPECT_EQ(pclose(pipe), 0) << command;
        return out;
    }

    struct stat status(const std::string &path) {
        struct stat result {};
        EXPECT_EQ(lstat(path.c_str(), &result), 0) << path;
        return result;
    }

    TestFolder folder, state;
    LinuxFileSystem fileSystem;
    std::unique_ptr<Files> files;
};

TEST_F(RealFiles, writes_much_and_reads_it_back_from_any_place) {
    std::string much(20'000'000, '\0');
    for (std::size_t i = 0; i < much.size(); ++i) much[i] = char(i * 2654435761u >> 24);
    const std::string path = folder / "much";
    files->replace(path, [&](ByteSink &sink) {
        for (std::size_t at = 0, step = 1; at < much.size(); at += step, step = step * 3 % 100'003)
            sink.write(std::as_bytes(std::span(much)).subspan(at, std::min(step, much.size() - at)));
    });
    EXPECT_TRUE(readText(path) == much);
    const auto source = files->open(path);
    EXPECT_EQ(source->size(), 20'000'000);
    std::string part(1000, '\0');
    EXPECT_EQ(source->read(19'999'500, std::as_writable_bytes(std::span(part))), 500u);
    EXPECT_EQ(part.substr(0, 500), much.substr(19'999'500));
    EXPECT_EQ(source->read(20'000'000, std::as_writable_bytes(std::span(part))), 0u);
    EXPECT_EQ(files->identity(path)->size, 20'000'000);
    EXPECT_FALSE(files->identity(folder / "none"));
}

TEST_F(RealFiles, follows_symbolic_links_of_every_kind) {
    std::filesystem::create_directory(folder / "real");
    writeText(folder / "real/song.wav", "old");
    std::filesystem::create_symlink("real/song.wav", folder / "link.wav");
    std::filesystem::create_symlink("link.wav", folder / "second.wav");
    std::filesystem::create_symlink(folder / "real/missing.wav", folder / "dangling.wav");
    std::filesystem::create_symlink("real", folder / "way");
    std::filesystem::create_symlink("circle", folder / "circle");
    const std::tuple<const char *, const char *, const char *> rows[] = {
        {"link.wav", "real/song.wav", ""},        {"second.wav", "real/song.wav", ""},
        {"dangling.wav", "real/missing.wav", ""}, {"way/../real/./song.wav", "real/song.wav", ""},
        {"way/song.wav", "real/song.wav", ""},    {"circle", "real/song.wav", "Too many levels of symbolic links"},
    };
    for (const auto &[given, written, error] : rows) {
        EXPECT_EQ(errorOf(folder / given, given), error) << given;
        if (!*error) {
            EXPECT_EQ(readText(folder / written), given);
        }
    }
    EXPECT_THAT(namesIn(folder / "real"), ElementsAre("missing.wav", "song.wav"));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("circle", "dangling.wav", "link.wav", "real", "second.wav", "way"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "second.wav"));
}

TEST_F(RealFiles, refuses_what_is_no_file_without_waiting_for_it) {
    mkfifo((folder / "pipe").c_str(), 0666);
    writeText(folder / "file", "x");
    std::filesystem::create_symlink(folder / "gone/song.wav", folder / "link");
    const std::pair<std::string, std::string> rows[] = {
        {folder.path(), "Is a directory"},
        {folder.path() + "/", "Is a directory"},
        {folder / ".", "Is a directory"},
        {folder / "pipe", "Not a regular file"},
        {"/dev/null", "Not a regular file"},
        {folder / "gone/song.wav", "The folder “" + (folder / "gone") + "” is not there: choose another one"},
        {folder / "link", "This is a link into a folder that is not there: choose another place"},
        {folder / "file/", "Not a directory"},
        {"", "No such file or directory"},
    };
    for (const auto &[path, error] : rows) {
        EXPECT_EQ(errorOf(path), error) << path;
        EXPECT_THROW(files->open(path), std::system_error) << path;
    }
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("file", "link", "pipe"));
}

TEST_F(RealFiles, takes_names_of_any_bytes_and_length_and_no_folder) {
    const std::string names[] = {std::string(255, 'x'), "caf\xe9.wav", "line\nend", "-", " ", std::string(127, '\xff')};
    for (const std::string &name : names) {
        EXPECT_EQ(errorOf(folder / name, "first"), "");
        EXPECT_EQ(errorOf(folder / name, "second"), "");
        EXPECT_EQ(readText(folder / name), "second");
    }
    EXPECT_EQ(errorOf(folder / std::string(256, 'x')), "File name too long");
    EXPECT_EQ(namesIn(folder.path()).size(), std::size(names));
    inChild([&] {
        ASSERT_EQ(chdir(folder.path().c_str()), 0);
        EXPECT_EQ(errorOf("bare.wav", "text"), "");
        EXPECT_EQ(readText(folder / "bare.wav"), "text");
    });
}

TEST_F(RealFiles, keeps_mode_and_extended_attributes_and_access_lists) {
    const std::string path = folder / "song.wav";
    writeText(path, "old");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const std::string large(3000, 'v');
    ASSERT_EQ(setxattr(path.c_str(), "user.comment", "kept", 4, 0), 0)
        << "the folder for temporary files must be on a file system with extended attributes: " << std::strerror(errno);
    ASSERT_EQ(setxattr(path.c_str(), "user.large", large.data(), large.size(), 0), 0);
    run("setfacl -m u:65533:rw,m::rw " + path);
    const std::string before = run("getfacl -cnp " + path);
    ASSERT_EQ(errorOf(path), "");
    EXPECT_EQ(readText(path), "new");
    EXPECT_EQ(run("getfacl -cnp " + path), before);
    std::string value(4000, '\0');
    EXPECT_EQ(getxattr(path.c_str(), "user.comment", value.data(), value.size()), 4);
    EXPECT_EQ(getxattr(path.c_str(), "user.large", value.data(), value.size()), 3000);
    EXPECT_EQ(value.substr(0, 3000), large);
    EXPECT_EQ(status(path).st_mode & 07777, 0660u);  // the group's place shows the list's mask
}

TEST_F(RealFiles, gives_an_old_file_no_rights_from_the_folder_but_a_new_one_the_usual) {
    run("setfacl -d -m u:65533:rwx " + folder.path());
    const std::string old = folder / "old.wav", fresh = folder / "new.wav";
    writeText(old, "old");
    run("setfacl -b " + old);
    chmod(old.c_str(), 0664);
    const std::string before = run("getfacl -cnp " + old);
    EXPECT_EQ(errorOf(old), "");
    EXPECT_EQ(run("getfacl -cnp " + old), before);
    EXPECT_EQ(errorOf(fresh), "");
    EXPECT_THAT(run("getfacl -cnp " + fresh), testing::HasSubstr("user:65533:rwx"));

    const mode_t mask = umask(027);
    const TestFolder plain;
    EXPECT_EQ(errorOf(plain / "fresh.wav"), "");
    umask(mask);
    EXPECT_EQ(status(plain / "fresh.wav").st_mode & 07777, 0640u);
}

TEST_F(RealFiles, keeps_the_owner_as_root_and_widens_no_rights_as_anybody_else) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can make other people's files";
    const std::string theirs = folder / "theirs.wav", shared = folder / "shared.wav";
    for (const std::string &path : {theirs, shared}) writeText(path, "old");
    ASSERT_EQ(chown(theirs.c_str(), 1234, 2345), 0);
    ASSERT_EQ(chmod(theirs.c_str(), 06751), 0);
    EXPECT_EQ(errorOf(theirs), "");
    EXPECT_EQ(status(theirs).st_uid, 1234u);
    EXPECT_EQ(status(theirs).st_gid, 2345u);
    EXPECT_EQ(status(theirs).st_mode & 07777, 06751u);

    ASSERT_EQ(chown(shared.c_str(), 1234, 2345), 0);
    ASSERT_EQ(chmod(shared.c_str(), 06676), 0);
    inChild([&] {
        becomeNobody();
        EXPECT_EQ(errorOf(shared), "");
    });
    EXPECT_EQ(status(shared).st_uid, 65534u);
    EXPECT_EQ(status(shared).st_mode & 07777, 0666u) << "neither foreign bits nor more for the new group than for everybody";
}

// A disk of a megabyte, full or not to be written to, or full in the midst of writing over a file in a folder that refuses
// another.
TEST_F(RealFiles, a_full_or_read_only_disk_leaves_the_old_file_and_nothing_else) {
    enum class Disk { roomy, inPlace, readOnly };
    const char *full = "No space left on device", *locked = "Read-only file system";
    const struct {
        Disk disk;
        std::size_t size;
        const char *error;
    } rows[] = {{Disk::roomy, 400'000, full},     {Disk::roomy, 1'100'000, full}, {Disk::roomy, 200'000, ""},
                {Disk::inPlace, 2'000'000, full}, {Disk::inPlace, 900'000, ""},   {Disk::readOnly, 3, locked}};
    for (const auto &[disk, size, error] : rows)
        inChild([&, disk = disk, size = size, error = error] {
            ASSERT_NO_FATAL_FAILURE(enterMountNamespace()) << "this test must be able to mount a file system";
            ASSERT_NO_FATAL_FAILURE(mountMemory(folder.path(), "size=1m,mode=777"));
            const std::string old(disk == Disk::inPlace ? 600'000 : 700'000, 'o'), text(size, 'n'), song = folder / "song.wav";
            writeText(song, old);
            chmod(song.c_str(), 0666);
            const unsigned long readOnly = MS_REMOUNT | MS_RDONLY;
            const bool isReadOnly = disk == Disk::readOnly;
            ASSERT_TRUE(!isReadOnly || mount("none", folder.path().c_str(), nullptr, readOnly, nullptr) == 0);
            if (disk == Disk::inPlace) chmod(folder.path().c_str(), 0555), becomeNobody();
            EXPECT_EQ(errorOf(song, text), error);
            EXPECT_TRUE(readText(song) == (*error ? old : text));
            EXPECT_THAT(namesIn(folder.path()), ElementsAre("song.wav"));
            EXPECT_TRUE(disk != Disk::inPlace || namesIn(state / "kiv-audio-editor/saving").empty());
            EXPECT_EQ(errorOf(folder / "other.wav", "x"), isReadOnly              ? locked
                                                          : disk == Disk::inPlace ? "Permission denied"
                                                                                  : "");
        });
}

TEST_F(RealFiles, is_written_over_where_the_folder_refuses_another_file_and_never_against_its_own_mode) {
    const struct {
        const char *name;
        mode_t folderMode, mode;
        const char *error;
        bool isSame;  // the same file, written over; else another in its place
    } rows[] = {
        {"a folder that refuses", 0555, 0666, "", true},
        {"a folder that lets everybody in, but only owners replace", 01777, 0666, "", true},
        {"a folder that allows all", 0777, 0666, "", false},
        {"a locked file in a folder that refuses", 0555, 0444, "Permission denied", true},
        {"a locked file in a folder that allows all", 0777, 0444, "Permission denied", true},
    };
    for (const auto &[name, folderMode, mode, error, isSame] : rows) {
        if (geteuid() != 0 && folderMode == 01777) continue;  // only root can make other people's files
        const std::string song = folder / "song.wav", text = "much longer than before";
        chmod(folder.path().c_str(), 0777);
        writeText(song, "old");
        chmod(song.c_str(), mode);
        const auto before = status(song);
        chmod(folder.path().c_str(), folderMode);
        inChild([&, error = error, folderMode = folderMode] {
            becomeNobody();
            EXPECT_EQ(errorOf(song, text), error);
            EXPECT_EQ(errorOf(folder / "fresh.wav"), folderMode == 0555 ? "Permission denied" : "");
        });
        EXPECT_EQ(readText(song), *error ? "old" : text) << name;
        EXPECT_EQ(status(song).st_ino == before.st_ino, isSame) << name;
        EXPECT_EQ(status(song).st_uid == before.st_uid, isSame || geteuid() != 0) << name;
        EXPECT_THAT(namesIn(folder.path()), testing::Each(testing::AnyOf("song.wav", "fresh.wav"))) << name;
        std::filesystem::remove(song);
        std::filesystem::remove(folder / "fresh.wav");
    }
}

TEST_F(RealFiles, a_save_that_is_overtaken_is_an_error_and_hard_links_keep_the_old_contents) {
    const std::string path = folder / "song.wav", backup = folder / "backup.wav";
    writeText(path, "old");
    std::filesystem::create_hard_link(path, backup);
    EXPECT_EQ(errorOf(path), "");
    EXPECT_EQ(readText(path) + readText(backup), "newold");
    std::filesystem::create_directory(folder / "usb");
    writeText(folder / "usb/song.wav", "old");
    const std::pair<std::string, std::function<void()>> rows[] = {
        {path, [&] { writeText(path, "theirs"); }},
        {folder / "usb/song.wav", [&] { std::filesystem::remove_all(folder / "usb"); }},
    };
    for (const auto &[where, meanwhile] : rows)
        EXPECT_THROW(files->replace(where, [&, &meanwhile = meanwhile](ByteSink &sink) { makes("new")(sink), meanwhile(); }),
                     std::system_error);
    EXPECT_EQ(readText(path), "theirs");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("backup.wav", "song.wav"));
}

TEST_F(RealFiles, a_temporary_file_in_use_is_left_alone_and_an_abandoned_one_removed) {
    const std::string path = folder / "song.wav", beside = folder / ".song.wav.kiv-saving";
    writeText(beside, "left by the dead");
    EXPECT_EQ(errorOf(path, "1"), "");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("song.wav"));
    writeText(beside, "left by the dead");
    files->recoverInterrupted(path);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("song.wav"));
    const auto outer = [&](ByteSink &sink) {
        makes("outer")(sink);
        files->recoverInterrupted(path);
        EXPECT_TRUE(std::filesystem::exists(beside));
        EXPECT_EQ(errorOf(path, "inner"), "");  // as from another window: it takes a name of its own
        EXPECT_TRUE(std::filesystem::exists(beside));
    };
    EXPECT_THROW(files->replace(path, outer), std::system_error) << "the inner one has changed the file";
    EXPECT_EQ(readText(path), "inner");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("song.wav"));
}

}  // namespace
}  // namespace kiv
