// Services 7 and 11 in virtual time: what the plotter hears, what it says, and what comes of it.
#include "language/recording_sink.h"
#include "platform/posix/stop.h"
#include "record/state.h"
#include "support/job.h"
#include "virtual_plotter/face/plotter.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>

namespace {

using scripted::gives;

/// A service, the link that it uses, and who is asked over it.
struct Asked {
    uint32_t service, method;
    uint16_t vendor;
    int32_t emulation, queryEmulation;
    uint32_t variant = 0;
};
constexpr uint32_t kSerial = kORB_OSX_METHOD_SERIAL, kUsb = kORB_OSX_METHOD_USB;
constexpr Asked kHpgl = {7, kSerial, 0, 17001, 0}, kPairs = {7, kSerial, 0, 17009, 0, 1};
constexpr Asked kBlanks = {7, kSerial, 0, 17005, 0}, kArea9 = {7, kSerial, 0, 17030, 0, 9};
constexpr Asked kAs17010 = {7, kSerial, 0, 17009, 0, 2}, kCrossed = {7, kUsb, 0x0B75, 17001, 0};
constexpr Asked kUsbHpgl = {11, kUsb, 0x0B75, 17001, 0}, kUsbPairs = {11, kUsb, 0x0B4D, 17009, 0, 1};
constexpr Asked kUsb17002 = {11, kUsb, 0x0F0B, 17002, 17002}, kUsbBlanks = {11, kUsb, 0x0C30, 17005, 0};
constexpr Asked kUsb17008 = {11, kUsb, 0x099F, 17008, 17008, 3}, kUsb17010 = {11, kUsb, 0x0B4D, 17009, 17010, 2};
constexpr Asked kOther = {11, kSerial, 0x0B75, 17001, 0};

ORB_ServiceRecord recordOf(const Asked &asked, scripted::Platform &platform) {
    ORB_ServiceRecord record = jobs::printRecord(platform, "", "");
    record.ORB_serviceNumber = asked.service;
    record.ORB_OutputMethode = asked.method;
    record.ORB_EmulationID = asked.emulation;
    record.ORB_queryEmulationID = asked.queryEmulation;
    record.ORB_emulationVariant = asked.variant;
    record.ORB_USBidVendor = asked.vendor;
    record.ORB_USBlocationID = 5;
    record.ORB_USB_PIPEOUT = 1;
    record.ORB_HARDC_2 = record.ORB_HARDC_4 = 77; // only service 7 zeroes the values first
    platform.registry.devices = {{0x0B75, 7, 5}};
    return record;
}

/// "1 2 3 4; 22007; 27005/0, 11 reads, 16 s": the values, the record's identifier, and the report.
std::string outcomeOf(const ORB_ServiceRecord &r, unsigned slept) {
    ORB_QueryReport report{};
    report.structSize = sizeof report;
    ORB_hostGetQueryReport(&report);
    std::ostringstream text;
    text << r.ORB_HARDC_1 << " " << r.ORB_HARDC_2 << " " << r.ORB_HARDC_3 << " " << r.ORB_HARDC_4 << "; " << r.ORB_errorID
         << "; " << report.errorID << "/" << report.status << ", " << report.reads << " reads, " << slept << " s";
    return text.str();
}

using Platform = scripted::Platform;
using Record = ORB_ServiceRecord;
using Given = std::function<void(Platform &, Record &)>;

void nothing(Platform &, Record &) {}
Given failing(const char *call, long code, int times) {
    return [=](Platform &platform, Record &) { platform.script(call, gives(code), times); };
}

TEST(Query, Dialogues) {
    const std::string toHpgl = "\x1b%0B\x03NP4,\x03NP7,70,\x03NP7,76,!ST1;", start = ";:ECN,EF,P0,A,U,U0,0,K,";
    std::string incomplete;
    for (int i = 0; i < 120; ++i)
        incomplete += "1,2|";
    const auto ended = [](Platform &p, Record &) { p.always("read", gives(0)); };
    const auto refused = [](Platform &p, Record &) { p.script("write", scripted::fails(EIO)); };
    const auto stopped = [](Platform &p, Record &) {
        p.terminal.onWrite = [](std::string_view) { platform::requestStop(); };
    };
    const auto secondRefused = [](Platform &p, Record &) {
        p.script("WritePipe", gives(0));
        p.script("WritePipe", gives(kIOReturnIOError), 9);
    };
    const auto stalled = [](Platform &p, Record &) {
        p.script("ClearPipeStallBothEnds", gives(kIOReturnIOError));
        p.script("WritePipe", gives(kIOReturnIOError), 5);
    };
    const struct {
        const char *what;
        Asked asked;
        std::string says, hears, outcome; ///< replies are separated by a stroke
        Given given = nothing;
        const char *shown = ""; ///< on the console, or as the status text
    } kDialogues[] = {
        {"HP-GL", kHpgl, "0,0,15200,10800\r", "IN;OH;", "0 0 15200 10800; 22007; 22007/0, 1 reads, 6 s", nothing,
         "ORB_HARDC_3 = ORB_Double : 15200.000000\nend phase 1"},
        {"silence", kHpgl, "", "IN;OH;", "0 0 0 0; 22007; 27005/0, 11 reads, 16 s"},
        {"a part ends the polling", kHpgl, "0,0,15200\r", "IN;OH;", "0 0 0 0; 22007; 27005/0, 1 reads, 6 s"},
        {"so does the line's end", kHpgl, "", "IN;OH;", "0 0 0 0; 22007; 22007/0, 1 reads, 6 s", ended},
        {"a refused request", kHpgl, "", "", "0 0 0 0; 22007; 25002/0, 0 reads, 2 s", refused,
         "Service 7 : ORB_SerialreadHardClip() done, no error"},
        {"no reply is awaited after a stop", kHpgl, "", "", "0 0 0 0; 22007; 22007/0, 0 reads, 0 s", stopped},
        {"no path", kHpgl, "", "", "0 0 0 0; 27010; 27010/-1, 0 reads, 0 s",
         [](Platform &, Record &r) { r.ORB_CFSTR_bsdIn_VectorixDevice = 0; },
         "\nNo ORB_CFSTR_bsdIn_VectorixDevice\nService 7 : ORB_SerialopenPort : kORB_SerialTools_errorNoBSDIn"},
        {"blanks", kBlanks, "1 2 3 4\r", "IN-1;OH;", "1 2 3 4; 22007; 22007/0, 1 reads, 6 s"},
        {"no such variant", kArea9, ",,,,1,2,3,4,", ";:EF,EC5,ER,Q@", "1 2 3 4; 22007; 22007/0, 1 reads, 6 s"},
        {"a pair", kPairs, "1,2\r|3,4\r", "[U", "1 2 3 4; 22007; 22007/0, 2 reads, 9 s"},
        {"no second pair", kPairs, "1,2\r", "[U", "1 2 0 0; 22007; 27005/0, 11 reads, 18 s"},
        {"half a second pair", kPairs, "1,2\r|3,", "[U", "1 2 3 111; 22007; 27005/0, 2 reads, 9 s"},
        {"17009 as 17010", kAs17010, "1,2,3,4\r", toHpgl, "1 2 3 4; 22007; 22007/0, 1 reads, 6 s"},
        {"asked over USB, awaited on the line", kCrossed, "1,2,3,4\r", "IN;OH;", "1 2 3 4; 22007; 22007/0, 1 reads, 8 s",
         failing("USBInterfaceOpen", kIOReturnExclusiveAccess, 3)},

        {"start of 17002", kUsb17002, "1,2,3,4", "IN;IN;OH;", "1 2 3 4; 22007; 22007/0, 1 reads, 4 s"},
        {"digits are enough", kUsbBlanks, " 5,1 6\r", "IN-1;OH;", "51 0 0 0; 22007; 22007/0, 1 reads, 4 s", nothing,
         "< ORB_startspace found >\n< comma found here in MHGL , >ORB_HARDC_1 = ORB_Double : 51.000000\n"},
        {"start of 17008", kUsb17008, "(0,1,2,3,1,2,3,4,", start + start + ";:EH,ECM,ER,Q@",
         "1 2 3 4; 22007; 22007/0, 1 reads, 4 s"},
        {"a second read", kUsbHpgl, "x|1,2,3,4", "IN;OH;", "1 2 3 4; 22007; 22007/0, 2 reads, 7 s"},
        {"asked again in each pass", kUsbPairs, "1,2|x0|3,4", "[[UUUU", "1 2 3 4; 22007; 22007/0, 3 reads, 9 s"},
        {"17010 by variant", kUsb17010, "1,2|3,4", start + "UU", "1 2 3 4; 22007; 22007/0, 2 reads, 6 s"},
        {"USB: silence", kUsbHpgl, "", "IN;OH;", "0 0 0 0; 29008; 29008/-536870163, 9 reads, 56 s"},
        {"gone", kUsbHpgl, "", "IN;OH;", "0 0 0 0; 29006; 29006/-536870208, 9 reads, 56 s",
         failing("ReadPipe", kIOReturnNoDevice, 9)},
        {"a broken pipe", kUsbHpgl, "", "IN;OH;", "0 0 0 0; -536870195; -536870195/-536870198, 9 reads, 56 s",
         failing("ReadPipe", kIOReturnIOError, 9)},
        {"neither taken nor answered", kUsbHpgl, "", "", "0 0 0 0; 29008; 29008/-536870193, 9 reads, 56 s",
         failing("WritePipe", kIOReturnNotWritable, 6)},
        {"never complete", kUsbHpgl, incomplete, "IN;OH;", "1 0 0 0; 22007; 22007/0, 99 reads, 5051 s"},
        {"second request refused", kUsbPairs, "1,2", "[[", "1 2 111 111; 22007; 22007/-536870198, 9 reads, 48 s",
         secondRefused},
        {"no second reply", kUsbPairs, "1,2", "[[UUUUUUUUUUUUUUUUUU",
         "1 2 111 111; 29008; 29008/-536870163, 10 reads, 58 s"},
        {"stalled, and taken at the sixth attempt", kUsbHpgl, "1,2,3,4", "IN;OH;", "1 2 3 4; 22007; 22007/0, 1 reads, 4 s",
         stalled},
        {"held by another", kUsbHpgl, "", "", "0 77 0 77; 29002; 29002/-536870203, 0 reads, 0 s",
         failing("USBInterfaceOpen", kIOReturnExclusiveAccess, 1)},
        {"over another link", kOther, "", "", "0 77 0 77; 29002; 29002/-536870195, 0 reads, 0 s"},
    };
    for (const auto &c : kDialogues) {
        SCOPED_TRACE(c.what);
        Platform platform;
        Record record = recordOf(c.asked, platform);
        std::istringstream says(c.says);
        for (std::string reply; std::getline(says, reply, '|');)
            (c.asked.service == 7 ? platform.terminal.replies : platform.registry.replies).push_back(reply);
        c.given(platform, record);
        record = ORB_getVectorixCS2(record);
        EXPECT_EQ(platform.terminal.written + platform.registry.written, c.hears);
        EXPECT_EQ(outcomeOf(record, platform.clock.slept), c.outcome);
        const std::string shown = platform.console.out + std::string(platform::stringView(record.ORB_CFSTR_message));
        EXPECT_NE(shown.find(c.shown), std::string::npos) << shown;
        const int32_t closing = c.asked.service == 7 ? 6 : 10;
        EXPECT_EQ(record.ORB_lastService, record.ORB_errorID == kORB_SerialTools_errorNoBSDIn ? 0 : closing);
    }
}

// An endpoint that is found by its number is asked for as a pipe: there must be a third one.
TEST(Query, ListsThePipes) {
    Platform platform;
    Record record = recordOf(kUsbHpgl, platform);
    platform.registry.endpoints = {{1, 3, 2}, {0, 2, 2}, {0, 1, 2}};
    platform.registry.replies = {"1,2,3,4"};
    EXPECT_EQ(ORB_getVectorixCS2(record).ORB_USB_PIPEIN, 3);
    EXPECT_NE(platform.console.out.find("PipeRef 1: pipeID 3 direction in\n"), std::string::npos) << platform.console.out;
}

constexpr language::Rectangle kSheet{{100, 200}, {10000, 8000}};
constexpr uint32_t kVariants = 10; // 0 and those past the last among them

/// The values are the sheet's corners, in the unit that the ";:" language was asked in.
void expectCorners(const ORB_ServiceRecord &record, int32_t emulation, uint32_t variant) {
    constexpr double kUnits[] = {1, 1.016, 4, 5.08}; // plotter units, for variants 1 to 4
    const bool hasUnits = emulation == 17008 || emulation == 17030;
    const double unit = !hasUnits ? 1 : variant < 1 || variant > 8 ? kUnits[3] : kUnits[(variant - 1) % 4];
    const double values[] = {record.ORB_HARDC_1, record.ORB_HARDC_2, record.ORB_HARDC_3, record.ORB_HARDC_4};
    const double corners[] = {kSheet.lower.x, kSheet.lower.y, kSheet.upper.x, kSheet.upper.y};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(values[i] * unit, corners[i], unit / 2);
}

void connect(virtual_plotter::VirtualPlotter &plotter, stand_in::Wire &wire) {
    wire.onWrite = [&](std::string_view text) {
        ASSERT_EQ(plotter.hear(text, {}), text.size());
        if (std::string said = plotter.takeSaid(); !said.empty()) wire.replies.push_back(said);
    };
}

/// The vendor of plotters with that emulation; others' plotters are asked in HP-GL, whatever they understand.
uint16_t vendorOf(int32_t emulation) {
    if (emulation == 17008 || emulation == 17030) return 0x099F;
    if (emulation == 17009 || emulation == 17010) return 0x0B4D;
    return emulation == 17005 ? 0x0C30 : 0x0B75;
}

// Against the plotter in software: each emulation's questions, and the numbers that come of its answers.
TEST(Query, EachEmulationOverBothLinks) {
    language::RecordingSink sink;
    for (int32_t emulation = 17001; emulation <= 17037; ++emulation) {
        for (uint32_t variant = 0; variant < kVariants; ++variant) {
            SCOPED_TRACE(testing::Message() << emulation << " variant " << variant);
            Platform platform;
            virtual_plotter::PlotterOptions options;
            setEmulation(options, emulation);
            virtual_plotter::VirtualPlotter serial(options, sink, kSheet), usb(options, sink, kSheet);
            connect(serial, platform.terminal);
            connect(usb, platform.registry);
            Asked asked = {7, kSerial, vendorOf(emulation), emulation, emulation, variant};
            expectCorners(ORB_getVectorixCS2(recordOf(asked, platform)), emulation, variant);
            asked.service = 11, asked.method = kUsb;
            expectCorners(ORB_getVectorixCS2(recordOf(asked, platform)), emulation, variant);
        }
    }
}

} // namespace
