// The plotter languages that there are readers of. A header of its own, for the table of emulations names them and needs no
// reader.
#pragma once

#include <cstdint>

namespace language {

enum class Language : uint8_t { Hpgl, Dmpl };

} // namespace language
