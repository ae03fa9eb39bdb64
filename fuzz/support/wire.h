// What goes over the links, and which calls on the way fail.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace fuzz {

struct Wire {
    std::string arrived;              ///< all that was taken, over either link
    std::string_view replies;         ///< what reads give, each up to a byte of 0xFF
    std::string_view weather;         ///< one byte for each call that can fail; past its end all is well
    std::function<void()> onWrite;    ///< called in each write
    size_t (*room)(size_t) = nullptr; ///< how much of a write is taken; all without it

    /// Whether the call of now fails, and which of the codes it gives.
    template <typename Code, size_t N> bool fails(const Code (&codes)[N], Code *code) {
        if (weather.empty()) return false;
        const auto now = static_cast<unsigned char>(weather.front());
        weather.remove_prefix(1);
        if (now < 0xC0) return false;
        *code = codes[now % N];
        return true;
    }

    std::string_view nextReply(size_t most) {
        const size_t end = std::min(replies.find('\xFF'), replies.size());
        const std::string_view reply = replies.substr(0, std::min(end, most));
        replies.remove_prefix(reply.size() == end ? std::min(end + 1, replies.size()) : reply.size());
        return reply;
    }
};

} // namespace fuzz
