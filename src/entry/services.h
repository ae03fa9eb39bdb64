// The services that the entry answers by itself.
#pragma once

#include <cstdint>

extern "C" {

/// Not reached from the entry: ORB_lastService 1, ORB_errorID 21003. Returns 0.
int32_t ORB_VectorixService1();
/// ORB_lastService 14. Returns 0.
int32_t ORB_VectorixService14();
}
