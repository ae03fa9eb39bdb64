#include "registry_fixture.h"

#include <filesystem>

namespace {

class InterfaceTest : public RegistryTest {
protected:
    /// Puts a plotter there and opens its interface.
    void open(bed::PlotterShape shape = {}) {
        plotter.emplace(*bed, std::move(shape));
        interface = findInterface();
        ASSERT_TRUE(interface);
        ASSERT_EQ(interface->USBInterfaceOpen(), kIOReturnSuccess);
    }

    void TearDown() override {
        interface.reset();
        plotter.reset();
        RegistryTest::TearDown();
    }

    IOReturn write(uint8_t pipe, std::string_view bytes, uint32_t *taken = nullptr) {
        return interface->WritePipe(pipe, bytes.data(), static_cast<uint32_t>(bytes.size()), taken);
    }

    /// What a read with that much room gives; "!" and the code for a failure.
    std::string read(uint8_t pipe, uint32_t room = 256) {
        std::string buffer(room, '?');
        const IOReturn code = interface->ReadPipe(pipe, buffer.data(), &room);
        if (code == kIOReturnSuccess) return buffer.substr(0, room);
        EXPECT_EQ(room, 0U);
        return failed(code);
    }

    static std::string failed(IOReturn code) { return std::string("!").append(std::to_string(code)); }

    /// What is asked of that pipe fails with the code.
    void expectFailures(uint8_t pipe, IOReturn code) {
        uint8_t byte;
        uint16_t word;
        uint32_t taken = 1;
        EXPECT_EQ(interface->GetPipeProperties(pipe, &byte, &byte, &byte, &word, &byte), code) << +pipe;
        EXPECT_EQ(interface->GetPipeStatus(pipe), code) << +pipe;
        EXPECT_EQ(interface->ClearPipeStallBothEnds(pipe), code) << +pipe;
        EXPECT_EQ(write(pipe, "IN;", &taken), code) << +pipe;
        EXPECT_EQ(taken, 0U) << +pipe;
        EXPECT_EQ(read(pipe), failed(code)) << +pipe;
    }

    std::optional<bed::UsbPlotter> plotter;
    IOReference<IOUSBInterfaceInterface245> interface;
};

TEST_F(InterfaceTest, PrintsAndReads) {
    open({.settings = {{{0x01}, {0x82}}, {{0x03, 3, 16, 4}, {0x84, 3, 8, 2}}}});
    Strings texts;
    plotter->onText = [&](std::string_view text) {
        texts.emplace_back(text);
        if (text == "OH;") plotter->reply("0,0,16158,11040\r");
    };
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnSuccess);
    EXPECT_EQ(write(1, "IN;SP1;"), kIOReturnSuccess);
    EXPECT_EQ(write(1, std::string_view()), kIOReturnSuccess);
    uint32_t taken = 7;
    EXPECT_EQ(write(1, "OH;", &taken), kIOReturnSuccess);
    EXPECT_EQ(taken, 3U);
    EXPECT_EQ(read(2), "0,0,16158,11040\r");

    EXPECT_EQ(interface->SetAlternateInterface(1), kIOReturnSuccess); // with interrupt endpoints
    EXPECT_EQ(write(1, "PU;"), kIOReturnSuccess);
    plotter->reply("18");
    EXPECT_EQ(read(2), "18");
    EXPECT_EQ(interface->SetAlternateInterface(2), kIOReturnNotFound);
    EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnSuccess);
    EXPECT_EQ(texts, Strings({"IN;SP1;", "OH;", "PU;"})); // a text is a transfer, and nothing is none
    EXPECT_EQ(plotter->log(), Strings({"claim", "clear 01", "setting 1", "release"}));
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
    for (const uint8_t pipe : std::initializer_list<uint8_t>{1, 2})
        expectFailures(pipe, kIOReturnNotOpen);

    EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnSuccess); // and it is at setting 0 again
    EXPECT_EQ(interface->GetNumEndpoints(&byte), kIOReturnSuccess);
    EXPECT_EQ(byte, 2);
    interface.reset(); // closes
    EXPECT_EQ(plotter->log(), Strings({"claim", "setting 1", "release", "claim", "release"}));
}

TEST_F(InterfaceTest, PipesAreThoseOfTheCurrentSetting) {
    open({.settings = {{{0x01, 2, 64}}, {{0x82, 3, 8, 10}, {0x05, 2, 512}, {0x86, 1, 0x0BFF, 1}}}});
    ASSERT_EQ(interface->SetAlternateInterface(1), kIOReturnSuccess);
    constexpr struct {
        uint8_t direction, number, transferType;
        uint16_t maxPacketSize;
        uint8_t interval;
    } kPipes[] = {{1, 2, 3, 8, 10}, {0, 5, 2, 512, 0}, {1, 6, 1, 0x3FF, 1}};
    uint8_t count = 0;
    EXPECT_EQ(interface->GetNumEndpoints(&count), kIOReturnSuccess);
    ASSERT_EQ(count, std::size(kPipes));
    for (uint8_t pipe = 1; pipe <= count; ++pipe) {
        uint8_t direction, number, type, interval;
        uint16_t size;
        EXPECT_EQ(interface->GetPipeProperties(pipe, &direction, &number, &type, &size, &interval), kIOReturnSuccess);
        const auto &wanted = kPipes[pipe - 1];
        EXPECT_EQ(std::tie(direction, number, type, size, interval),
                  std::tie(wanted.direction, wanted.number, wanted.transferType, wanted.maxPacketSize, wanted.interval));
    }
    for (const uint8_t pipe : std::initializer_list<uint8_t>{0, 4, 0x81, 0x82, 255})
        expectFailures(pipe, kIOUSBUnknownPipeErr);
    EXPECT_EQ(write(1, "IN;"), kIOReturnNotWritable);
    EXPECT_EQ(read(3), failed(kIOReturnNotReadable)); // isochronous
    EXPECT_EQ(plotter->written(), "");
}

TEST_F(InterfaceTest, InPipeByItsEndpointNumber) {
    open({.settings = {{{0x01}, {0x81}, {0x86}}}});
    EXPECT_EQ(read(4), failed(kIOUSBUnknownPipeErr));
    plotter->reply("a");
    EXPECT_EQ(read(1), "a"); // pipe 1 goes out
    EXPECT_EQ(write(1, "IN;"), kIOReturnSuccess);
    EXPECT_EQ(plotter->written(), "IN;");

    plotter->halt(0x01);
    EXPECT_EQ(interface->GetPipeStatus(1), kIOReturnSuccess);
    plotter->halt(0x81);
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
    EXPECT_EQ(read(2, 0), "");
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

TEST_F(InterfaceTest, AHaltedPipe) {
    open();
    plotter->halt(0x01);
    plotter->halt(0x82);
    uint32_t taken = 9;
    EXPECT_EQ(write(1, "IN;", &taken), kIOUSBPipeStalled);
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(read(2), failed(kIOUSBPipeStalled));
    EXPECT_EQ(interface->GetPipeStatus(1), kIOUSBPipeStalled);
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnSuccess);
    EXPECT_EQ(interface->GetPipeStatus(1), kIOReturnSuccess);
    EXPECT_EQ(interface->GetPipeStatus(2), kIOUSBPipeStalled);
    EXPECT_EQ(write(1, "IN;"), kIOReturnSuccess);
    plotter->refuseStatusRequests();
    EXPECT_EQ(interface->GetPipeStatus(2), kIOReturnUnsupported);
}

TEST_F(InterfaceTest, AStopEndsWhatIsUnderWay) {
    open();
    plotter->takeOnly(5);
    plotter->onWait = platform::requestStop;
    uint32_t taken = 0;
    EXPECT_EQ(write(1, "PU0,0;PD100,0;", &taken), kIOReturnAborted);
    EXPECT_EQ(taken, 5U);
    EXPECT_EQ(write(1, "PU;", &taken), kIOReturnAborted); // it lasts until the call ends
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(read(2), failed(kIOReturnAborted));
    platform::endCall();
    platform::beginCall();
    EXPECT_EQ(read(2), failed(kIOReturnAborted));
    EXPECT_EQ(plotter->written(), "PU0,0");
    EXPECT_EQ(plotter->log(), Strings({"claim", "cancel 01", "cancel 82"}));
}

TEST_F(InterfaceTest, UnpluggedInMidTransfer) {
    open();
    plotter->takeOnly(2);
    plotter->onWait = [&] { plotter->unplug(); };
    uint32_t taken = 0;
    EXPECT_EQ(write(1, "PU;PD;", &taken), kIOReturnNoDevice);
    EXPECT_EQ(taken, 2U);
    EXPECT_EQ(write(1, "PU;"), kIOReturnNoDevice);
    EXPECT_EQ(read(2), failed(kIOReturnNoDevice));
    EXPECT_EQ(interface->GetPipeStatus(1), kIOReturnNoDevice);
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnNoDevice);
    EXPECT_EQ(interface->USBInterfaceClose(), kIOReturnNoDevice);
}

TEST_F(InterfaceTest, ADisturbedLineIsNoLossButNoDeviceIs) {
    open();
    plotter->disturbNext();
    EXPECT_EQ(write(1, "IN;"), kIOReturnIOError);
    EXPECT_EQ(write(1, "IN;"), kIOReturnSuccess);
    plotter->disturbNext();
    EXPECT_EQ(read(2), failed(kIOReturnIOError));
    plotter->unplug();
    EXPECT_EQ(interface->ClearPipeStallBothEnds(1), kIOReturnNoDevice);
}

TEST_F(InterfaceTest, ThePrinterDriverIsMovedAsideAndGivenBack) {
    open({.place = "1-2.3", .configurations = 2, .activeConfiguration = 2, .driver = "usblp"});
    EXPECT_EQ(plotter->driver(), "usbfs");
    EXPECT_EQ(write(1, "IN;"), kIOReturnSuccess);
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
    bed::UsbPlotter byADriver(*bed, {.place = "1-1", .vendor = 0x099F, .driver = "ftdi_sio"});
    bed::UsbPlotter byAProgram(*bed, {.place = "1-2", .vendor = 0x0C30});
    byAProgram.bindDriver("usbfs");
    for (bed::UsbPlotter *held : {&byADriver, &byAProgram}) {
        interface = findInterface(held == &byADriver ? 0x099F : 0x0C30);
        ASSERT_TRUE(interface);
        EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnExclusiveAccess);
        EXPECT_EQ(held->log(), Strings()) << held->driver();
    }
    interface.reset();
    EXPECT_EQ(byADriver.driver(), "ftdi_sio");
    EXPECT_EQ(byAProgram.driver(), "usbfs");
}

} // namespace
