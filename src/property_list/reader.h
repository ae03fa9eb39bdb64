// Reads property lists in XML: job files. The plug-in makes objects of one, the command judges it; both must take the same
// files and name the same lines, so both read with this. Parts come one after the other, in the file's order and with keys
// that stand twice, which is what a check has to tell of; who wants a tree makes it. Nothing recurses, and a line is counted
// only when somebody asks for it, so that time and memory stay in proportion to the input.
#pragma once

#include "property_list/value_text.h"

#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace property_list {

inline constexpr int64_t kLargestFile = int64_t{16} << 20; // bytes; job files are of a few dozen lines, and are read whole

using Scalar = std::variant<std::string, Number, bool, Data, Date>;

/// What makes a list unfit, and behind it what Unfit then has beside the line.
enum class Flaw {
    Binary,
    NulByte,
    NotUtf8,
    NoXml, ///< text: why
    TextOutsideValue,
    NoValue,
    SecondValue,       ///< element
    KeyWithoutValue,   ///< text: the key
    ValueWithoutKey,   ///< element
    UnknownWithoutKey, ///< element, which is none of property lists
    KeyAfterKey,       ///< element
    ElementOutOfPlace, ///< element
    UnknownElement,    ///< element
    ElementInText,     ///< element; text: the name of the one around it
    UnknownEntity,     ///< element; text: the entity's name
    UnfitText,         ///< element; text: its own
    TooDeep,
};
inline constexpr size_t kFlawCount = 17;
static_assert(static_cast<size_t>(Flaw::TooDeep) + 1 == kFlawCount);

/// What is thrown. The words are left to those who catch it.
struct Unfit {
    Flaw flaw;
    size_t line; ///< from 1; line ends are LF, CR LF, or CR alone
    std::string element, text;
};

struct Element {
    std::string_view name; ///< valid as long as the reader
    size_t offset;         ///< in the bytes
};

struct Part {
    enum class Kind { Value, Opened, Closed } kind;
    Element element;
    std::string key = {}; ///< in a dictionary, of what is a value or opened
    Scalar value = {};    ///< of a value
};

class Reader {
public:
    /// bytes must outlive the reader. Throws Unfit when they are no XML with one value.
    explicit Reader(std::string_view bytes);

    /// The outermost value.
    Element root() const { return elementOf(root_); }

    /// The outermost value's part, then those within it, until depth() is 0. Throws Unfit.
    Part next();

    /// The number of dictionaries and arrays that are open.
    size_t depth() const noexcept { return open_.size(); }

    size_t lineOf(const Element &element) { return lineAt(element.offset); }

private:
    /// A container with values still to come.
    struct Open {
        pugi::xml_node element, next;
        std::optional<std::string> key; // of a dictionary, waiting for its value
    };

    static Element elementOf(pugi::xml_node node);
    [[noreturn]] void refuse(Flaw flaw, pugi::xml_node where, std::string element = {}, std::string text = {});
    size_t lineAt(size_t offset);
    bool isElement(pugi::xml_node node);
    pugi::xml_node onlyElementOf(pugi::xml_node parent);
    std::string textOf(pugi::xml_node element);
    bool takeAsKey(pugi::xml_node node, Open &inner);
    Part valueOf(pugi::xml_node node, std::string key);
    Part close();

    std::string_view bytes_;
    pugi::xml_document document_;
    pugi::xml_node root_;
    std::vector<Open> open_;
    size_t countedTo_ = 0, line_ = 1; // lines are asked for in the file's order, and counted on
};

} // namespace property_list
