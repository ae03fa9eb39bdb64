// A serial port that somebody else holds, and one that nobody does: both seen through "send".
#include "host/host_fixture.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

class PortTest : public HostTest {
protected:
    void expectBusy(const std::string &port, pid_t holder) {
        std::string name = "host_test (process " + std::to_string(holder) + ")";
        expectRefusals({{{"send", "IN;", "--port", port}, 5, port + ": busy: held by " + name}});
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
    }
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
        expectBusy(plotter_.port(), holder.pid());
        gone = holder.pid();
    }
    ASSERT_TRUE(lockedBy(gone));
    Running sending({"send", "IN;", "--port", plotter_.port()}, false);
    EXPECT_EQ(plotter_.read(), "IN;");
    EXPECT_EQ(sending.wait().code, 0) << "a lock whose owner is dead is stale";
}

} // namespace
