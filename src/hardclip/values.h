// How the record gets its four hard-clip values, in both queries.
#pragma once

#include "hardclip/reply.h"
#include "record/state.h"

namespace hardclip {

inline void storeValues(const Reading &reading) noexcept {
    answer().ORB_HARDC_1 = reading.values[0];
    answer().ORB_HARDC_2 = reading.values[1];
    answer().ORB_HARDC_3 = reading.values[2];
    answer().ORB_HARDC_4 = reading.values[3];
}

} // namespace hardclip
