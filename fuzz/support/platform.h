// A platform in memory whose calls fail as the weather has it, and how a target says that something does not hold.
#pragma once

#include "stand_in/scenario.h"
#include "usb/interface.h"

#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <set>

namespace fuzz {

using namespace stand_in;

/// Ends the run as a finding.
inline void require(bool holds, const char *what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

// Seconds. A plotter that answers each question of a USB query, and never wholly, is asked twice 99 times, with pauses that
// grow from 2 to 100 seconds; all else is over in minutes.
inline constexpr unsigned kLongestCall = 2 * 5049 + 300;

/// In place for as long as it lives. What was opened and not closed, or handed out and not released, is a finding.
struct Platform final : stand_in::Platform {
    explicit Platform(const Scenario &scenario) {
        keepsLog = false;
        furnish(*this, scenario);
    }
    ~Platform() override {
        weather = {};
        terminal.openPaths.clear(); // the host closes what it holds
        gORB_interfaceInterface.reset();
        require(registry.outstanding == 0, "everything of the registry is released");
        for (CFStringRef s : strings)
            ORB_hostReleaseString(s);
        require(platform::liveObjectCount() == objects, "what the host gives back is gone");
    }

    const uint32_t objects = platform::liveObjectCount();
    std::set<CFStringRef> strings; ///< that the host has to release
    std::string weather;           ///< one byte for each call that can fail; past its end all is well
    size_t calls = 0;
    long mostTaken = -1; ///< of a write to a port, if not all

    void hold(const ORB_ServiceRecord &record) {
        for (size_t offset : kStrings)
            strings.insert(stringAt(record, offset));
    }
    /// Calls the entry, and looks at what must hold of any call.
    ORB_ServiceRecord call(const ORB_ServiceRecord &record) {
        clock.slept = 0;
        hold(record);
        const ORB_ServiceRecord returned = ORB_getVectorixCS2(record);
        hold(returned);
        Complaints complaints;
        requireSound(complaints, *this, record, returned, kLongestCall);
        for (const std::string &complaint : complaints)
            require(false, complaint.c_str());
        return returned;
    }
    /// Whether nothing is left open but a port that the record holds: one whose start-up text could not be written.
    bool isClosed(const ORB_ServiceRecord &returned) const {
        return registry.outstanding == 0 && terminal.openPaths.size() == terminal.openPaths.count(returned.ORB_portFD);
    }

    Ending before(Seam seam, const char *call) override {
        static constexpr IOReturn kCodes[] = {kIOReturnError,   kIOReturnNoDevice, kIOReturnExclusiveAccess,
                                              kIOReturnAborted, kIOReturnNotOpen,  kIOUSBPipeStalled};
        if (seam != Seam::Terminal && seam != Seam::Registry) return {};
        const auto now = static_cast<unsigned char>(calls < weather.size() ? weather[calls++] : 0);
        if (now >= 0xC0) return {Effect::Fails, seam == Seam::Terminal ? now % 32 : kCodes[now % 6]};
        if (mostTaken >= 0 && std::string_view(call) == "write") return {Effect::Gives, mostTaken};
        // An open gives the lowest number that is free, as the system does.
        for (terminal.nextDescriptor = 5; terminal.openPaths.contains(terminal.nextDescriptor);)
            ++terminal.nextDescriptor;
        return {};
    }
    void misuse(const std::string &what) override { require(false, what.c_str()); }
    void stray(const char *, int) override {} // a record may hold any number
};

} // namespace fuzz
