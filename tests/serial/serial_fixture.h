// What the serial tests share: scripted backends, a cleared record, and the port at /dev/ttyUSB0.
#pragma once

#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"
#include "serial/open_ports.h"
#include "support/scripted.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>

using scripted::fails;
using scripted::gives;
using scripted::Log;

inline std::string statusText() { return std::string(platform::stringView(answer().ORB_CFSTR_message)); }

class SerialTest : public ::testing::Test {
protected:
    SerialTest() { reset(); }

    /// A record with a text and a path, and no port open.
    void reset() {
        answer() = {};
        answer().ORB_portFD = -1;
        answer().ORB_errorID = kORB_NoError;
        answer().ORB_CFSTR_bsdIn_VectorixDevice = platform::constantString("/dev/ttyUSB0");
        strcpy(answer().ORB_writeBuffer, "IN;");
        strcpy(gORB_bsdPath, "/dev/ttyUSB0");
        serial::beginCall();
        terminal.openPaths.clear();
        terminal.nextDescriptor = 5;
        terminal.written.clear();
        platform.clock.slept = 0;
        platform.log.clear();
    }

    /// The port is open already, as descriptor 5.
    void givenPort() { terminal.openPaths[answer().ORB_portFD = 5] = gORB_bsdPath; }

    scripted::Platform platform;
    scripted::Terminal &terminal = platform.terminal;
};
