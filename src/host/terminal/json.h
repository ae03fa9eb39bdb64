// The values that --json reports are made of.
//
// An object keeps the order in which it was filled, so that a report reads from the outcome to the details. The library that
// writes JSON stands behind this header, in json.cpp alone: each source that sees it would take seconds longer to compile.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace host {

class Json {
public:
    Json(std::nullptr_t = nullptr) {}
    Json(bool value) : value_(value) {}
    Json(double value) : value_(value) {}
    Json(std::signed_integral auto value) : value_(int64_t{value}) {}
    Json(std::unsigned_integral auto value) : value_(uint64_t{value}) {}
    Json(const char *text) : value_(std::string(text)) {}
    Json(std::string_view text) : value_(std::string(text)) {}
    Json(std::string text) : value_(std::move(text)) {}
    /// An object, of names and values.
    Json(std::initializer_list<std::pair<std::string, Json>> members) : value_(Members(members)) {}
    /// A list of what a container holds.
    template <class Values>
    requires(!std::convertible_to<Values, std::string_view> && requires(const Values &v) { v.begin() != v.end(); })
        Json(const Values &values)
        : value_(Items(values.begin(), values.end())) {}

    static Json array() { return Json(Items()); }
    static Json object() { return Json(Members()); }

    /// A member of an object, made (as null) when it is not there. On null, which becomes an object, or on an object only.
    Json &operator[](std::string_view name);
    /// Adds to the end of a list.
    void push_back(Json item);

    /// Bytes that are not UTF-8 become the replacement character.
    std::string line() const; ///< on one line
    std::string text() const; ///< indented

private:
    friend struct JsonWriter;
    using Items = std::vector<Json>;
    using Members = std::vector<std::pair<std::string, Json>>;

    explicit Json(Items items) : value_(std::move(items)) {}
    explicit Json(Members members) : value_(std::move(members)) {}

    std::variant<std::monostate, bool, int64_t, uint64_t, double, std::string, Items, Members> value_;
};

} // namespace host
