// Runs the command on a system of virtual devices.
#pragma once

#include "host/host_fixture.h"
#include "support/device_bed.h"

#include <cstdlib>
#include <optional>

class BedTest : public HostTest {
protected:
    void SetUp() override {
        if (const char *reason = bed::whyNot()) GTEST_SKIP() << reason;
        bed.emplace();
        // For the command, which is not linked to it as this program is.
        setenv("LD_PRELOAD", "libumockdev-preload.so.0", 1);
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 0);
    }

    ~BedTest() override { unsetenv("LD_PRELOAD"); }

    std::optional<bed::DeviceBed> bed;
};
