#include "registry_fixture.h"

#include <array>
#include <filesystem>

namespace {

class InterfaceTest : public RegistryTest {
protected:
    /// Puts a plotter there and opens its interface.
    void open(bed::PlotterShape shape = {}) {
        plotter.emplace(*bed, std::move(shape));
        interface = findInterface();
        ASSERT_EQ(interface->USBInterfaceOpen(), kIOReturnSuccess);
    }

    static std::string failed(IOReturn code, uint32_t taken = 0) {
        return std::to_string(taken) + ", then " + std::to_string(code);
    }

    /// How many bytes were taken; with the code, if it failed.
    std::string write(uint8_t pipe, std::string_view bytes) {
        uint32_t taken = 99;
        const IOReturn code = interface->WritePipe(pipe, bytes.data(), static_cast<uint32_t>(bytes.size()), &taken);
        return code == kIOReturnSuccess ? std::to_string(taken) : failed(code, taken);
    }

    /// What a read with that much room gives.
    std::string read(uint8_t pipe, uint32_t room = 256) {
        std::string buffer(room, '?');
        const IOReturn code = interface->ReadPipe(pipe, buffer.data(), &room);
        return code == kIOReturnSuccess ? buffer.substr(0, room) : failed(code, room);
    }

    /// What is asked of that pipe fails with the code.
    void expectFailures(uint8_t pipe, IOReturn code) {
        SCOPED_TRACE(+pipe);
        uint8_t byte;
        uint16_t word;
        EXPECT_EQ(interface->GetPipeProperties(pipe, &byte, &byte, &byte, &word, &byte), code);
        EXPECT_EQ(interface->GetPipeStatus(pipe), code);
        EXPECT_EQ(interface->ClearPipeStallBothEnds(pipe), code);
        EXPECT_EQ(write(pipe, "IN;"), failed(code));
        EXPECT_EQ(read(pipe), failed(code));
    }
};

TEST_F(InterfaceTest, PrintsAndReads) {
    open({.settings = {{{0x01}, {0x82}}, {{0x03, 3, 16, 4}, {0x84, 3, 8, 2}}}});
    Strings texts;
    plotter->onText = [&](std::string_view text) {
        texts.emplace_back(text);
        if (text == "OH;") plotter->reply("0,0,1615,11040\r");
    };
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnSuccess);
    EXPECT_EQ(write(1, "IN;SP1;"), "7");
    EXPECT_EQ(write(1, ""), "0");
    EXPECT_EQ(write(1, "OH;"), "3");
    EXPECT_EQ(read(2), "0,0,1615,11040\r");
    EXPECT_EQ(interface->SetAlternateInterface(1), kIOReturnSuccess); // with interrupt endpoints
    EXPECT_EQ(write(1, "OH;"), "3");
    EXPECT_EQ(read(2), "0,0,1615,11040\r");
    EXPECT_EQ(interface->SetAlternateInterface(2), kIOReturnNotFound);
    EXPECT_EQ(texts, Strings({"IN;SP1;", "OH;", "OH;"})); // a text is a transfer, and nothing is none
    EXPECT_EQ(plotter->log(), Strings({"claim", "clear 01", "setting 1"}));
}

TEST_F(InterfaceTest, OpenAndClosed) {
    open({.settings = {{{0x01}, {0x82}}, {{0x02}}}});
    EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnSuccess);
    EXPECT_EQ(interface->SetAlternateInterface(1), kIOReturnSuccess);
    EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnSuccess);
    EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnNotOpen);

    uint8_t byte;
    EXPECT_EQ(interface->SetAlternateInterface(0), kIOReturnNotOpen);
    EXPECT_EQ(interface->GetNumEndpoints(&byte), kIOReturnNotOpen);
    expectFailures(2, kIOReturnNotOpen);

    EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnSuccess); // and it is at setting 0 again
    EXPECT_EQ(interface->GetNumEndpoints(&byte), kIOReturnSuccess);
    EXPECT_EQ(byte, 2);
    interface.reset(); // closes
    EXPECT_EQ(plotter->log(), Strings({"claim", "setting 1", "release", "claim", "release"}));
}

TEST_F(InterfaceTest, PipesAreThoseOfTheCurrentSetting) {
    open({.settings = {{{0x01, 2, 64}}, {{0x82, 3, 8, 10}, {0x05, 2, 512}, {0x86, 1, 0x0BFF, 1}}}});
    ASSERT_EQ(interface->SetAlternateInterface(1), kIOReturnSuccess);
    using Pipe = std::array<int, 5>; // direction, number, transfer type, packet size, interval
    constexpr Pipe kPipes[] = {{1, 2, 3, 8, 10}, {0, 5, 2, 512, 0}, {1, 6, 1, 0x3FF, 1}};
    uint8_t count = 0, direction, number, type, interval;
    EXPECT_EQ(interface->GetNumEndpoints(&count), kIOReturnSuccess);
    EXPECT_EQ(count, std::size(kPipes));
    for (uint8_t pipe = 1; pipe <= 3; ++pipe) {
        uint16_t size;
        EXPECT_EQ(interface->GetPipeProperties(pipe, &direction, &number, &type, &size, &interval), kIOReturnSuccess);
        EXPECT_EQ((Pipe{direction, number, type, size, interval}), kPipes[pipe - 1]);
    }
    for (const int pipe : {0, 4, 0x81, 0x82, 255})
        expectFailures(static_cast<uint8_t>(pipe), kIOUSBUnknownPipeErr);
    EXPECT_EQ(write(1, "IN;"), failed(kIOReturnNotWritable));
    EXPECT_EQ(read(3), failed(kIOReturnNotReadable)); // isochronous
    EXPECT_EQ(plotter->written(), "");
}

TEST_F(InterfaceTest, InPipeByItsEndpointNumber) {
    open({.settings = {{{0x01}, {0x81}, {0x86}}}});
    EXPECT_EQ(read(4), failed(kIOUSBUnknownPipeErr));
    plotter->reply("a");
    EXPECT_EQ(read(1), "a"); // pipe 1 goes out
    EXPECT_EQ(write(1, "IN;"), "3");

    plotter->halt(0x01);
    EXPECT_EQ(write(1, "IN;"), failed(kIOUSBPipeStalled));
    EXPECT_EQ(interface->GetPipeStatus(1), kIOReturnSuccess);
    plotter->halt(0x81);
    EXPECT_EQ(read(1), failed(kIOUSBPipeStalled));
    EXPECT_EQ(interface->GetPipeStatus(1), kIOUSBPipeStalled);
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnSuccess); // both
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnSuccess); // what is not halted is not cleared
    EXPECT_EQ(interface->ClearPipeStallBothEnds(6), kIOReturnSuccess); // no pipe has that reference
    EXPECT_EQ(plotter->log(), Strings({"claim", "clear 81", "clear 01", "clear 01", "clear 86"}));
}

TEST_F(InterfaceTest, ReadsWholePacketsAndKeepsTheRest) {
    open({.settings = {{{0x01}, {0x82, 2, 8}}}});
    plotter->reply("abcdefgh");
    plotter->reply("ijk");
    plotter->reply("next");
    EXPECT_EQ(read(2, 10), "abcdefghij");
    EXPECT_EQ(read(2, 10), "k");
    EXPECT_EQ(read(2, 3), "nex");
    EXPECT_EQ(interface->ClearPipeStallBothEnds(2), kIOReturnSuccess); // the pipe starts anew
    plotter->reply("");
    EXPECT_EQ(read(2), "");
    plotter->reply("xyz");
    EXPECT_EQ(read(2, 1), "x");
    EXPECT_EQ(read(2), "yz");
}

TEST_F(InterfaceTest, ASilentPlotterHoldsAReadForASecond) {
    open({.settings = {{{0x01}, {0x82, 2, 8}}}});
    EXPECT_EQ(read(2), failed(kIOReturnNotResponding));
    plotter->reply("12345678"); // no shorter packet says that this is all
    EXPECT_EQ(read(2), "12345678");
    EXPECT_EQ(plotter->log(), Strings({"claim", "cancel 82", "cancel 82"}));
}

TEST_F(InterfaceTest, AStopEndsWhatIsUnderWay) {
    open();
    plotter->takeOnly(5);
    plotter->onWait = platform::requestStop;
    EXPECT_EQ(write(1, "PU0,0;PD100,0;"), failed(kIOReturnAborted, 5));
    EXPECT_EQ(write(1, "PU;"), failed(kIOReturnAborted)); // it lasts until the call ends
    EXPECT_EQ(read(2), failed(kIOReturnAborted));
    platform::endCall();
    platform::beginCall();
    EXPECT_EQ(read(2), failed(kIOReturnAborted));
    EXPECT_EQ(plotter->log(), Strings({"claim", "cancel 01", "cancel 82"}));
}

TEST_F(InterfaceTest, ADisturbedLineIsNoLossButNoDeviceIs) {
    open();
    plotter->disturbNext();
    EXPECT_EQ(write(1, "IN;"), failed(kIOReturnIOError));
    plotter->takeOnly(2);
    plotter->onWait = [&] { plotter->unplug(); };
    EXPECT_EQ(write(1, "PU;PD;"), failed(kIOReturnNoDevice, 2));
    EXPECT_EQ(read(2), failed(kIOReturnNoDevice));
    EXPECT_EQ(interface->GetPipeStatus(1), kIOReturnNoDevice);
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnNoDevice);
    EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnNoDevice);
}

TEST_F(InterfaceTest, ThePrinterDriverIsMovedAsideAndGivenBack) {
    open({.place = "1-2.3", .configurations = 2, .activeConfiguration = 2, .driver = "usblp"});
    EXPECT_EQ(plotter->driver(), "usbfs");
    EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnSuccess);
    EXPECT_EQ(plotter->driver(), "usblp");
    EXPECT_EQ(plotter->log(), Strings({"detach usblp", "claim", "release", "attach usblp"}));

    // A job that was killed could not. Where that driver is not loaded, somebody wanted it so.
    for (const char *expected : {"", "usblp"}) {
        plotter->bindDriver("");
        EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnSuccess);
        EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnSuccess);
        EXPECT_EQ(plotter->driver(), expected);
        std::filesystem::create_directories(bed->fileOf("/sys/bus/usb/drivers/usblp"));
    }
}

TEST_F(InterfaceTest, HeldBySomeoneElse) {
    const bed::UsbPlotter byADriver(*bed, {.place = "1-1", .vendor = 0x099F, .driver = "ftdi_sio"});
    const bed::UsbPlotter byAProgram(*bed, {.place = "1-2", .vendor = 0x0C30, .driver = "usbfs"});
    for (const int vendor : {0x099F, 0x0C30})
        EXPECT_EQ(findInterface(vendor)->USBInterfaceOpen(), kIOReturnExclusiveAccess);
    EXPECT_EQ(byADriver.log(), Strings());
    EXPECT_EQ(byAProgram.log(), Strings());
}

} // namespace
