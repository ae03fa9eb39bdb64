#include "property_list/reader.h"

#include "property_list/utf8.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace property_list {

namespace {

constexpr size_t kMaxDepth = 512;

std::optional<Scalar> emptyMakes(bool value, std::string_view text) {
    return isXmlSpace(text) ? std::optional<Scalar>(value) : std::nullopt;
}

/// The elements that hold no others.
struct ScalarKind {
    std::string_view name;
    std::optional<Scalar> (*make)(const std::string &text);
};

constexpr ScalarKind kScalars[] = {
    {"string", [](const std::string &text) { return std::optional<Scalar>(text); }},
    {"integer", [](const std::string &text) { return std::optional<Scalar>(integerOf(text)); }},
    {"real", [](const std::string &text) { return std::optional<Scalar>(realOf(text)); }},
    {"true", [](const std::string &text) { return emptyMakes(true, text); }},
    {"false", [](const std::string &text) { return emptyMakes(false, text); }},
    {"date", [](const std::string &text) { return std::optional<Scalar>(dateOf(text)); }},
    {"data", [](const std::string &text) { return std::optional<Scalar>(dataOf(text)); }},
};

const ScalarKind *scalarNamed(std::string_view name) {
    const auto kind = std::find_if(std::begin(kScalars), std::end(kScalars), [&](auto &k) { return k.name == name; });
    return kind == std::end(kScalars) ? nullptr : kind;
}

bool isNamed(pugi::xml_node element, std::string_view name) { return element.name() == name; }

bool isContainer(pugi::xml_node element) { return isNamed(element, "dict") || isNamed(element, "array"); }

/// Whether property lists have such an element.
bool isKnown(pugi::xml_node element) {
    return isContainer(element) || scalarNamed(element.name()) || isNamed(element, "key") || isNamed(element, "plist");
}

size_t offsetOf(ptrdiff_t parsers) { return static_cast<size_t>(std::max<ptrdiff_t>(parsers, 0)); }

} // namespace

Reader::Reader(std::string_view bytes) : bytes_(bytes) {
    if (bytes.starts_with("bplist")) throw Unfit{Flaw::Binary, 1, {}, {}};
    const size_t bad = std::min(validUtf8Length(bytes), bytes.find('\0'));
    if (bad < bytes.size()) throw Unfit{bytes[bad] == '\0' ? Flaw::NulByte : Flaw::NotUtf8, lineAt(bad), {}, {}};

    // As a fragment, for then text outside the root is seen. Entities stay as they are: pugixml would pass over unknown
    // ones.
    constexpr unsigned kOptions = pugi::parse_fragment | pugi::parse_cdata | pugi::parse_ws_pcdata | pugi::parse_eol;
    const auto result = document_.load_buffer(bytes.data(), bytes.size(), kOptions, pugi::encoding_utf8);
    if (!result) throw Unfit{Flaw::NoXml, lineAt(offsetOf(result.offset)), {}, result.description()};

    root_ = onlyElementOf(document_);
    if (isNamed(root_, "plist")) root_ = onlyElementOf(root_);
}

Part Reader::next() {
    if (open_.empty()) return valueOf(root_, {});
    for (;;) {
        Open &inner = open_.back();
        const pugi::xml_node node = inner.next;
        if (!node) return close();
        inner.next = node.next_sibling();
        if (isElement(node) && !takeAsKey(node, inner)) {
            return valueOf(node, std::exchange(inner.key, std::nullopt).value_or(std::string()));
        }
    }
}

/// False for what is to be taken as a value.
bool Reader::takeAsKey(pugi::xml_node node, Open &inner) {
    if (isNamed(inner.element, "array")) return false;
    if (isNamed(node, "key") == inner.key.has_value()) {
        refuse(inner.key       ? Flaw::KeyAfterKey
               : isKnown(node) ? Flaw::ValueWithoutKey
                               : Flaw::UnknownWithoutKey,
               node, node.name());
    }
    if (inner.key) return false;
    inner.key = textOf(node);
    return true;
}

Part Reader::valueOf(pugi::xml_node node, std::string key) {
    if (isContainer(node)) {
        if (depth() == kMaxDepth) refuse(Flaw::TooDeep, node);
        open_.push_back({node, node.first_child(), std::nullopt});
        return {Part::Kind::Opened, elementOf(node), std::move(key)};
    }
    const ScalarKind *kind = scalarNamed(node.name());
    if (kind == nullptr) refuse(isKnown(node) ? Flaw::ElementOutOfPlace : Flaw::UnknownElement, node, node.name());
    std::string text = textOf(node);
    std::optional<Scalar> value = kind->make(text);
    if (!value) refuse(Flaw::UnfitText, node, node.name(), std::move(text));
    return {Part::Kind::Value, elementOf(node), std::move(key), std::move(*value)};
}

Part Reader::close() {
    const Open closed = std::move(open_.back());
    open_.pop_back();
    if (closed.key) refuse(Flaw::KeyWithoutValue, closed.element, {}, *closed.key);
    return {Part::Kind::Closed, elementOf(closed.element)};
}

std::string Reader::textOf(pugi::xml_node element) {
    std::string text;
    for (pugi::xml_node part : element) {
        if (part.type() == pugi::node_cdata) {
            text += part.value();
        } else if (part.type() != pugi::node_pcdata) {
            refuse(Flaw::ElementInText, part, part.name(), element.name());
        } else if (const auto unknown = appendResolved(text, part.value())) {
            refuse(Flaw::UnknownEntity, part, element.name(), std::string(*unknown));
        }
    }
    return text;
}

pugi::xml_node Reader::onlyElementOf(pugi::xml_node parent) {
    pugi::xml_node only;
    for (pugi::xml_node node : parent) {
        if (!isElement(node)) continue;
        if (only) refuse(Flaw::SecondValue, node, node.name());
        only = node;
    }
    if (!only) refuse(Flaw::NoValue, parent);
    return only;
}

/// White space between elements is nothing; any other text is in the wrong place.
bool Reader::isElement(pugi::xml_node node) {
    if (node.type() == pugi::node_element) return true;
    if (!isXmlSpace(node.value())) refuse(Flaw::TextOutsideValue, node);
    return false;
}

Element Reader::elementOf(pugi::xml_node node) { return {node.name(), offsetOf(node.offset_debug())}; }

void Reader::refuse(Flaw flaw, pugi::xml_node where, std::string element, std::string text) {
    throw Unfit{flaw, lineAt(offsetOf(where.offset_debug())), std::move(element), std::move(text)};
}

/// The line of what stands at offset, behind white space.
size_t Reader::lineAt(size_t offset) {
    const size_t end = std::min(bytes_.find_first_not_of(" \t\r\n", offset), bytes_.size());
    if (end < countedTo_) countedTo_ = 0, line_ = 1;
    for (; countedTo_ < end; ++countedTo_) {
        const bool crOfCrLf = bytes_.substr(countedTo_, 2) == "\r\n";
        if (bytes_[countedTo_] == '\n' || (bytes_[countedTo_] == '\r' && !crOfCrLf)) ++line_;
    }
    return line_;
}

} // namespace property_list
