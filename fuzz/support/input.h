// The fuzzer's bytes, as the choices that a target makes of them; and how a target says that something does not hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace fuzz {

/// Ends the run as a finding.
inline void require(bool holds, const char *what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

/// Gives bytes from the front; past the end all are 0.
class Input {
public:
    Input(const uint8_t *data, size_t size) : left_(reinterpret_cast<const char *>(data), size) {}

    uint8_t byte() { return left_.empty() ? uint8_t{0} : static_cast<uint8_t>(take(1)[0]); }

    template <typename Table> const auto &pick(const Table &table) { return table[byte() % std::size(table)]; }

    std::string_view take(size_t count) {
        std::string_view taken = left_.substr(0, std::min(count, left_.size()));
        left_.remove_prefix(taken.size());
        return taken;
    }

    /// What stands before the next end, which is taken as well.
    std::string_view upTo(char end) {
        std::string_view taken = left_.substr(0, left_.find(end));
        left_.remove_prefix(std::min(taken.size() + 1, left_.size()));
        return taken;
    }

    std::string_view rest() { return take(left_.size()); }
    bool isEmpty() const { return left_.empty(); }

private:
    std::string_view left_;
};

} // namespace fuzz
