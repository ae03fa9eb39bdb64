// Runs the command on a system of virtual devices.
#pragma once

#include "host/host_fixture.h"
#include "support/usb_plotter.h"

#include <cstdlib>
#include <optional>

class BedTest : public HostTest {
protected:
    void SetUp() override { makeBed(); }
    void makeBed() {
        if (const char *reason = bed::whyNot()) GTEST_SKIP() << reason;
        bed.emplace();
        // For the command, which is not linked to it as this program is.
        setenv("LD_PRELOAD", "libumockdev-preload.so.0", 1);
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 0);
    }
    ~BedTest() override { unsetenv("LD_PRELOAD"); }

    /// A serial port below another device. Without its node: the bed would make a pseudo-terminal of it, and then fail to
    /// resolve its path.
    void addPort(const std::string &above, const std::string &name, const std::string &attributes = "") {
        bed->add("P: " + above + "/tty/" + name + "\nE: DEVNAME=/dev/" + name + "\nE: SUBSYSTEM=tty\n" + attributes + "\n");
    }

    /// A serial adapter, without a port.
    void addAdapter() { bed->addUsb("1-1", {18, 1, 0, 2, 0, 0, 0, 64, 3, 4, 1, 0x60, 0, 6, 0, 0, 0, 0}, 1); }

    std::optional<bed::DeviceBed> bed;
};
