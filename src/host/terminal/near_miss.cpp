#include "host/terminal/near_miss.h"

#include <algorithm>
#include <utility>

namespace host {

namespace {

/// How many letters are put in, left out, replaced, or swapped with their neighbour between the two.
size_t distance(std::string_view a, std::string_view b) {
    std::vector<size_t> beforeLast, last(b.size() + 1), row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        beforeLast = std::exchange(last, row);
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
            bool areSwapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (areSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row.back();
}

} // namespace

std::string nearMiss(std::string_view typed, const std::vector<std::string> &known) {
    constexpr size_t kLongest = 64; // no word of ours is near to a longer one
    constexpr size_t kShortestStart = 3;
    if (typed.size() < kShortestStart || typed.size() > kLongest) return {};
    std::string nearest;
    size_t least = std::max<size_t>(1, typed.size() / 3) + 1;
    for (const std::string &word : known) {
        bool begins = word.rfind(typed, 0) == 0;
        size_t far = begins ? 1 : distance(typed, word);
        if (far >= least || far >= word.size()) continue;
        least = far;
        nearest = word;
    }
    return nearest;
}

std::string didYouMean(std::string_view typed, const std::vector<std::string> &known) {
    const std::string meant = nearMiss(typed, known);
    return meant.empty() ? "" : "did you mean " + meant + "? ";
}

} // namespace host
