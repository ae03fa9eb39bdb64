// The texts inside property list elements, apart from the XML around them (reader.cpp), and what they stand for. Job files
// come from elsewhere: a text that is not wholly a value of its kind is none, for half a number would be another job.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace property_list {

using Number = std::variant<int64_t, double>;
struct Data {
    std::string bytes;
};
/// Nothing looks into a date: it stays the text that it was.
struct Date {
    std::string text;
};

bool isXmlSpace(std::string_view text) noexcept;

/// Appends text with its character references and XML's five entities resolved. Stops at any other use of "&", and returns
/// what stands between it and the next ";".
std::optional<std::string_view> appendResolved(std::string &out, std::string_view text);

/// None when the text is not wholly of that kind; white space around it is left out.
std::optional<Number> integerOf(std::string_view text) noexcept;
std::optional<Number> realOf(std::string_view text) noexcept;
/// YYYY-MM-DDThh:mm:ssZ
std::optional<Date> dateOf(std::string_view text);
/// Base 64, with white space anywhere.
std::optional<Data> dataOf(std::string_view text);

} // namespace property_list
