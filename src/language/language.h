// The plotter languages that there are readers of. A header of its own, for the table of emulations names them and needs no
// reader.
#pragma once

#include <cstdint>
#include <string_view>

namespace language {

enum class Language : uint8_t { Hpgl, Dmpl };

/// What stands behind an instruction: what a job names as terminator when nothing else is known of its plot.
constexpr std::string_view terminatorOf(Language language) { return language == Language::Dmpl ? "," : ";"; }

} // namespace language
