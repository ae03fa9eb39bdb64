// Sequences of calls: each step changes some bytes of the record that came back last, and calls a service.
#include "platform/corefoundation/corefoundation.h"
#include "support/input.h"
#include "support/platform.h"

#include <cstring>
#include <vector>

namespace {

constexpr size_t kMostSteps = 8;

/// The offsets that services look at; what lies between them is reserved.
constexpr size_t kFields[] = {
#define AT(field) offsetof(ORB_ServiceRecord, field)
    AT(ORB_EmulationID),      AT(ORB_emulationVariant),
    AT(ORB_errorID),          AT(ORB_deviceCount),
    AT(ORB_OutputMethode),    AT(ORB_USBplotterIndex),
    AT(ORB_baudRate),         AT(ORB_dataBits),
    AT(ORB_stopBits),         AT(ORB_parity),
    AT(ORB_flowControl),      AT(ORB_portFD),
    AT(ORB_writeBuffer),      AT(ORB_interfaceOpen),
    AT(ORB_CFSTR_TTYDevice),  AT(ORB_CFSTR_CalloutDevice),
    AT(ORB_CFSTR_message),    AT(ORB_CFSTR_bsdIn_VectorixDevice),
    AT(ORB_USBidVendor),      AT(ORB_USBidProduct),
    AT(ORB_USBlocationID),    AT(ORB_USBplotterTable),
    AT(ORB_queryEmulationID), AT(ORB_queryPlotterID),
    AT(ORB_JobFileRef),       AT(ORB_PlotFileInRef),
    AT(ORB_UseTools),         AT(ORB_CFSTR_PlotfileTerminator),
    AT(ORB_CFSTR_Tool1),      AT(ORB_CFSTR_Tool8),
    AT(ORB_PlotterID),        AT(ORB_PlotterEmulationID),
    AT(ORB_PlotChunkSize),    AT(ORB_USB_PIPEOUT),
    AT(ORB_USB_PIPEIN),
#undef AT
};

void change(ORB_ServiceRecord &record, fuzz::Input &input) {
    const size_t offset = input.pick(kFields);
    const std::string_view bytes = input.take(input.byte());
    memcpy(reinterpret_cast<char *>(&record) + offset, bytes.data(), std::min(bytes.size(), sizeof record - offset));
}

/// A string as a host makes them, in a field that takes one.
void give(ORB_ServiceRecord &record, fuzz::Input &input, std::vector<CFStringRef> &made) {
    CFStringRef *const fields[] = {&record.ORB_CFSTR_bsdIn_VectorixDevice, &record.ORB_CFSTR_PlotfileTerminator,
                                   &record.ORB_CFSTR_Tool1, &record.ORB_CFSTR_message, &record.ORB_CFSTR_TTYDevice[0]};
    CFStringRef &field = *input.pick(fields);
    field = CFStringCreateWithUTF8(input.take(input.byte()));
    made.push_back(field);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const uint32_t before = platform::liveObjectCount();
    std::vector<CFStringRef> made;
    {
        const uint8_t devices = input.byte();
        fuzz::Platform platform(fuzz::kVendor, devices % 8, devices / 8 % 8);
        platform.files.files[fuzz::kJobPath] = input.upTo('\0');
        platform.files.files[fuzz::kPlotPath] = input.upTo('\0');
        platform.weather = input.upTo('\0');
        platform.says(input.upTo('\0'));

        ORB_ServiceRecord record = platform.record();
        std::vector<ORB_ServiceRecord> returned;
        while (!input.isEmpty() && returned.size() < kMostSteps) {
            record.ORB_serviceNumber = input.byte();
            for (uint8_t changes = input.byte(); changes != 0 && !input.isEmpty(); changes /= 2)
                changes % 2 != 0 ? change(record, input) : give(record, input, made);
            record = returned.emplace_back(fuzz::call(platform, record));
        }
        for (const ORB_ServiceRecord &one : returned)
            fuzz::releaseStrings(one);
    }
    for (CFStringRef s : made)
        ORB_hostReleaseString(s);
    fuzz::require(platform::liveObjectCount() == before, "what the host gives back is gone");
    return 0;
}
