// The plotter's end of a link, the same for a serial line and for USB pipes: what came, and what it says.
#pragma once

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

namespace stand_in {

struct Wire {
    std::string written;                           ///< all bytes taken, over all descriptors and interfaces
    std::deque<std::string> replies;               ///< what reads give, one after the other
    std::function<void(std::string_view)> onWrite; ///< called in each write, with its text

    /// Copies what there is room for of the next reply, of which there is one; the rest of it comes with the next read.
    size_t say(void *buffer, size_t room) {
        std::string &reply = replies.front();
        const size_t count = std::min(room, reply.size());
        memcpy(buffer, reply.data(), count);
        reply.erase(0, count);
        if (reply.empty()) replies.pop_front();
        return count;
    }
};

} // namespace stand_in
