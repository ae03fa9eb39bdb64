#include "language/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace language {

void appendNumber(std::string &text, double value) {
    constexpr double kDigits = 15, kMostDecimals = 18; // the readers take no more
    char digits[64];
    if (std::abs(value) < 1e15 && value == std::trunc(value)) { // mostly
        text.append(digits, std::to_chars(digits, std::end(digits), static_cast<int64_t>(value)).ptr);
        return;
    }
    const double before = std::floor(std::log10(std::abs(value))) + 1; // the point
    const auto decimals = static_cast<int>(std::clamp(kDigits - before, 1.0, kMostDecimals));
    char *end = std::to_chars(digits, std::end(digits), value, std::chars_format::fixed, decimals).ptr;
    while (end[-1] == '0')
        --end;
    text.append(digits, end[-1] == '.' ? end - 1 : end);
}

} // namespace language
