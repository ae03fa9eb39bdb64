// Property lists: pugixml finds the elements, this file makes objects of them. Nothing here recurses, and a line number is
// counted only once something is wrong, so that time and memory stay in proportion to the input.
#include "platform/corefoundation/handle_table.h"
#include "platform/corefoundation/property_list_text.h"
#include "platform/corefoundation/utf8.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <pugixml.hpp>

namespace platform {

namespace {

constexpr size_t kMaxDepth = 512;

/// Thrown within this file only.
struct Unfit {
    size_t offset;
    std::string reason;
};

[[noreturn]] void refuse(pugi::xml_node where, std::string reason) {
    throw Unfit{static_cast<size_t>(std::max<ptrdiff_t>(where.offset_debug(), 0)), std::move(reason)};
}

/// An element's name for a reason, cut when it is long.
std::string shown(pugi::xml_node element) {
    constexpr size_t kMost = 40;
    const std::string_view name = element.name();
    const bool whole = name.size() <= kMost;
    std::string text(1, '<');
    text += whole ? name : name.substr(0, validUtf8Length(name.substr(0, kMost)));
    return text += whole ? ">" : "...>";
}

std::optional<Value> emptyMakes(bool value, std::string_view text) {
    return isXmlSpace(text) ? std::optional<Value>(value) : std::nullopt;
}

/// The elements that hold no others.
struct Scalar {
    std::string_view name;
    std::optional<Value> (*make)(std::string &&text);
};

constexpr Scalar kScalars[] = {
    {"string", [](std::string &&text) { return std::optional<Value>(std::move(text)); }},
    {"integer", [](std::string &&text) { return std::optional<Value>(integerOf(text)); }},
    {"real", [](std::string &&text) { return std::optional<Value>(realOf(text)); }},
    {"true", [](std::string &&text) { return emptyMakes(true, text); }},
    {"false", [](std::string &&text) { return emptyMakes(false, text); }},
    {"date", [](std::string &&text) { return std::optional<Value>(dateOf(text)); }},
    {"data", [](std::string &&text) { return std::optional<Value>(dataOf(text)); }},
};

std::string textOf(pugi::xml_node element) {
    std::string text;
    for (pugi::xml_node part : element) {
        if (part.type() == pugi::node_cdata) {
            text += part.value();
        } else if (part.type() != pugi::node_pcdata) {
            refuse(part, shown(part) + " inside " + shown(element));
        } else if (!appendResolved(text, part.value())) {
            refuse(part, "unknown entity in " + shown(element));
        }
    }
    return text;
}

CFRef create(Value value, pugi::xml_node where) {
    if (const bool *truth = std::get_if<bool>(&value)) return CFRef(*truth ? kCFBooleanTrue : kCFBooleanFalse);
    CFRef made(createObject(std::move(value)));
    if (!made) refuse(where, "no room for another object");
    return made;
}

const Scalar *scalarNamed(std::string_view name) {
    const auto kind = std::find_if(std::begin(kScalars), std::end(kScalars), [&](auto &k) { return k.name == name; });
    return kind == std::end(kScalars) ? nullptr : kind;
}

bool isContainer(pugi::xml_node element) {
    const std::string_view name = element.name();
    return name == "dict" || name == "array";
}

/// For an element that cannot stand where it does.
[[noreturn]] void refuseElement(pugi::xml_node element, const std::string &whenKnown) {
    const std::string_view name = element.name();
    const bool known = isContainer(element) || scalarNamed(name) != nullptr || name == "key" || name == "plist";
    refuse(element, known ? shown(element) + whenKnown : "unknown element " + shown(element));
}

CFRef createScalar(pugi::xml_node element) {
    const Scalar *kind = scalarNamed(element.name());
    if (kind == nullptr) refuseElement(element, " out of place");
    std::optional<Value> value = kind->make(textOf(element));
    if (!value) refuse(element, "unfit text in " + shown(element));
    return create(std::move(*value), element);
}

/// White space between elements is nothing; any other text is in the wrong place.
bool isElement(pugi::xml_node node) {
    if (node.type() == pugi::node_element) return true;
    if (!isXmlSpace(node.value())) refuse(node, "text outside a value");
    return false;
}

/// A container whose values are still being made.
struct Open {
    explicit Open(pugi::xml_node e) : element(e), next(e.first_child()), value(makeValue(e)) {}

    static Value makeValue(pugi::xml_node element) {
        return std::string_view(element.name()) == "dict" ? Value(Dictionary()) : Value(Array());
    }

    bool wantsKey() const { return std::holds_alternative<Dictionary>(value) && !key; }

    void add(CFRef object) {
        if (Array *array = std::get_if<Array>(&value)) {
            array->push_back(std::move(object));
        } else {
            std::get<Dictionary>(value)[std::move(*key)] = std::move(object);
            key.reset();
        }
    }

    CFRef close() {
        if (key) refuse(element, "a key without a value in <dict>");
        return create(std::move(value), element);
    }

    pugi::xml_node element, next;
    Value value;
    std::optional<std::string> key; // of a dictionary, waiting for its value
};

CFRef createValue(pugi::xml_node root) {
    if (!isContainer(root)) return createScalar(root);
    std::vector<Open> open;
    open.emplace_back(root);
    for (;;) {
        Open &inner = open.back();
        const pugi::xml_node node = inner.next;
        if (!node) {
            CFRef made = inner.close();
            open.pop_back();
            if (open.empty()) return made;
            open.back().add(std::move(made));
            continue;
        }
        inner.next = node.next_sibling();
        if (!isElement(node)) continue;
        if (inner.wantsKey()) {
            if (std::string_view(node.name()) != "key") refuseElement(node, " without a key in <dict>");
            inner.key = textOf(node);
        } else if (!isContainer(node)) {
            inner.add(createScalar(node));
        } else if (open.size() == kMaxDepth) {
            refuse(node, "nested too deep");
        } else {
            open.emplace_back(node);
        }
    }
}

/// The one element in parent.
pugi::xml_node onlyElementOf(pugi::xml_node parent) {
    pugi::xml_node only;
    for (pugi::xml_node node : parent) {
        if (!isElement(node)) continue;
        if (only) refuse(node, "a second value: " + shown(node));
        only = node;
    }
    if (!only) refuse(parent, "no value");
    return only;
}

CFRef createList(std::string_view bytes) {
    if (bytes.starts_with("bplist")) throw Unfit{0, "a binary property list; only XML is read"};
    const size_t bad = std::min(validUtf8Length(bytes), bytes.find('\0'));
    if (bad < bytes.size()) throw Unfit{bad, bytes[bad] == '\0' ? "a NUL byte" : "not UTF-8"};

    // As a fragment, for then text outside the root is seen. Entities stay as they are: pugixml would pass over unknown
    // ones.
    constexpr unsigned kOptions = pugi::parse_fragment | pugi::parse_cdata | pugi::parse_ws_pcdata | pugi::parse_eol;
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(bytes.data(), bytes.size(), kOptions, pugi::encoding_utf8);
    if (!result) throw Unfit{static_cast<size_t>(std::max<ptrdiff_t>(result.offset, 0)), result.description()};

    const pugi::xml_node root = onlyElementOf(document);
    return createValue(std::string_view(root.name()) == "plist" ? onlyElementOf(root) : root);
}

/// The line of what stands at offset, behind white space. Line ends are LF, CR LF, or CR alone.
size_t lineAt(std::string_view bytes, size_t offset) {
    const size_t end = std::min(bytes.find_first_not_of(" \t\r\n", offset), bytes.size());
    size_t line = 1;
    for (size_t i = 0; i < end; ++i) {
        const bool crOfCrLf = bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
        if (bytes[i] == '\n' || (bytes[i] == '\r' && !crOfCrLf)) ++line;
    }
    return line;
}

} // namespace

} // namespace platform

CFPropertyListRef CFPropertyListCreateFromXMLData(const void *bytes, uint64_t size, CFStringRef *errorString) {
    if (errorString != nullptr) *errorString = 0;
    const std::string_view text(static_cast<const char *>(bytes), bytes == nullptr ? 0 : size);
    const auto explain = [&](const std::string &reason) {
        if (errorString != nullptr) *errorString = CFStringCreateWithUTF8(reason);
        return CFPropertyListRef(0);
    };
    try {
        try {
            return platform::createList(text).release();
        } catch (const platform::Unfit &unfit) {
            return explain("line " + std::to_string(platform::lineAt(text, unfit.offset)) + ": " + unfit.reason);
        }
    } catch (const std::bad_alloc &) {
        return explain("no memory"); // short enough to need none
    }
}
