#include "platform/corefoundation/handle_table.h"

#include <new>
#include <unordered_map>

namespace platform {

namespace {

constexpr uint32_t kSlotBits = 20;
constexpr uint32_t kMaxSlots = 1U << kSlotBits;
constexpr uint32_t kMaxGeneration = (1U << (32 - kSlotBits)) - 1;
constexpr uint32_t kChunkSize = 1024;
constexpr uint32_t kMinFree = 256; // a freed slot rests until that many others were freed after it
constexpr uint32_t kNoSlot = UINT32_MAX;

constexpr uint32_t kTrueSlot = 0, kFalseSlot = 1;

constexpr CFTypeRef handleOf(uint32_t slot, uint32_t generation) { return generation << kSlotBits | slot; }

struct Slot {
    Value value;
    uint64_t epoch = 0; // of its making; 0 = outside a call of the entry
    uint32_t count = 0;
    uint32_t generation = 1;
    uint32_t next = kNoSlot; // in the list of free or of dying slots
    bool constant = false;
};

/// A queue of slots, linked through them: it never needs memory.
struct SlotQueue {
    uint32_t first = kNoSlot, last = kNoSlot, size = 0;
};

class Table {
public:
    Table() noexcept {
        makeConstant(true);
        makeConstant(false);
    }

    /// 0 when there is no room.
    CFTypeRef insert(Value &&value, bool constant) noexcept {
        const uint32_t index = takeSlot();
        if (index == kNoSlot) return 0;
        Slot &slot = at(index);
        slot.value = std::move(value);
        slot.count = 1;
        slot.constant = constant;
        slot.epoch = inEpoch_ && !constant ? epoch_ : 0;
        if (!constant) ++live_;
        return handleOf(index, slot.generation);
    }

    CFTypeRef makeConstant(Value &&value) noexcept { return insert(std::move(value), true); }

    Slot *find(CFTypeRef object) noexcept {
        const uint32_t index = object & (kMaxSlots - 1);
        if (index >= used_) return nullptr;
        Slot &slot = at(index);
        return slot.generation == object >> kSlotBits && slot.count != 0 ? &slot : nullptr;
    }

    void release(CFTypeRef object) noexcept {
        Slot *slot = find(object);
        if (slot == nullptr || slot->constant || --slot->count != 0) return;
        // From here on the handle is stale; its slot is not free before its children are released.
        slot->generation = slot->generation == kMaxGeneration ? 1 : slot->generation + 1;
        --live_;
        append(dying_, object & (kMaxSlots - 1));
        // A container releases its children through this function: only the outermost call frees, in a loop, so that no
        // depth of nesting costs stack.
        if (freeing_) return;
        freeing_ = true;
        while (dying_.size != 0) {
            const uint32_t index = removeFirst(dying_);
            at(index).value = std::monostate();
            append(free_, index);
        }
        freeing_ = false;
    }

    void beginEpoch() noexcept {
        ++epoch_;
        inEpoch_ = true;
    }
    void endEpoch() noexcept { inEpoch_ = false; }
    bool isOfThisEpoch(const Slot &slot) const noexcept { return inEpoch_ && slot.epoch == epoch_; }
    uint32_t live() const noexcept { return live_; }

private:
    Slot &at(uint32_t index) noexcept { return chunks_[index / kChunkSize][index % kChunkSize]; }

    uint32_t takeSlot() noexcept {
        if (free_.size >= kMinFree) return removeFirst(free_);
        if (used_ == kMaxSlots) return kNoSlot;
        if (used_ % kChunkSize == 0) {
            Slot *chunk = new (std::nothrow) Slot[kChunkSize];
            if (chunk == nullptr) return kNoSlot;
            chunks_[used_ / kChunkSize] = chunk;
        }
        return used_++;
    }

    void append(SlotQueue &queue, uint32_t index) noexcept {
        at(index).next = kNoSlot;
        (queue.size++ == 0 ? queue.first : at(queue.last).next) = index;
        queue.last = index;
    }

    uint32_t removeFirst(SlotQueue &queue) noexcept {
        const uint32_t index = queue.first;
        queue.first = at(index).next;
        --queue.size;
        return index;
    }

    Slot *chunks_[kMaxSlots / kChunkSize] = {};
    uint32_t used_ = 0; // slots that were ever taken
    SlotQueue free_, dying_;
    bool freeing_ = false, inEpoch_ = false;
    uint64_t epoch_ = 0;
    uint32_t live_ = 0;
};

Table &table() noexcept {
    // Never destroyed: owners in static objects may release after this file's own are gone.
    alignas(Table) static unsigned char storage[sizeof(Table)];
    static Table *const made = new (storage) Table;
    return *made;
}

} // namespace

CFTypeRef createObject(Value value) noexcept {
    return backends().objects->mayCreate() ? table().insert(std::move(value), false) : 0;
}

const Value *findValue(CFTypeRef object) noexcept {
    const Slot *slot = table().find(object);
    return slot == nullptr ? nullptr : &slot->value;
}

uint32_t liveObjectCount() noexcept { return table().live(); }

CFStringRef constantString(const char *text) noexcept {
    try {
        static auto &made = *new std::unordered_map<const char *, CFStringRef>; // never destroyed, as the table
        CFStringRef &s = made[text];
        if (s == 0) s = table().makeConstant(std::string(text));
        return s;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

void beginObjectEpoch() noexcept { table().beginEpoch(); }

void endObjectEpoch() noexcept { table().endEpoch(); }

bool madeInThisCall(CFTypeRef object) noexcept {
    const Slot *slot = table().find(object);
    return slot != nullptr && table().isOfThisEpoch(*slot);
}

} // namespace platform

const CFBooleanRef kCFBooleanTrue = platform::handleOf(platform::kTrueSlot, 1);
const CFBooleanRef kCFBooleanFalse = platform::handleOf(platform::kFalseSlot, 1);

CFTypeID CFGetTypeID(CFTypeRef object) {
    const platform::Value *value = platform::findValue(object);
    return value == nullptr ? 0 : static_cast<CFTypeID>(value->index());
}

void CFRelease(CFTypeRef object) { platform::table().release(object); }

CFTypeRef CFRetain(CFTypeRef object) {
    platform::Slot *slot = platform::table().find(object);
    if (slot != nullptr && !slot->constant) ++slot->count;
    return slot == nullptr ? 0 : object;
}
