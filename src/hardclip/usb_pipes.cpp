#include "hardclip/usb_pipes.h"

#include "platform/posix/console.h"
#include "record/state.h"
#include "usb/interface.h"

#include <iterator>

namespace hardclip {

namespace {

constexpr uint8_t kIn = 1;
constexpr uint8_t kBulk = 2;

const char *directionName(uint8_t direction) {
    constexpr const char *kNames[] = {"out", "in", "none", "any"};
    return direction < std::size(kNames) ? kNames[direction] : "???";
}

const char *transferTypeName(uint8_t type) {
    constexpr const char *kNames[] = {"control", "isoc", "bulk", "interrupt"};
    if (type == 255) return "any";
    return type < std::size(kNames) ? kNames[type] : "???";
}

void listPipe(uint8_t pipe) {
    uint8_t direction = 0;
    uint8_t number = 0;
    uint8_t type = 0;
    uint8_t interval = 0;
    uint16_t packetSize = 0;
    IOReturn result = usb::plotterInterface().GetPipeProperties(pipe, &direction, &number, &type, &packetSize, &interval);
    if (result != kIOReturnSuccess) {
        posix::printf("Unable to get properties of pipe %d (%08x)\n", pipe, static_cast<unsigned>(result));
        return;
    }
    posix::printf("PipeRef %d: ", pipe);
    posix::printf("pipeID %d ", number);
    posix::printf("direction %s\n", directionName(direction));
    if (direction != kIn) return;
    answer().ORB_USB_PIPEIN = number;
    posix::printf("transfer type %s, maxPacketSize %d\n", transferTypeName(type), packetSize);
    if (type == kBulk) showPipeStatus();
}

} // namespace

void preparePipes() {
    ORB_ServiceRecord &record = answer();
    IOUSBInterfaceInterface245 &interface = usb::plotterInterface();
    IOReturn result = interface.ClearPipeStallBothEnds(record.ORB_USB_PIPEOUT);
    if (result != kIOReturnSuccess) {
        posix::printf(" [S11] ClearPipeStallBothEnds returns an error : %d\n", result);
        record.ORB_errorID = kORB_ErrorPipe;
        return;
    }
    posix::puts(" [S11] ClearPipeStallBothEnds succeed for pipe_out");
    uint8_t count = 0;
    if (result = interface.GetNumEndpoints(&count); result != kIOReturnSuccess) {
        posix::printf("Unable to get number of endpoints (%08x)\n", static_cast<unsigned>(result));
        count = 0;
    } else {
        posix::printf("gORB_interfaceInterface has %d endpoints\n", count);
    }
    for (int pipe = 1; pipe <= count; ++pipe)
        listPipe(static_cast<uint8_t>(pipe));
    result = interface.ClearPipeStallBothEnds(record.ORB_USB_PIPEIN);
    if (result != kIOReturnSuccess) {
        posix::printf("\n\n[S11] : ClearPipeStallBothEnds of ORB_pipe_in returns an error : %d", result);
        record.ORB_errorID = kORB_ErrorPipe;
    } else {
        posix::puts("\n\n[S11] ClearPipeStallBothEnds succeed for ORB_pipe_in");
    }
}

void showPipeStatus() {
    constexpr struct {
        IOReturn result;
        const char *name;
    } kNames[] = {{kIOReturnSuccess, "kIOReturnSuccess"},
                  {kIOReturnNoDevice, "kIOReturnNoDevice"},
                  {kIOReturnNotOpen, "kIOReturnNotOpen"},
                  {kIOUSBPipeStalled, "kIOUSBPipeStalled"}};
    IOReturn result = usb::plotterInterface().GetPipeStatus(answer().ORB_USB_PIPEIN);
    for (const auto &row : kNames) {
        if (row.result != result) continue;
        posix::printf(" [S11 ORB_readPlotFile2Write] GetPipeStatus ORB_pipe_in (kernResult == (kern_return_t) %s\n",
                      row.name);
    }
}

} // namespace hardclip
