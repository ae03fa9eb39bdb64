#include "host/job/job_reader.h"

#include "host/files/whole_file.h"
#include "host/job/job_text.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <pugixml.hpp>

namespace host {

namespace {

constexpr size_t kLongestName = 60; // bytes of a name in a message
constexpr size_t kMostDepth = 512;  // as deep as the plug-in reads

std::string nameOf(pugi::xml_node element) { return excerpt(element.name(), kLongestName); }

/// Reads one document. Keeps its text, to tell in which line something stands.
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
        if (std::string_view(root.name()) != "dict") refuse(root, "the job must be a <dict>, not <{}>", nameOf(root));
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

    /// Counts on from the line that was asked for last, and not from the start: entries come in the file's order, and a file
    /// may hold a million of them.
    size_t lineAt(size_t offset) const {
        const Place from = offset < last_.offset ? Place{} : last_;
        last_.offset = std::min(offset, text_.size());
        const auto begin = text_.begin() + static_cast<ptrdiff_t>(from.offset);
        const auto end = text_.begin() + static_cast<ptrdiff_t>(last_.offset);
        last_.line = from.line + static_cast<size_t>(std::count(begin, end, '\n'));
        return last_.line;
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
            if (only) refuse(node, "a second value, <{}>", nameOf(node));
            only = node;
        }
        if (!only) refuse(parent, "no property list");
        return only;
    }

    std::vector<JobLine> entries(pugi::xml_node dictionary, size_t depth = 1) const {
        std::vector<JobLine> lines;
        std::optional<std::string> key;
        for (pugi::xml_node node : dictionary) {
            if (!isElement(node)) continue;
            bool isKey = std::string_view(node.name()) == "key";
            if (isKey == key.has_value()) {
                refuse(node, "<{}> where a {} is due", nameOf(node), key ? "value" : "key");
            }
            if (isKey) {
                key = textOf(node);
            } else {
                lines.push_back({std::move(*key), valueOf(node, depth), nameOf(node), lineAt(offsetOf(node))});
                key.reset();
            }
        }
        if (key) refuse(dictionary, "the key \"{}\" has no value", excerpt(*key, kLongestName));
        return lines;
    }

    std::optional<JobValue> valueOf(pugi::xml_node node, size_t depth) const {
        std::string_view type = node.name();
        if (type == "string") return textOf(node);
        if (type == "integer") return number<int64_t>(node);
        if (type == "real") return number<double>(node);
        // Other values mean nothing in a job, but the plug-in refuses the whole file for a malformed one.
        if (type == "array" || type == "dict") {
            if (depth == kMostDepth) refuse(node, "nested too deep");
            lookInto(node, depth + 1);
        } else {
            requireFit(node);
        }
        return std::nullopt;
    }

    void lookInto(pugi::xml_node container, size_t depth) const {
        if (std::string_view(container.name()) == "dict") {
            entries(container, depth);
            return;
        }
        for (pugi::xml_node node : container) {
            if (isElement(node)) valueOf(node, depth);
        }
    }

    void requireFit(pugi::xml_node node) const {
        constexpr struct {
            std::string_view type;
            bool (*isFit)(std::string_view text);
        } kOthers[] = {{"true", isSpace}, {"false", isSpace}, {"date", isDate}, {"data", isBase64}};
        const auto *other =
            std::find_if(std::begin(kOthers), std::end(kOthers), [&](const auto &row) { return row.type == node.name(); });
        if (other == std::end(kOthers)) refuse(node, "unknown element <{}>", nameOf(node));
        if (std::string text = textOf(node); !other->isFit(text)) {
            refuse(node, "\"{}\" is no {}", excerpt(text, 40), node.name());
        }
    }

    template <class Number> JobValue number(pugi::xml_node node) const {
        const std::string text = textOf(node);
        Number value{};
        if (!readNumber(text, value)) refuse(node, "\"{}\" is no {}", excerpt(text, 40), node.name());
        return value;
    }

    std::string textOf(pugi::xml_node element) const {
        std::string text;
        for (pugi::xml_node part : element) {
            if (part.type() == pugi::node_cdata) {
                text += part.value();
            } else if (part.type() == pugi::node_pcdata) {
                appendResolved(text, part);
            } else {
                refuse(part, "<{}> inside <{}>", nameOf(part), nameOf(element));
            }
        }
        return text;
    }

    /// Appends the part with the characters that its entities and character references stand for.
    void appendResolved(std::string &text, pugi::xml_node part) const {
        std::string_view rest = part.value();
        for (size_t at; (at = rest.find('&')) != std::string_view::npos;) {
            text += rest.substr(0, at);
            const size_t end = rest.find(';', at);
            const std::string_view name = rest.substr(at + 1, end == std::string_view::npos ? end : end - at - 1);
            const std::string plain = end == std::string_view::npos ? std::string() : characterNamed(name);
            if (plain.empty()) refuse(part, "unknown entity &{};", excerpt(name, 20));
            text += plain;
            rest.remove_prefix(end + 1);
        }
        text += rest;
    }

    const std::string &path_;
    const std::string &text_;
    struct Place {
        size_t offset = 0, line = 1;
    };
    mutable Place last_;
};

} // namespace

std::vector<JobLine> readJob(const std::string &path) {
    std::string text = readWhole(path, "job file", kLargestJobFile);
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
