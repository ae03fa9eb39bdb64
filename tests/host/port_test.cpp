// A serial port that somebody else holds, and one that nobody does: both seen through "send" and "limits".
#include "host/devices/holders.h"
#include "host/host_fixture.h"
#include "host/obstacles/port_lock.h"
#include "host/options/line_settings.h"
#include "host/plugin/query_watch.h"
#include "host/plugin/record.h"
#include "host/print/query_verdict.h"

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
    void expectBusy(const std::string &port, const std::string &program, pid_t holder) {
        const std::string pid = std::to_string(holder), who = program + " (process " + pid + ")";
        const std::string says = port + ": busy: held by " + who;
        expectRefusals(
            {{{"send", "IN;", "--port", port}, 5, says}, {{"print", file("plot", plotOf(1)), "--port", port}, 5, says}});
        const Result examined = run({"doctor", "--port", port});
        EXPECT_TRUE(ended(examined, 5, "$ kill " + pid + "\n"));
        EXPECT_EQ(examined.out.find(who), examined.out.rfind(who)) << "once: " << examined.out;
    }

    FarEnd plotter_;
};

TEST_F(PortTest, SendsTextWithItsEscapesAndTheStartUpBytesOfAnEmulation) {
    // The far end's own process may keep the near end open: it is no rival.
    UniqueFd kept = plotter_.openPort();
    Result result = run({"send", "H,LBa\\\\b\\x03\\e.\\r\\n", "--port", plotter_.port(), "--emulation", "17008"});
    kept = UniqueFd();
    EXPECT_EQ(plotter_.read(), ";:H,LBa\\b\x03\x1B.\r\n");
    EXPECT_TRUE(ended(result, 0));
    EXPECT_EQ(result.out + result.err,
              "sent 12 bytes to " + plotter_.port() + ", behind the start of emulation 17008: ;:\n");
    expectRefusals(
        {{{"send", "IN;", "--port", plotter_.port(), "--bits", "7"}, 1, "pseudo-terminal, such as the simulator's"}});
}

TEST_F(PortTest, NamesWhoHasThePortOpenAlsoThroughALink) {
    std::filesystem::create_symlink(plotter_.port(), path("plotter"));
    {
        const host::PortLock ours(plotter_.port());
        EXPECT_NE(flock(plotter_.openPort().get(), LOCK_EX | LOCK_NB), 0);
    }
    for (bool locks : {true, false}) {
        SCOPED_TRACE(locks);
        Bystander holder(plotter_.port(), locks);
        expectBusy(path("plotter"), "python3", holder.pid());
        ASSERT_EQ(chmod(plotter_.port().c_str(), 0666), 0);
        AsNobody nobody; // sees who locked it, but not who has it open
        EXPECT_TRUE(!locks || failureOf([&] { host::requireFreePort(plotter_.port()); }).code == 5);
    }
    // The near end of the far end's own process is no rival, but for its lock.
    const UniqueFd reader = plotter_.openPort();
    flock(reader.get(), LOCK_SH);
    expectBusy(plotter_.port(), "host_test", getpid());
}

/// In a folder that all may write, anything may stand under the lock's name, and its holder may be another user's process.
TEST_F(PortTest, RespectsTheLockFileOfALivingProcess) {
    const std::string lock = "/var/lock/LCK..pts_" + plotter_.port().substr(std::string("/dev/pts/").size());
    auto put = [&](std::string_view text) { return static_cast<bool>(std::ofstream(lock) << text << std::flush); };
    const Bystander holder("/dev/null", false);
    const pid_t pid = holder.pid();
    const std::string_view binary(reinterpret_cast<const char *>(&pid), sizeof pid);
    if (!put(std::to_string(pid) + " cu\n")) GTEST_SKIP() << lock << " cannot be written";
    expectBusy(plotter_.port(), "python3", pid);
    const std::tuple<const char *, std::function<void()>, pid_t> kRows[] = {
        {"text of four bytes, root's", [&] { put("  1\n"); }, 1},
        {"binary", [&] { put(binary); }, pid},
        {"a dead process's", [&] { put("99999999\n"); }, 0},
        {"a pipe", [&] { mkfifo(lock.c_str(), 0666); }, 0},
        {"a link to what has no end", [&] { std::filesystem::create_symlink("/dev/zero", lock); }, 0},
        {"a folder", [&] { std::filesystem::create_directory(lock); }, 0},
    };
    for (const auto &[what, make, named] : kRows) {
        std::filesystem::remove(lock);
        make();
        AsNobody nobody;
        EXPECT_EQ(host::uucpHolder(plotter_.port()).pid, named) << what;
    }
    std::filesystem::remove(lock);
}

// The plug-in's pauses around a request are real: six seconds.
TEST_F(PortTest, AsksThePlotter) {
    Running asking({"limits", "--port", plotter_.port(), "-v"});
    EXPECT_EQ(plotter_.read(6), "IN;OH;");
    plotter_.write("0,0,15200,10800\r");
    Result result = asking.wait();
    EXPECT_TRUE(ended(result, 0, "sent \"IN;OH;\", heard \"0,0,15200,10800\\r\""));
    EXPECT_EQ(result.out, "lower left   0, 0\nupper right  15200, 10800\nsize         380.0 x 270.0 mm\n");
}

// A line that is held as XOFF holds it.
TEST_F(PortTest, AQuestionThatCannotLeaveIsGivenUp) {
    const UniqueFd near = plotter_.openPort();
    ASSERT_EQ(tcflow(near.get(), TCOOFF), 0);
    const host::HostString port(plotter_.port(), "");
    ORB_ServiceRecord record = host::emptyRecord(kORB_ServiceSerialHardClip);
    host::applyLineSettings({}, record);
    record.ORB_CFSTR_bsdIn_VectorixDevice = port.get();
    host::QueryWatch watch(std::chrono::milliseconds(1), [] { return false; });
    host::releaseStrings(ORB_getVectorixCS2(record));
    host::QueryOutcome outcome{};
    outcome.isGivenUp = watch.end();
    outcome.whyHeld = host::whyHeld(near.get(), {});
    outcome.report.structSize = sizeof outcome.report;
    ORB_hostGetQueryReport(&outcome.report);
    EXPECT_EQ(host::judge(outcome).code, host::ExitCode::Lost);
    EXPECT_TRUE(holds(host::judge(outcome).message, "the line is held (held by XOFF"));
}

} // namespace
