#include "host/near_names.h"

#include "host/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <utility>

namespace host {

namespace {

constexpr size_t kMost = 3;

/// Letters to be put in, left out, replaced, or swapped with their neighbour.
size_t distance(const std::string &a, const std::string &b) {
    std::vector<std::vector<size_t>> steps(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            size_t replaced = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, replaced});
            bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isSwap) steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    }
    return steps[a.size()][b.size()];
}

} // namespace

std::vector<std::string> nearNames(const std::string &word, const std::vector<std::string> &names) {
    std::vector<std::pair<size_t, std::string>> near;
    for (const std::string &name : names) {
        size_t away = distance(lowered(word), lowered(name));
        size_t shorter = std::min(word.size(), name.size());
        if (away < shorter && away <= std::max<size_t>(1, shorter / 3)) near.emplace_back(away, name);
    }
    std::sort(near.begin(), near.end());
    std::vector<std::string> result;
    for (size_t i = 0; i < std::min(near.size(), kMost); ++i)
        result.push_back(near[i].second);
    return result;
}

std::string didYouMean(const std::string &word, const std::vector<std::string> &names) {
    std::vector<std::string> near = nearNames(word, names);
    return near.empty() ? "" : fmt::format("did you mean {}? ", fmt::join(near, " or "));
}

} // namespace host
