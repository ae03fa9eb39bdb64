#include "language/line_type.h"

#include <algorithm>
#include <numeric>

namespace language {

namespace {

struct Pattern {
    size_t count;
    double parts[8];
};

constexpr Pattern kPatterns[] = {
    {2, {0, 100}},
    {2, {50, 50}},
    {2, {70, 30}},
    {4, {80, 10, 0, 10}},
    {4, {70, 10, 10, 10}},
    {6, {50, 10, 10, 10, 10, 10}},
    {6, {70, 10, 0, 10, 0, 10}},
    {8, {50, 10, 0, 10, 10, 10, 0, 10}},
};

} // namespace

LineType dashed(LineType::Kind kind, std::span<const double> parts, double length) {
    LineType type;
    const double sum = std::accumulate(parts.begin(), parts.end(), 0.0);
    if (!(sum > 0) || !(length > 0)) return type;
    type.kind = kind;
    type.count = std::min(parts.size(), LineType::kMaxParts);
    for (size_t i = 0; i < type.count; ++i)
        type.parts[i] = parts[i] / sum;
    type.length = length;
    return type;
}

std::span<const double> standardPattern(int type) noexcept {
    if (type < 1 || type > static_cast<int>(std::size(kPatterns))) return {};
    const Pattern &pattern = kPatterns[type - 1];
    return {pattern.parts, pattern.count};
}

} // namespace language
