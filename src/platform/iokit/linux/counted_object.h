// Counts the registry's objects that are handed out by pointer and so are in no table: tests ask whether all were released.
#pragma once

namespace platform {

/// The base of such an object. live() is how many there are.
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
