#include "host/job/job_reader.h"

#include "host/files/whole_file.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"
#include "property_list/reader.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace host {

namespace {

using property_list::Flaw;
using property_list::Part;

constexpr size_t kLongestName = 60; // bytes of a name in a message

/// With how many bytes of the text at most.
constexpr struct {
    Flaw flaw;
    const char *words;
    size_t longestText = kLongestName;
} kReasons[] = {
    {Flaw::Binary, "a binary property list; convert it to XML"},
    {Flaw::NulByte, "a NUL byte; this is no XML"},
    {Flaw::NotUtf8, "not UTF-8 text; save it as UTF-8"},
    {Flaw::NoXml, "{text}"},
    {Flaw::TextOutsideValue, "text outside a value"},
    {Flaw::NoValue, "no property list"},
    {Flaw::SecondValue, "a second value, <{element}>"},
    {Flaw::KeyWithoutValue, "the key \"{text}\" has no value"},
    {Flaw::ValueWithoutKey, "<{element}> where a key is due"},
    {Flaw::UnknownWithoutKey, "<{element}> where a key is due"},
    {Flaw::KeyAfterKey, "<{element}> where a value is due"},
    {Flaw::ElementOutOfPlace, "unknown element <{element}>"},
    {Flaw::UnknownElement, "unknown element <{element}>"},
    {Flaw::ElementInText, "<{element}> inside <{text}>"},
    {Flaw::UnknownEntity, "unknown entity &{text};", 20},
    {Flaw::UnfitText, "\"{text}\" is no {element}", 40},
    {Flaw::TooDeep, "nested too deep"},
};
static_assert(std::size(kReasons) == property_list::kFlawCount);

std::string nameOf(std::string_view element) { return excerpt(element, kLongestName); }

std::string wordsFor(const property_list::Unfit &unfit) {
    const auto *row = std::find_if(std::begin(kReasons), std::end(kReasons), [&](auto &r) { return r.flaw == unfit.flaw; });
    return lowered(fmt::format(fmt::runtime(row->words), fmt::arg("element", nameOf(unfit.element)),
                               fmt::arg("text", excerpt(unfit.text, row->longestText))));
}

std::string atLine(size_t line, const std::string &reason) {
    return fmt::format("line {}: {}; 'vectorix job write' makes a job file", line, reason);
}

/// None for what is no string and no number.
std::optional<JobValue> jobValueOf(property_list::Scalar &scalar) {
    if (auto *text = std::get_if<std::string>(&scalar)) return std::move(*text);
    const auto *number = std::get_if<property_list::Number>(&scalar);
    if (!number) return std::nullopt;
    return std::visit([](auto held) { return JobValue(held); }, *number);
}

/// The entries of the outermost dictionary.
std::vector<JobLine> entriesOf(property_list::Reader &reader) {
    std::vector<JobLine> lines;
    do {
        const bool isWithinEntry = reader.depth() != 1;
        Part part = reader.next();
        if (isWithinEntry || part.kind == Part::Kind::Closed) continue;
        const bool isScalar = part.kind == Part::Kind::Value;
        lines.push_back({std::move(part.key), isScalar ? jobValueOf(part.value) : std::nullopt, nameOf(part.element.name),
                         reader.lineOf(part.element)});
    } while (reader.depth() > 0);
    return lines;
}

} // namespace

std::vector<JobLine> readJob(const std::string &path) {
    const std::string bytes = readWhole(path, "job file", property_list::kLargestFile);
    const auto unfit = [&](const std::string &why) {
        return Failure(ExitCode::Unfit, fmt::format("{}: {}", shown(path), why));
    };
    try {
        property_list::Reader reader(bytes);
        const property_list::Element root = reader.root();
        if (root.name == "dict") return entriesOf(reader);
        throw unfit(atLine(reader.lineOf(root), fmt::format("the job must be a <dict>, not <{}>", nameOf(root.name))));
    } catch (const property_list::Unfit &found) {
        // A file in another encoding has no lines.
        throw unfit(found.flaw == Flaw::NotUtf8 ? wordsFor(found) : atLine(found.line, wordsFor(found)));
    }
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
