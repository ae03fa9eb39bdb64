#include "hardclip/requests.h"

#include "emulations/emulations.h"
#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"

namespace hardclip {

namespace {

void build(emulations::Requests requests) {
    ORB_ServiceRecord &record = answer();
    const bool hasOwn = record.ORB_emulationVariant < requests.size();
    const emulations::Request &request = requests[hasOwn ? record.ORB_emulationVariant : 0];
    if (request.becomes != 0) record.ORB_EmulationID = request.becomes;
    plot::loadText(platform::constantString(request.text));
}

} // namespace

void buildSerialRequest() noexcept { build(emulations::of(answer().ORB_EmulationID).requests); }

void buildUsbRequest() noexcept {
    build(emulations::usbRequests(answer().ORB_USBidVendor, answer().ORB_PlotterEmulationID));
}

} // namespace hardclip
