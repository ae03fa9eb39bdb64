// A serial port that somebody else holds, and one that nobody does: both seen through "send".
#include "host/devices/holders.h"
#include "host/failure_of.h"
#include "host/host_fixture.h"
#include "host/obstacles/port_lock.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// The calling thread's user, if that is root, is nobody for a while.
struct AsNobody {
    const bool wasRoot = geteuid() == 0 && syscall(SYS_setresuid, 65534, 65534, 0) == 0;
    ~AsNobody() {
        if (wasRoot) syscall(SYS_setresuid, 0, 0, 0);
    }
};

class PortTest : public HostTest {
protected:
    void expectBusy(const std::string &port, pid_t holder) {
        std::string name = "host_test (process " + std::to_string(holder) + ")";
        for (const auto &words : {std::vector<std::string>{"send", "IN;"}, {"print", file("plot", plotOf(1))}})
            expectRefusals({{{words[0], words[1], "--port", port}, 5, port + ": busy: held by " + name}});
        EXPECT_EQ(run({"doctor", "--port", port}).code, 5);
    }

    FarEnd plotter_;
};

TEST_F(PortTest, SendsTextWithItsEscapes) {
    // The far end's own process may keep the near end open: it is no rival.
    Descriptor kept(open(plotter_.port().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    Running sending({"send", "IN;LBa\\\\b\\x03\\e.\\r\\n", "--port", plotter_.port()}, false);
    Result result = sending.wait();
    kept.reset();
    EXPECT_EQ(plotter_.read(), "IN;LBa\\b\x03\x1B.\r\n");
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "sent 13 bytes to " + plotter_.port() + "\n");
    EXPECT_EQ(result.err, "");
}

TEST_F(PortTest, SendsTheStartUpBytesOfAnEmulation) {
    Running sending({"send", "H,", "--port", plotter_.port(), "--emulation", "17008"}, false);
    EXPECT_EQ(plotter_.read(), ";:H,");
    EXPECT_EQ(sending.wait().code, 0);
    expectRefusals(
        {{{"send", "IN;", "--port", plotter_.port(), "--bits", "7"}, 1, "pseudo-terminal, such as the simulator's"}});
}

TEST_F(PortTest, NamesWhoHasThePortOpenAlsoThroughALink) {
    std::filesystem::create_symlink(plotter_.port(), path("plotter"));
    for (bool locks : {true, false}) {
        SCOPED_TRACE(locks);
        Bystander holder(plotter_.port(), locks);
        expectBusy(plotter_.port(), holder.pid());
        expectBusy(path("plotter"), holder.pid());
        ASSERT_EQ(chmod(plotter_.port().c_str(), 0666), 0);
        AsNobody nobody; // sees who locked it, but not who has it open
        EXPECT_TRUE(!locks || failureOf([&] { host::requireFreePort(plotter_.port()); }).first == host::ExitCode::Busy);
    }
    // The near end of the far end's own process is no rival, but for its lock.
    Descriptor reader(open(plotter_.port().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    flock(reader.get(), LOCK_SH);
    expectBusy(plotter_.port(), getpid());
}

/// In a folder that all may write, anything may stand under the lock's name, and its holder may be another user's process.
TEST_F(PortTest, RespectsTheLockFileOfALivingProcess) {
    const std::string lock = "/var/lock/LCK..pts_" + plotter_.port().substr(std::string("/dev/pts/").size());
    auto put = [&](const std::string &text) { return static_cast<bool>(std::ofstream(lock) << text << std::flush); };
    Bystander holder("", false);
    const pid_t pid = holder.pid();
    if (!put(std::to_string(pid) + " cu\n")) GTEST_SKIP() << lock << " cannot be written";
    expectBusy(plotter_.port(), pid);
    const struct {
        const char *what;
        std::function<void()> make;
        pid_t holder;
    } kRows[] = {
        {"text of four bytes, root's", [&] { put("  1\n"); }, 1},
        {"binary",
         [&] {
             put({reinterpret_cast<const char *>(&pid), sizeof pid});
         },
         pid},
        {"a dead process's", [&] { put("99999999\n"); }, 0},
        {"a pipe", [&] { mkfifo(lock.c_str(), 0666); }, 0},
        {"a link to what has no end", [&] { std::filesystem::create_symlink("/dev/zero", lock); }, 0},
        {"a folder", [&] { std::filesystem::create_directory(lock); }, 0},
    };
    for (const auto &row : kRows) {
        std::filesystem::remove(lock);
        row.make();
        AsNobody nobody;
        EXPECT_EQ(host::uucpHolder(plotter_.port()).pid, row.holder) << row.what;
    }
    std::filesystem::remove(lock);
}

} // namespace
