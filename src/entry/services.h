// Services 1 and 14, which concern no subsystem: they only write the record. All others are declared by their subject.
#pragma once

#include <cstdint>

extern "C" {

/// Not reached from the entry: ORB_lastService 1, ORB_errorID 21003. Returns 0.
int32_t ORB_VectorixService1();
/// ORB_lastService 14. Returns 0.
int32_t ORB_VectorixService14();
}
