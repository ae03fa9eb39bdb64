// A place as it is typed.
#pragma once

#include "host/terminal/command.h"
#include "language/geometry.h"

#include <cmath>

namespace host {

/// "X,Y", each a number of at most most either way; none for anything else.
inline std::optional<language::Point> typedPoint(const std::string &text, double most) {
    const size_t comma = text.find(',');
    if (comma == std::string::npos) return std::nullopt;
    const std::optional<double> x = typedNumber(text.substr(0, comma)), y = typedNumber(text.substr(comma + 1));
    if (!x || !y || !(std::abs(*x) <= most) || !(std::abs(*y) <= most)) return std::nullopt;
    return language::Point{*x, *y};
}

} // namespace host
