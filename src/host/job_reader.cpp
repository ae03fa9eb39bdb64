#include "host/job_reader.h"

#include "host/failure.h"
#include "host/text.h"
#include "host/whole_file.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <pugixml.hpp>

namespace host {

namespace {

bool isSpace(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

/// Reads one document; knows its text, to name lines.
class Reader {
public:
    Reader(const std::string &path, const std::string &text) : path_(path), text_(text) {}

    std::vector<JobLine> read() {
        if (text_.rfind("bplist", 0) == 0) refuse(0, "a binary property list; convert it to XML");
        size_t foreign = text_.find('\0');
        if (foreign != std::string::npos) refuse(foreign, "a NUL byte; this is no XML");
        if (!isUtf8(text_))
            throw Failure(ExitCode::Unfit, fmt::format("{}: not UTF-8 text; save it as UTF-8", shown(path_)));
        pugi::xml_document document;
        unsigned options = pugi::parse_fragment | pugi::parse_cdata | pugi::parse_ws_pcdata | pugi::parse_eol;
        auto result = document.load_buffer(text_.data(), text_.size(), options, pugi::encoding_utf8);
        if (!result) refuse(static_cast<size_t>(result.offset), lowered(result.description()));

        pugi::xml_node root = onlyElement(document);
        if (std::string_view(root.name()) == "plist") root = onlyElement(root);
        if (std::string_view(root.name()) != "dict") refuse(root, "the job must be a <dict>, not <{}>", shown(root.name()));
        return entries(root);
    }

private:
    [[noreturn]] void refuse(size_t offset, const std::string &reason) const {
        throw Failure(ExitCode::Unfit, fmt::format("{}: line {}: {}; 'vectorix job write' makes a job file", shown(path_),
                                                   lineAt(offset), reason));
    }

    template <class... Values>
    [[noreturn]] void refuse(pugi::xml_node where, fmt::format_string<Values...> format, Values &&...values) const {
        refuse(offsetOf(where), fmt::format(format, std::forward<Values>(values)...));
    }

    static size_t offsetOf(pugi::xml_node node) { return static_cast<size_t>(std::max<ptrdiff_t>(node.offset_debug(), 0)); }

    size_t lineAt(size_t offset) const {
        auto end = text_.begin() + static_cast<ptrdiff_t>(std::min(offset, text_.size()));
        return static_cast<size_t>(std::count(text_.begin(), end, '\n')) + 1;
    }

    bool isElement(pugi::xml_node node) const {
        if (node.type() == pugi::node_element) return true;
        if (!isSpace(node.value())) refuse(node, "text outside a value");
        return false;
    }

    pugi::xml_node onlyElement(pugi::xml_node parent) const {
        pugi::xml_node only;
        for (pugi::xml_node node : parent) {
            if (!isElement(node)) continue;
            if (only) refuse(node, "a second value, <{}>", shown(node.name()));
            only = node;
        }
        if (!only) refuse(parent, "no property list");
        return only;
    }

    std::vector<JobLine> entries(pugi::xml_node dictionary) const {
        std::vector<JobLine> lines;
        std::optional<std::string> key;
        for (pugi::xml_node node : dictionary) {
            if (!isElement(node)) continue;
            bool isKey = std::string_view(node.name()) == "key";
            if (isKey == key.has_value()) {
                refuse(node, "<{}> where a {} is due", shown(node.name()), key ? "value" : "key");
            }
            if (isKey) {
                key = textOf(node);
            } else {
                lines.push_back({*key, valueOf(node), shown(node.name()), lineAt(offsetOf(node))});
                key.reset();
            }
        }
        if (key) refuse(dictionary, "the key \"{}\" has no value", shown(*key));
        return lines;
    }

    std::optional<JobValue> valueOf(pugi::xml_node node) const {
        std::string_view type = node.name();
        if (type == "string") return textOf(node);
        if (type == "integer") return number<int64_t>(node);
        if (type == "real") return number<double>(node);
        constexpr std::string_view kOthers[] = {"true", "false", "date", "data", "array", "dict"};
        if (std::find(std::begin(kOthers), std::end(kOthers), type) == std::end(kOthers)) {
            refuse(node, "unknown element <{}>", shown(type));
        }
        return std::nullopt;
    }

    template <class Number> JobValue number(pugi::xml_node node) const {
        std::string text = textOf(node);
        const char *end = text.data() + (text.find_last_not_of(" \t\r\n") + 1);
        const char *begin = text.data() + std::min(text.find_first_not_of(" \t\r\n+"), text.size());
        Number value{};
        auto result = readNumber(std::min(begin, end), end, value);
        if (result.ec != std::errc() || result.ptr != end) refuse(node, "\"{}\" is no {}", excerpt(text, 40), node.name());
        return value;
    }

    static std::from_chars_result readNumber(const char *begin, const char *end, double &value) {
        return std::from_chars(begin, end, value);
    }

    /// Integers may be written in hexadecimal.
    static std::from_chars_result readNumber(const char *begin, const char *end, int64_t &value) {
        bool isHex = end - begin > 2 && begin[0] == '0' && (begin[1] == 'x' || begin[1] == 'X');
        return isHex ? std::from_chars(begin + 2, end, value, 16) : std::from_chars(begin, end, value);
    }

    std::string textOf(pugi::xml_node element) const {
        std::string text;
        for (pugi::xml_node part : element) {
            if (part.type() == pugi::node_cdata) {
                text += part.value();
            } else if (part.type() == pugi::node_pcdata) {
                appendResolved(text, part);
            } else {
                refuse(part, "<{}> inside <{}>", shown(part.name()), shown(element.name()));
            }
        }
        return text;
    }

    /// With XML's own five entities and character references in plain; the parser itself would pass over unknown ones.
    void appendResolved(std::string &text, pugi::xml_node part) const {
        std::string_view rest = part.value();
        for (size_t at; (at = rest.find('&')) != std::string_view::npos;) {
            text += rest.substr(0, at);
            size_t end = rest.find(';', at);
            std::string_view entity = rest.substr(at, end == std::string_view::npos ? end : end - at + 1);
            pugi::xml_document resolved;
            resolved.load_string(fmt::format("<s>{}</s>", entity).c_str(), pugi::parse_escapes | pugi::parse_ws_pcdata);
            std::string_view plain = resolved.child("s").text().get();
            if (plain.empty() || plain == entity) refuse(part, "unknown entity {}", excerpt(entity, 20));
            text += plain;
            rest.remove_prefix(at + entity.size());
        }
        text += rest;
    }

    const std::string &path_;
    const std::string &text_;
};

} // namespace

std::vector<JobLine> readJob(const std::string &path) {
    std::string text = readWhole(path, "job file");
    return Reader(path, text).read();
}

const JobLine *fitting(const std::vector<JobLine> &job, std::string_view key) {
    const JobKey *row = findJobKey(key);
    auto entry = std::find_if(job.rbegin(), job.rend(), [&](const JobLine &line) { return line.key == key; });
    if (!row || entry == job.rend() || !entry->value) return nullptr;
    bool isText = std::holds_alternative<std::string>(*entry->value);
    return isText == (row->kind == JobKind::Text) ? &*entry : nullptr;
}

int64_t numberOf(const std::vector<JobLine> &job, std::string_view key, int64_t otherwise) {
    const JobLine *line = fitting(job, key);
    if (!line) return otherwise;
    if (const auto *real = std::get_if<double>(&*line->value)) {
        return *real > -1e9 && *real < 1e9 ? static_cast<int64_t>(*real) : otherwise;
    }
    return std::get<int64_t>(*line->value);
}

} // namespace host
