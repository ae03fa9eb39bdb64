// How reading a drawing ends that cannot be plotted.
#pragma once

#include <stdexcept>

namespace strokes {

/// Why, and what to do; a sentence without its subject, which the caller knows: "its page has no size; give it one".
class Unreadable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace strokes
