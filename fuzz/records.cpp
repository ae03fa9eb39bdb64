// Sequences of calls: each step changes some bytes of the record that came back last, and calls a service. The plotter
// answers what it is given to say, over either link.
#include "support/platform.h"

#include <cstring>

namespace {

constexpr size_t kMostSteps = 8;
constexpr int32_t kEmulations[] = {17001, 17002, 17005, 17008, 17009, 17010, 17022, 17030, 17032, 17037};
constexpr uint16_t kVendors[] = {0x0B75, 0x099F, 0x0B4D, 0x0C30, 0x0F0B, 17022, 0};

// By the record's layout, in bytes: the fields that services look at, and strings among them.
constexpr size_t kFields[] = {8,     20,    24,    28,    36,    32,    40,    44,    48,    52,    56,    60,
                              68,    380,   396,   424,   476,   448,   488,   490,   500,   2624,  15432, 15436,
                              22060, 23564, 23820, 23816, 23824, 23852, 23872, 23876, 23932, 23940, 23941};
constexpr size_t kTexts[] = {448, 23816, 23824, 476, 396};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider input(data, size);
    fuzz::Scenario scenario{.emulation = input.PickValueInArray(kEmulations), .vendor = input.PickValueInArray(kVendors)};
    scenario.variant = input.ConsumeIntegral<uint8_t>();
    scenario.method = input.ConsumeBool() ? fuzz::kUsb : fuzz::kSerial;
    scenario.job = input.ConsumeRandomLengthString();
    scenario.plot = input.ConsumeRandomLengthString();
    for (uint8_t replies = input.ConsumeIntegral<uint8_t>() % 8; replies > 0; --replies)
        scenario.replies.push_back(input.ConsumeRandomLengthString());
    fuzz::Platform platform(scenario);
    platform.weather = input.ConsumeRandomLengthString();
    platform.registry.endpoints = {{0, 1}, {1, 2}, {0, 3}, {1, 4}};
    platform.registry.endpoints.resize(1 + input.ConsumeIntegral<uint8_t>() % 4);
    platform.registry.devices.resize(input.ConsumeIntegral<uint8_t>() % 4);
    platform.registry.serialPorts.resize(input.ConsumeIntegral<uint8_t>() % 9);

    ORB_ServiceRecord record = recordOf(scenario);
    platform.hold(record);
    for (size_t step = 0; step < kMostSteps && input.remaining_bytes() != 0; ++step) {
        record.ORB_serviceNumber = input.ConsumeIntegral<uint8_t>();
        for (uint8_t changes = input.ConsumeIntegral<uint8_t>(); changes != 0; changes /= 2) {
            const bool isText = changes % 2 == 0;
            const size_t offset = isText ? input.PickValueInArray(kTexts) : input.PickValueInArray(kFields);
            std::string bytes = input.ConsumeBytesAsString(input.ConsumeIntegral<uint8_t>());
            if (isText) {
                const CFStringRef made = CFStringCreateWithUTF8(bytes);
                platform.strings.insert(made);
                bytes.assign(reinterpret_cast<const char *>(&made), sizeof made);
            }
            memcpy(reinterpret_cast<char *>(&record) + offset, bytes.data(), std::min(bytes.size(), sizeof record - offset));
        }
        const uint32_t service = record.ORB_serviceNumber;
        record = platform.call(record);
        const bool isQuery = service == kORB_ServiceSerialHardClip || service == kORB_ServiceUSBHardClip;
        fuzz::require(step != 0 || !isQuery || platform.isClosed(record), "a query closes what it opened");
    }
    return 0;
}
