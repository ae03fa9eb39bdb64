// The objects behind the handles. A handle is 20 bits of slot and 12 bits of generation; a slot's generation changes
// whenever its object is freed, and a freed slot rests for a while, so that a handle kept too long finds nothing rather than
// another's object. Objects of each kind are in the one table: a handle from a host says nothing of its type.
#pragma once

#include "platform/corefoundation/corefoundation.h"
#include "property_list/value_text.h"

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

using property_list::Data;
using property_list::Date;
using property_list::Number;
using Array = std::vector<CFRef>;
using Dictionary = std::map<std::string, CFRef, std::less<>>;

/// What an object is; the number of the alternative is its CFTypeID.
using Value = std::variant<std::monostate, std::string, Number, bool, Data, Date, Array, Dictionary>;
static_assert(std::is_nothrow_move_assignable_v<Value> && std::is_nothrow_default_constructible_v<Value>);

template <typename T> constexpr CFTypeID typeID() noexcept {
    return []<size_t... I>(std::index_sequence<I...>) {
        return static_cast<CFTypeID>(((std::is_same_v<std::variant_alternative_t<I, Value>, T> ? I : 0) + ...));
    }
    (std::make_index_sequence<std::variant_size_v<Value>>());
}

/// Makes an object with a count of one; 0 when the gate refuses it or there is no room.
CFTypeRef createObject(Value value) noexcept;

/// The object's value; nullptr when there is no such object. Valid until the object is released.
const Value *findValue(CFTypeRef object) noexcept;

/// The same, and nullptr when it is of another type.
template <typename T> const T *find(CFTypeRef object) noexcept {
    const Value *value = findValue(object);
    return value == nullptr ? nullptr : std::get_if<T>(value);
}

} // namespace platform
