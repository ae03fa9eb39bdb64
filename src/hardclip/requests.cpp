#include "hardclip/requests.h"

#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"

#include <iterator>

namespace hardclip {

namespace {

constexpr const char *kHpgl = "IN;OH;";
constexpr const char *kHpglSpaced = "IN-1;OH;";
constexpr const char *kLineStart = ";:ECN,EF,P0,A,U,U0,0,K,";
// Enters HP-GL from the language that the plotter was in, and asks for two of its values.
constexpr const char *kEscape = "\x1b%0B\x03NP4,\x03NP7,70,\x03NP7,76,!ST1;";
static_assert(std::char_traits<char>::length(kEscape) == 30);

/// The ";:" language, by variant: area (EH, EF) and unit (ECN, EC1, ECM, EC5).
const char *semicolonColonRequest() {
    constexpr const char *kVariants[] = {";:EH,ECN,ER,Q@", ";:EH,EC1,ER,Q@", ";:EH,ECM,ER,Q@", ";:EH,EC5,ER,Q@",
                                         ";:EF,ECN,ER,Q@", ";:EF,EC1,ER,Q@", ";:EF,ECM,ER,Q@"};
    const uint32_t variant = answer().ORB_emulationVariant;
    return variant >= 1 && variant <= std::size(kVariants) ? kVariants[variant - 1] : ";:EF,EC5,ER,Q@";
}

const char *serialRequest() {
    ORB_ServiceRecord &record = answer();
    switch (record.ORB_EmulationID) {
    case 17005: return kHpglSpaced;
    case 17008:
    case 17030: return semicolonColonRequest();
    case 17009:
        if (record.ORB_emulationVariant != 2) return "[";
        record.ORB_EmulationID = 17010;
        return kEscape;
    default: return kHpgl;
    }
}

const char *usbRequest() {
    ORB_ServiceRecord &record = answer();
    const int32_t emulation = record.ORB_PlotterEmulationID;
    const bool second = record.ORB_emulationVariant == 2;
    switch (record.ORB_USBidVendor) {
    case 0x099F: return emulation == 17008 || emulation == 17030 ? semicolonColonRequest() : kHpgl;
    case 0x0B4D:
        if (emulation == 17010) return second ? kLineStart : kHpgl;
        if (!second) return "[[";
        record.ORB_EmulationID = 17010;
        return kEscape;
    case 0x0C30: return kHpglSpaced;
    default: return kHpgl;
    }
}

} // namespace

void buildSerialRequest() noexcept { plot::loadText(platform::constantString(serialRequest())); }

void buildUsbRequest() noexcept { plot::loadText(platform::constantString(usbRequest())); }

} // namespace hardclip
