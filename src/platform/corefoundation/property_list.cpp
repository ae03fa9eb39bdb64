// Property lists: objects made of what the reader finds, and the words for what it does not take; dictionaries, which have
// no other source. Nothing here recurses.
#include "platform/corefoundation/handle_table.h"
#include "property_list/reader.h"
#include "property_list/utf8.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace platform {

namespace {

using property_list::Flaw;
using property_list::Part;

/// An element's name for a reason, cut when it is long.
std::string shown(std::string_view name) {
    constexpr size_t kMost = 40;
    const bool whole = name.size() <= kMost;
    std::string text(1, '<');
    text += whole ? name : name.substr(0, property_list::validUtf8Length(name.substr(0, kMost)));
    return text += whole ? ">" : "...>";
}

/// "%" stands for the element, "$" for the text.
constexpr struct {
    Flaw flaw;
    std::string_view words;
} kReasons[] = {
    {Flaw::Binary, "a binary property list; only XML is read"},
    {Flaw::NulByte, "a NUL byte"},
    {Flaw::NotUtf8, "not UTF-8"},
    {Flaw::NoXml, "$"},
    {Flaw::TextOutsideValue, "text outside a value"},
    {Flaw::NoValue, "no value"},
    {Flaw::SecondValue, "a second value: %"},
    {Flaw::KeyWithoutValue, "a key without a value in <dict>"},
    {Flaw::ValueWithoutKey, "% without a key in <dict>"},
    {Flaw::UnknownWithoutKey, "unknown element %"},
    {Flaw::KeyAfterKey, "% out of place"},
    {Flaw::ElementOutOfPlace, "% out of place"},
    {Flaw::UnknownElement, "unknown element %"},
    {Flaw::ElementInText, "% inside <$>"},
    {Flaw::UnknownEntity, "unknown entity in %"},
    {Flaw::UnfitText, "unfit text in %"},
    {Flaw::TooDeep, "nested too deep"},
};
static_assert(std::size(kReasons) == property_list::kFlawCount);

std::string reasonOf(const property_list::Unfit &unfit) {
    const auto *row = std::find_if(std::begin(kReasons), std::end(kReasons), [&](auto &r) { return r.flaw == unfit.flaw; });
    std::string reason;
    for (char c : row->words) {
        if (c == '%') {
            reason += shown(unfit.element);
        } else if (c == '$') {
            reason += unfit.text;
        } else {
            reason += c;
        }
    }
    return reason;
}

std::string atLine(size_t line, const std::string &reason) { return "line " + std::to_string(line) + ": " + reason; }

Value emptyContainer(const property_list::Element &element) {
    return element.name == "dict" ? Value(Dictionary()) : Value(Array());
}

CFRef createScalar(property_list::Scalar scalar) {
    if (const bool *truth = std::get_if<bool>(&scalar)) return CFRef(*truth ? kCFBooleanTrue : kCFBooleanFalse);
    return std::visit([](auto &held) { return CFRef(createObject(std::move(held))); }, scalar);
}

/// A container whose values are still being made, with its own key in the one around it.
struct Open {
    void add(std::string itsKey, CFRef object) {
        if (Array *array = std::get_if<Array>(&value)) {
            array->push_back(std::move(object));
        } else {
            std::get<Dictionary>(value)[std::move(itsKey)] = std::move(object);
        }
    }

    std::string key;
    Value value;
};

/// None, with the reason, when there is no room. Throws what the reader throws.
CFRef createList(property_list::Reader &reader, std::string &reason) {
    std::vector<Open> open;
    for (;;) {
        Part part = reader.next();
        if (part.kind == Part::Kind::Opened) {
            open.push_back({std::move(part.key), emptyContainer(part.element)});
            continue;
        }
        CFRef made;
        if (part.kind == Part::Kind::Closed) {
            part.key = std::move(open.back().key);
            made = CFRef(createObject(std::move(open.back().value)));
            open.pop_back();
        } else {
            made = createScalar(std::move(part.value));
        }
        if (!made) reason = atLine(reader.lineOf(part.element), "no room for another object");
        if (!made || open.empty()) return made;
        open.back().add(std::move(part.key), std::move(made));
    }
}

CFRef createList(std::string_view bytes, std::string &reason) {
    try {
        property_list::Reader reader(bytes);
        return createList(reader, reason);
    } catch (const property_list::Unfit &unfit) {
        reason = atLine(unfit.line, reasonOf(unfit));
        return {};
    }
}

} // namespace

} // namespace platform

CFPropertyListRef CFPropertyListCreateFromXMLData(const void *bytes, uint64_t size, CFStringRef *errorString) {
    if (errorString != nullptr) *errorString = 0;
    std::string reason;
    CFRef list;
    try {
        list = platform::createList({static_cast<const char *>(bytes), bytes == nullptr ? 0 : size}, reason);
    } catch (const std::bad_alloc &) {
        reason = "no memory"; // short enough to need none
    }
    if (!list && errorString != nullptr) *errorString = CFStringCreateWithUTF8(reason);
    return list.release();
}

CFTypeID CFDictionaryGetTypeID() { return platform::typeID<platform::Dictionary>(); }

CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, std::string_view key) {
    const platform::Dictionary *entries = platform::find<platform::Dictionary>(dictionary);
    if (entries == nullptr) return 0;
    const auto entry = entries->find(key);
    return entry == entries->end() ? 0 : entry->second.get();
}
