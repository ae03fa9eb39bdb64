#include "host/terminal/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace host {

/// Hands a value to the library.
struct JsonWriter {
    using Written = nlohmann::ordered_json;

    static Written of(const Json &json) {
        return std::visit([](const auto &value) { return written(value); }, json.value_);
    }

    static Written written(std::monostate) { return nullptr; }
    static Written written(const auto &value) { return value; }

    static Written written(const Json::Items &items) {
        Written list = Written::array();
        for (const Json &item : items)
            list.push_back(of(item));
        return list;
    }

    static Written written(const Json::Members &members) {
        Written object = Written::object();
        for (const auto &[name, value] : members)
            object[name] = of(value);
        return object;
    }

    static std::string dumped(const Json &json, int indent) {
        return of(json).dump(indent, ' ', false, Written::error_handler_t::replace);
    }
};

Json &Json::operator[](std::string_view name) {
    if (std::holds_alternative<std::monostate>(value_)) value_ = Members();
    auto &members = std::get<Members>(value_);
    auto found = std::find_if(members.begin(), members.end(), [&](const auto &member) { return member.first == name; });
    return found != members.end() ? found->second : members.emplace_back(name, Json()).second;
}

void Json::push_back(Json item) { std::get<Items>(value_).push_back(std::move(item)); }

std::string Json::line() const { return JsonWriter::dumped(*this, -1); }

std::string Json::text() const { return JsonWriter::dumped(*this, 2); }

} // namespace host
