// A serial port that somebody else holds, and one that nobody does: both seen through "send".
#include "host/host_fixture.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

class PortTest : public HostTest {
protected:
    Result sendTo(const std::string &port) { return run({"send", "IN;", "--port", port}); }

    void expectBusy(const Result &result, pid_t holder) {
        EXPECT_EQ(result.code, 5) << result.err;
        EXPECT_EQ(result.out, "");
        std::string name = "host_test (process " + std::to_string(holder) + ")";
        EXPECT_NE(result.err.find(plotter_.port() + ": busy: held by " + name), std::string::npos) << result.err;
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
}

TEST_F(PortTest, NamesTheHolderOfALock) {
    Bystander holder(plotter_.port(), true);
    expectBusy(sendTo(plotter_.port()), holder.pid());
}

TEST_F(PortTest, NamesWhoHasThePortOpenWithoutALock) {
    Bystander holder(plotter_.port(), false);
    expectBusy(sendTo(plotter_.port()), holder.pid());
}

TEST_F(PortTest, SeesTheHolderThroughALink) {
    Bystander holder(plotter_.port(), false);
    std::filesystem::create_symlink(plotter_.port(), path("plotter"));
    Result result = sendTo(path("plotter"));
    EXPECT_EQ(result.code, 5) << result.err;
}

TEST_F(PortTest, RespectsTheLockFileOfALivingProcess) {
    std::string lock = "/var/lock/LCK..pts_" + plotter_.port().substr(std::string("/dev/pts/").size());
    struct Removal {
        std::string path;
        ~Removal() { unlink(path.c_str()); }
    } removal{lock};
    auto lockedBy = [&](pid_t pid) { return static_cast<bool>(std::ofstream(lock) << pid << std::endl); };
    pid_t gone = 0;
    {
        Bystander holder("", false);
        if (!lockedBy(holder.pid())) GTEST_SKIP() << lock << " cannot be written";
        expectBusy(sendTo(plotter_.port()), holder.pid());
        gone = holder.pid();
    }
    ASSERT_TRUE(lockedBy(gone));
    Running sending({"send", "IN;", "--port", plotter_.port()}, false);
    EXPECT_EQ(plotter_.read(), "IN;");
    EXPECT_EQ(sending.wait().code, 0) << "a lock whose owner is dead is stale";
}

} // namespace
