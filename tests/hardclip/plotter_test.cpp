// Services 7 and 11 against the plotter in software: each emulation's questions, and the numbers that come of its answers.
#include "language/recording_sink.h"
#include "record/state.h"
#include "support/job.h"
#include "virtual_plotter/face/plotter.h"

#include <gtest/gtest.h>

namespace {

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

TEST(PlotterQuery, EachEmulationOverBothLinks) {
    language::RecordingSink sink;
    for (int32_t emulation = 17001; emulation <= 17037; ++emulation) {
        for (uint32_t variant = 0; variant < kVariants; ++variant) {
            SCOPED_TRACE(testing::Message() << emulation << " variant " << variant);
            scripted::Platform platform;
            platform.registry.devices = {{vendorOf(emulation), 7, 5}};
            virtual_plotter::PlotterOptions options;
            setEmulation(options, emulation);
            virtual_plotter::VirtualPlotter serial(options, sink, kSheet), usb(options, sink, kSheet);
            connect(serial, platform.terminal);
            connect(usb, platform.registry);

            ORB_ServiceRecord record = jobs::printRecord(platform, "", "");
            record.ORB_EmulationID = record.ORB_queryEmulationID = emulation;
            record.ORB_emulationVariant = variant;
            record.ORB_USBidVendor = vendorOf(emulation);
            record.ORB_USBlocationID = 5;
            record.ORB_serviceNumber = kORB_ServiceSerialHardClip;
            expectCorners(ORB_getVectorixCS2(record), emulation, variant);
            record.ORB_serviceNumber = kORB_ServiceUSBHardClip;
            record.ORB_OutputMethode = kORB_OSX_METHOD_USB;
            expectCorners(ORB_getVectorixCS2(record), emulation, variant);
        }
    }
}

} // namespace
