#include "link/link_switch.h"

#include "platform/iokit/io_return.h"
#include "record/state.h"
#include "serial/link.h"
#include "usb/link.h"

extern "C" int32_t ORB_writePlotter() {
    switch (answer().ORB_OutputMethode) {
    case kORB_OSX_METHOD_SERIAL: return ORB_SerialwritePlotter();
    case kORB_OSX_METHOD_USB: return ORB_USBwritePlotter();
    default: gORB_FoundationStruct.lastWrite = {0, kIOReturnNotOpen}; return 0;
    }
}
