#include "plot/link_switch.h"

#include "serial/link.h"
#include "service/state.h"

extern "C" int32_t ORB_writePlotter() {
    gORB_FoundationStruct.lastWrite = {};
    switch (answer().ORB_OutputMethode) {
    case kORB_OSX_METHOD_SERIAL: return ORB_SerialwritePlotter();
    default: return 0;
    }
}
