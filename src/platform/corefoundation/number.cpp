#include "platform/corefoundation/handle_table.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace {

// The ends of int64_t as reals; the upper one is the first real past it.
constexpr double kLowest = -0x1p63, kPastHighest = 0x1p63;

template <typename T> bool store(T converted, bool exact, void *value) {
    memcpy(value, &converted, sizeof converted);
    return exact;
}

template <typename T> bool storeInteger(int64_t number, bool exact, void *value) {
    const auto low = static_cast<T>(number);
    return store(low, exact && low == number, value);
}

template <typename T> bool storeInteger(double number, void *value) {
    if (std::isnan(number)) return store<T>(0, false, value);
    if (number < kLowest) return store(std::numeric_limits<T>::min(), false, value);
    if (number >= kPastHighest) return store(std::numeric_limits<T>::max(), false, value);
    const double cut = std::trunc(number);
    return storeInteger<T>(static_cast<int64_t>(cut), cut == number, value);
}

template <typename T> bool storeInteger(const platform::Number &number, void *value) {
    const int64_t *integer = std::get_if<int64_t>(&number);
    return integer != nullptr ? storeInteger<T>(*integer, true, value) : storeInteger<T>(std::get<double>(number), value);
}

bool storeDouble(const platform::Number &number, void *value) {
    const int64_t *integer = std::get_if<int64_t>(&number);
    if (integer == nullptr) return store(std::get<double>(number), true, value);
    const auto real = static_cast<double>(*integer);
    return store(real, real < kPastHighest && static_cast<int64_t>(real) == *integer, value);
}

} // namespace

CFTypeID CFNumberGetTypeID() { return platform::typeID<platform::Number>(); }

CFNumberRef CFNumberCreateInt64(int64_t value) { return platform::createObject(platform::Number(value)); }

bool CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value) {
    const platform::Number *found = platform::find<platform::Number>(number);
    if (found == nullptr || value == nullptr) return false;
    switch (type) {
    case kCFNumberSInt32Type: return storeInteger<int32_t>(*found, value);
    case kCFNumberCharType: return storeInteger<int8_t>(*found, value);
    case kCFNumberDoubleType: return storeDouble(*found, value);
    }
    return false;
}
