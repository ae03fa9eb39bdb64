#include "entry/services.h"

#include "record/state.h"

extern "C" int32_t ORB_VectorixService1() {
    answer().ORB_lastService = 1;
    answer().ORB_errorID = kORB_ErrorService1;
    return 0;
}

extern "C" int32_t ORB_VectorixService14() {
    answer().ORB_lastService = 14;
    return 0;
}
