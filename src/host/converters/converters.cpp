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

struct Trouble {
    std::string_view sign; ///< in what the converter told
    ExitCode code;
    const char *text;
};

/// The first one told counts. What fails for want of memory says so in many ways.
constexpr Trouble kTroubles[] = {
    {"Incorrect password", ExitCode::Unfit, "it has a password; save it without one"},
    {"emory", ExitCode::Unfit, "converting it needs more memory than is allowed; make it simpler, or plot it in parts"},
    {"alloc", ExitCode::Unfit, "converting it needs more memory than is allowed; make it simpler, or plot it in parts"},
};

std::string_view lastLine(std::string_view text) {
    while (text.ends_with('\n'))
        text.remove_suffix(1);
    return text.substr(text.rfind('\n') + 1); // 0 when there is none
}

/// The number of pages, from what pdftocairo tells of a page beyond the last one; 0 for anything else.
int pagesTold(std::string_view diagnostics) {
    constexpr std::string_view kBefore = "can not be after the last page (";
    const size_t at = diagnostics.find(kBefore);
    if (at == std::string_view::npos) return 0;
    int pages = 0;
    const char *first = diagnostics.data() + at + kBefore.size();
    std::from_chars(first, diagnostics.data() + diagnostics.size(), pages);
    return pages;
}

Failure failed(const std::string &name, const Converter &converter, const ChildResult &result, int page) {
    if (const int pages = pagesTold(result.diagnostics); pages > 0) {
        return {ExitCode::Usage, fmt::format("{}: it has no page {}; its last page is {}", name, page, pages)};
    }
    for (const Trouble &trouble : kTroubles)
        if (result.diagnostics.find(trouble.sign) != std::string::npos)
            return {trouble.code, fmt::format("{}: {}", name, trouble.text)};
    const std::string why = result.end == End::Killed ? fmt::format("it crashed ({})", strsignal(result.code))
                                                      : shown(std::string(lastLine(result.diagnostics)));
    return {ExitCode::Unfit, fmt::format("{}: {} cannot read it: {}; save it again, or export it as plain SVG", name,
                                         converter.program, why.empty() ? "it does not say why" : why)};
}

void requireResult(const std::string &name, const Converter &converter, const ChildResult &result, int page,
                   const ConverterLimits &limits) {
    switch (result.end) {
    case End::Exited:
        if (result.code == 0 && !result.output.empty()) return;
        throw failed(name, converter, result, page);
    case End::Killed: throw failed(name, converter, result, page);
    case End::Missing:
        throw Failure(ExitCode::Missing, fmt::format("{}: not found, and {} are read by it; install the Debian package {}",
                                                     converter.program, converter.what, converter.package));
    case End::OutOfTime:
        throw Failure(ExitCode::Unfit, fmt::format("{}: not converted within {} s; make it simpler, or plot it in parts",
                                                   name, limits.time.count() / 1000));
    case End::TooMuchOutput:
        throw Failure(ExitCode::Unfit, fmt::format("{}: it becomes more than {} MiB; make it simpler, or plot it in parts",
                                                   name, limits.output >> 20));
    case End::Stopped: throw Failure(ExitCode::Stopped, fmt::format("{}: stopped while it was converted", name));
    }
}

} // namespace

std::string svgOf(const PlotFile &file, FileKind kind, int page, const ConverterLimits &limits) {
    const std::string name = shown(file.path());
    if (page < 1) throw Failure(ExitCode::Usage, fmt::format("page {}: there is none; pages count from 1", page));
    const UniqueFd input(open(file.heldPath().c_str(), O_RDONLY | O_CLOEXEC));
    if (input.get() < 0) throw fileFailure(name, errno);
    const Converter &converter = converterOf(kind);
    std::vector<std::string> arguments = converter.options(page);
    arguments.insert(arguments.begin(), converter.program);
    ChildResult result = runChild(arguments, input.get(), {limits.time, limits.memory, limits.output});
    requireResult(name, converter, result, page, limits);
    return std::move(result.output);
}

} // namespace host
