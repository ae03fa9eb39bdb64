// Replies to a hard-clip query: the first bytes choose the emulation, the link, the plotter's make and the variant, the rest
// is what the plotter says, reply by reply.
#include "support/input.h"
#include "support/platform.h"

#include <cmath>

namespace {

constexpr int32_t kEmulations[] = {17001, 17002, 17005, 17008, 17009, 17010, 17022, 17030, 17032, 17037};
constexpr uint16_t kVendors[] = {0x0B75, 0x099F, 0x0B4D, 0x0C30, 0x0F0B, 17022, 0};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const int32_t emulation = input.pick(kEmulations);
    const uint8_t link = input.byte();
    fuzz::Platform platform(input.pick(kVendors));
    constexpr stand_in::Endpoint kEndpoints[] = {{0, 1}, {1, 2}, {0, 3}, {1, 4}};
    platform.registry.endpoints.assign(kEndpoints, kEndpoints + 1 + link / 2 % 4);
    ORB_ServiceRecord record = platform.record();
    record.ORB_serviceNumber = link % 2 != 0 ? kORB_ServiceUSBHardClip : kORB_ServiceSerialHardClip;
    record.ORB_OutputMethode = link % 2 != 0 ? kORB_OSX_METHOD_USB : kORB_OSX_METHOD_SERIAL;
    record.ORB_USBlocationID = fuzz::kLocation;
    record.ORB_EmulationID = emulation;
    record.ORB_queryEmulationID = emulation;
    record.ORB_emulationVariant = input.byte();
    if (link >= 0x80) platform.weather = input.upTo('\n');
    platform.says(input.rest());

    const ORB_ServiceRecord returned = fuzz::call(platform, record);
    for (double value : {returned.ORB_HARDC_1, returned.ORB_HARDC_2, returned.ORB_HARDC_3, returned.ORB_HARDC_4})
        fuzz::require(std::isfinite(value) && value >= -1, "limits are numbers, or -1 for one that did not come");
    fuzz::require(fuzz::isClosed(platform, returned), "a query closes what it opened");
    fuzz::releaseStrings(returned);
    return 0;
}
