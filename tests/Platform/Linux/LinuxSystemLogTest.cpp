#include "Platform/Linux/LinuxSystemLog.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "Platform/Linux/World.h"

namespace kiv {
namespace {

TEST(LinuxSystemLog, writes_lines_as_they_are) {
    inChild([] {
        ASSERT_NO_FATAL_FAILURE(enterMountNamespace()) << "this test must be able to mount a file system";
        ASSERT_NO_FATAL_FAILURE(mountMemory("/dev", "size=1m"));
        const int log = socket(AF_UNIX, SOCK_DGRAM, 0);
        const sockaddr_un address{AF_UNIX, "/dev/log"};
        ASSERT_EQ(bind(log, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0) << std::strerror(errno);
        LinuxSystemLog().write("Kiv Audio Editor: 100 %s %n of “it”");
        char text[1000] = {};
        ASSERT_GT(recv(log, text, sizeof text - 1, MSG_DONTWAIT), 0) << std::strerror(errno);
        EXPECT_THAT(text, testing::EndsWith("Kiv Audio Editor: 100 %s %n of “it”"));
    });
}

}  // namespace
}  // namespace kiv
