#include "host/converters/converters.h"

#include "host/converters/child.h"
#include "host/files/unique_fd.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <optional>
#include <string_view>
#include <vector>

namespace host {

namespace {

using End = ChildResult::End;

struct Converter {
    FileKind kind;
    const char *program;
    const char *package; ///< of Debian
    const char *what;
    std::vector<std::string> (*options)(int page);
};

const Converter kConverters[] = {
    {FileKind::Svg, "rsvg-convert", "librsvg2-bin", "SVG drawings",
     // 96 pixels to an inch: what a drawing that is measured in pixels means, and what the reader takes them for.
     [](int) { return std::vector<std::string>{"-f", "svg", "-d", "96", "-p", "96"}; }},
    {FileKind::Pdf, "pdftocairo", "poppler-utils", "PDF documents",
     // Else pages are made to fit a paper's size in whole points, some 0.1 % smaller.
     [](int page) {
         return std::vector<std::string>{"-svg", "-noshrink",          "-nocenter", "-f", std::to_string(page),
                                         "-l",   std::to_string(page), "-",         "-"};
     }},
};

const Converter &converterOf(FileKind kind) {
    return *std::find_if(std::begin(kConverters), std::end(kConverters) - 1,
                         [kind](const Converter &row) { return row.kind == kind; });
}

constexpr const char *kTooLittleMemory =
    "converting it needs more memory than is allowed; make it simpler, or plot it in parts";

/// What a converter tells, and what is said of it. The first one that it told counts, whatever it ended with: pdftocairo
/// without memory hands out what it has so far, as a success.
constexpr struct {
    std::string_view sign;
    const char *text;
} kTroubles[] = {
    {"Incorrect password", "it is encrypted; remove its password first, as with qpdf --decrypt"},
    {"cairo error: out of memory", kTooLittleMemory},
    {"rendering error: NoMemory", kTooLittleMemory},
    {"memory allocation of", kTooLittleMemory},
    {"std::bad_alloc", kTooLittleMemory},
};

const char *troubleIn(std::string_view diagnostics) {
    const auto *trouble = std::ranges::find_if(
        kTroubles, [&](const auto &row) { return diagnostics.find(row.sign) != std::string_view::npos; });
    return trouble == std::end(kTroubles) ? nullptr : trouble->text;
}

/// The line of a text that something in it begins; empty without.
std::string_view lineFrom(std::string_view text, std::string_view start) {
    const size_t at = std::min(text.find(start), text.size());
    return text.substr(at, std::min(text.find('\n', at), text.size()) - at);
}

std::string_view lastLine(std::string_view text) {
    while (text.ends_with('\n') || text.ends_with('.'))
        text.remove_suffix(1);
    return text.substr(text.rfind('\n') + 1); // 0 when there is none
}

/// The number behind certain words; nothing without them.
std::optional<int> numberBehind(std::string_view words, std::string_view text) {
    const size_t at = text.find(words);
    if (at == std::string_view::npos) return {};
    text.remove_prefix(std::min(text.find_first_not_of(' ', at + words.size()), text.size()));
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// The number of pages, from what pdftocairo tells of a page beyond the last one; nothing for anything else.
std::optional<int> pagesTold(std::string_view diagnostics) {
    return numberBehind("can not be after the last page (", diagnostics);
}

ChildResult runOn(const PlotFile &file, const std::vector<std::string> &arguments, const ConverterLimits &limits) {
    const UniqueFd input(open(file.heldPath().c_str(), O_RDONLY | O_CLOEXEC));
    if (input.get() < 0) throw fileFailure(shown(file.path()), errno);
    return runChild(arguments, input.get(), {limits.time, limits.memory, limits.output});
}

Failure failed(const std::string &name, const Converter &converter, const ChildResult &result, int page) {
    if (const char *trouble = troubleIn(result.diagnostics)) return {ExitCode::Unfit, fmt::format("{}: {}", name, trouble)};
    if (const auto pages = pagesTold(result.diagnostics)) {
        return *pages == 0
                   ? Failure{ExitCode::Unfit, fmt::format("{}: it has no pages; make it again", name)}
                   : Failure{ExitCode::Usage, fmt::format("{}: it has no page {}; its last page is {}", name, page, *pages)};
    }
    const std::string why = result.end == End::Killed ? fmt::format("it crashed ({})", strsignal(result.code))
                                                      : shown(std::string(lastLine(result.diagnostics)));
    return {ExitCode::Unfit, fmt::format("{}: {} cannot read it: {}; save it again, or export it as plain SVG", name,
                                         converter.program, why.empty() ? "it does not say why" : why)};
}

void requireResult(const std::string &name, const Converter &converter, const ChildResult &result, int page,
                   const ConverterLimits &limits) {
    switch (result.end) {
    case End::Exited:
        if (result.code == 0 && !result.output.empty() && !troubleIn(result.diagnostics)) return;
        [[fallthrough]];
    case End::Killed: throw failed(name, converter, result, page);
    case End::Missing:
        throw Failure(ExitCode::Missing, fmt::format("{}: not found, and {} are read by it; install the Debian package {}",
                                                     converter.program, converter.what, converter.package));
    case End::OutOfTime:
        throw Failure(ExitCode::Unfit, fmt::format("{}: not converted within {} s; make it simpler, or plot it in parts",
                                                   name, limits.time.count() / 1000));
    case End::OutOfMemory: throw Failure(ExitCode::Unfit, fmt::format("{}: {}", name, kTooLittleMemory));
    case End::TooMuchOutput:
        throw Failure(ExitCode::Unfit, fmt::format("{}: it becomes more than {} MiB; make it simpler, or plot it in parts",
                                                   name, limits.output >> 20));
    case End::Stopped: throw Failure(ExitCode::Stopped, fmt::format("{}: stopped while it was converted", name));
    }
}

/// A damaged document is read as far as it goes, and the rest left out.
std::vector<std::string> notesOf(const Converter &converter, const ChildResult &result) {
    const std::string error = shown(std::string(lineFrom(result.diagnostics, "Syntax Error")));
    if (error.empty()) return {};
    return {fmt::format("{} found the file damaged, and parts may be missing ({})", converter.program, error)};
}

} // namespace

PlainSvg plainSvgOf(const PlotFile &file, FileKind kind, int page, const ConverterLimits &limits) {
    const std::string name = shown(file.path());
    if (page < 1) throw Failure(ExitCode::Usage, fmt::format("page {}: there is none; pages count from 1", page));
    const Converter &converter = converterOf(kind);
    std::vector<std::string> arguments = converter.options(page);
    arguments.insert(arguments.begin(), converter.program);
    ChildResult result = runOn(file, arguments, limits);
    requireResult(name, converter, result, page, limits);
    return {std::move(result.output), notesOf(converter, result)};
}

int pagesOf(const PlotFile &file, const ConverterLimits &limits) {
    const ChildResult result = runOn(file, {"pdfinfo", "-"}, limits);
    if (result.end == End::Stopped) requireResult(shown(file.path()), converterOf(FileKind::Pdf), result, 1, limits);
    return std::max(1, numberBehind("\nPages:", result.output).value_or(1));
}

} // namespace host
