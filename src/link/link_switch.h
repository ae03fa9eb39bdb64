// The link switch: hands ORB_writeBuffer to the writer of the link that ORB_OutputMethode selects. Those who send a text
// need not know where it goes.
#pragma once

#include <cstdint>

extern "C" {

/// 1: USB, 2: serial. Any other value sends nothing and returns 0. What was taken is in gORB_FoundationStruct.lastWrite.
int32_t ORB_writePlotter();
}
