#pragma once

namespace platform {

/// The base of what the registry hands out by pointer, so that what was not released can be told.
class CountedObject {
public:
    CountedObject(const CountedObject &) = delete;
    CountedObject &operator=(const CountedObject &) = delete;
    static unsigned live() noexcept { return live_; }

protected:
    CountedObject() noexcept { ++live_; }
    ~CountedObject() { --live_; }

private:
    static inline unsigned live_ = 0;
};

} // namespace platform
