// The objects behind handles of the registry. A handle is 16 bits of generation and 16 of slot; a slot's generation changes
// whenever its object goes, so that a handle kept too long finds nothing. Simpler than CoreFoundation's table: these handles
// never reach a host, have one owner each, and making one may throw.
#pragma once

#include <cstdint>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace platform {

template <typename Object> class ObjectTable {
public:
    /// Never 0. Throws std::bad_alloc when there is no room.
    uint32_t insert(Object object) {
        uint32_t index = 0;
        while (index < slots_.size() && slots_[index].object)
            ++index;
        if (index == slots_.size()) {
            if (index == kMaxSlots) throw std::bad_alloc();
            slots_.emplace_back();
        }
        slots_[index].object = std::move(object);
        ++live_;
        return slots_[index].generation << kSlotBits | index;
    }

    /// nullptr when there is none. Valid until the next insert().
    Object *find(uint32_t handle) noexcept {
        const uint32_t index = handle & (kMaxSlots - 1);
        if (index >= slots_.size()) return nullptr;
        Slot &slot = slots_[index];
        return slot.object && slot.generation == handle >> kSlotBits ? &*slot.object : nullptr;
    }

    bool erase(uint32_t handle) noexcept {
        if (find(handle) == nullptr) return false;
        Slot &slot = slots_[handle & (kMaxSlots - 1)];
        slot.object.reset();
        slot.generation = slot.generation == kMaxSlots - 1 ? 1 : slot.generation + 1;
        --live_;
        return true;
    }

    uint32_t live() const noexcept { return live_; }

private:
    static constexpr uint32_t kSlotBits = 16, kMaxSlots = 1U << kSlotBits;
    struct Slot {
        std::optional<Object> object;
        uint32_t generation = 1;
    };
    std::vector<Slot> slots_;
    uint32_t live_ = 0;
};

} // namespace platform
