// The services of the serial link.
#include "serial/link.h"

#include "record/state.h"
#include "record/status_text.h"

namespace {

/// failed takes the result as its only argument.
void reportStep(int32_t result, const char *done, const char *failed) {
    if (result == 0) {
        setStatus(done);
    } else {
        setStatusFormat(failed, result);
    }
}

} // namespace

int32_t ORB_VectorixService4() {
    answer().ORB_lastService = 4;
    const int32_t result = ORB_SerialopenPort();
    reportStep(result, "Service 4 : ORB_SerialopenPort() done, no error",
               "Service 4 : ORB_SerialopenPort done but kernResult =%d");
    return result;
}

int32_t ORB_VectorixService5() {
    answer().ORB_lastService = 4;
    int32_t result = ORB_SerialopenPort();
    reportStep(result, "Service 5 : ORB_SerialopenPort() done, no error",
               "Service 5 : ORB_SerialopenPort() done but kernResult =%d");
    if (!portIsOpen()) return result;
    // Start-up bytes that could not be written leave the port open: the write is tried all the same.
    if (answer().ORB_errorID == kORB_NoError) answer().ORB_lastService = 5;
    result = ORB_SerialwritePlotter();
    reportStep(result, "Service 5 : ORB_SerialwritePlotter() done, no error",
               "Service 5 : ORB_SerialwritePlotter() done but kernResult =%d");
    return result;
}

int32_t ORB_VectorixService6() {
    answer().ORB_lastService = 6;
    answer().ORB_errorID = kORB_NoError;
    return portIsOpen() ? ORB_SerialclosePort() : 0;
}
