// A host in C++ that knows the plug-in through its CMake package only.
#include <orb/vectorix.h>

int main() {
    ORB_ServiceRecord record{};
    record.ORB_serviceNumber = kORB_ServiceIdentify;
    return ORB_getVectorixCS2(record).ORB_lastService == 14 ? 0 : 1;
}
