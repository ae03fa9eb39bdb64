#include "host/print/reply_numbers.h"

#include <algorithm>
#include <charconv>

namespace host {

namespace {

constexpr std::string_view kLineEnds = "\r\n";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view lineOf(std::string_view reply) {
    reply.remove_prefix(std::min(reply.find_first_not_of(kLineEnds), reply.size()));
    reply = reply.substr(0, reply.find_first_of(kLineEnds));
    const size_t percent = reply.rfind('%');
    return percent == std::string_view::npos ? reply : reply.substr(percent + 1);
}

} // namespace

std::vector<double> numbersIn(std::string_view reply) {
    const std::string_view line = lineOf(reply);
    std::vector<double> numbers;
    for (const char *at = line.data(), *end = at + line.size(); at != end;) {
        const char *digit = at;
        if (*digit == '-') ++digit;
        if (digit != end && *digit == '.') ++digit;
        if (digit == end || !isDigit(*digit)) {
            ++at;
            continue;
        }
        double value = 0;
        at = std::from_chars(at, end, value, std::chars_format::fixed).ptr;
        numbers.push_back(value);
    }
    return numbers;
}

} // namespace host
