#include "host/examination/file_kind.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>

namespace host {

using language::Findings;
using language::Language;

namespace {

constexpr size_t kLookedAt = size_t{64} * 1024; // bytes: a few thousand instructions, in a millisecond
constexpr const char *kExport = "export the drawing in the plotter's language";
constexpr const char *kConvert = "make a plot of it with 'vectorix convert'";

/// In the order in which they are tried.
constexpr struct {
    std::string_view start;
    FileKind kind;
    const char *name;
    const char *remedy = kExport;
} kStarts[] = {
    {"%!", FileKind::PostScript, "a PostScript document"},
    {"%PDF-", FileKind::Pdf, "a PDF document", kConvert},
    {"<svg", FileKind::Svg, "an SVG drawing", kConvert},
    {"<!DOCTYPE svg", FileKind::Svg, "an SVG drawing", kConvert},
    {"<?xml", FileKind::Xml, "an XML document"},
    {"<!--", FileKind::Xml, "an XML document"},
    {"<!DOCTYPE", FileKind::WebPage, "a web page"},
    {"<html", FileKind::WebPage, "a web page"},
    {"\x89PNG", FileKind::Picture, "a PNG picture"},
    {"\xFF\xD8\xFF", FileKind::Picture, "a JPEG picture"},
    {"GIF8", FileKind::Picture, "a GIF picture"},
    {"II*", FileKind::Picture, "a TIFF picture"},
    {"MM*", FileKind::Picture, "a TIFF picture"},
    {"0\nSECTION", FileKind::Drawing, "a DXF drawing"},
    {"0\r\nSECTION", FileKind::Drawing, "a DXF drawing"},
    {"AC10", FileKind::Drawing, "a DWG drawing"},
    {"PK\x03\x04", FileKind::Archive, "a ZIP archive", "unpack it first"},
    {"\x1F\x8B", FileKind::Archive, "a gzip archive", "unpack it first"},
    {"BZh", FileKind::Archive, "a bzip2 archive", "unpack it first"},
    {"\xFD"
     "7zXZ",
     FileKind::Archive, "an XZ archive", "unpack it first"},
    {"\x28\xB5\x2F\xFD", FileKind::Archive, "a Zstandard archive", "unpack it first"},
    {"\x7F"
     "ELF",
     FileKind::Program, "a program"},
    {"\xFF\xFE", FileKind::Utf16, "a text in UTF-16", "save it as plain ASCII"},
    {"\xFE\xFF", FileKind::Utf16, "a text in UTF-16", "save it as plain ASCII"},
};

/// Characters of two bytes, the one of them NUL, without a mark at the start.
bool isWide(std::string_view head) {
    std::string pattern(head.substr(0, 8));
    std::ranges::replace_if(
        pattern, [](char c) { return c != '\0'; }, 'c');
    std::ranges::replace(pattern, '\0', '0');
    return pattern == "c0c0c0c0" || pattern == "0c0c0c0c";
}

/// Whether an XML document, or a text in UTF-16, is an SVG drawing.
bool holdsSvg(std::string_view head, FileKind kind) {
    constexpr std::string_view kWide("<\0s\0v\0g", 7); // in either order of bytes
    return (kind == FileKind::Xml && head.find("<svg") != std::string_view::npos) ||
           (kind == FileKind::Utf16 && head.find(kWide) != std::string_view::npos);
}

FileNature byStart(std::string_view head) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string_view start = head;
    if (start.rfind(kByteOrderMark, 0) == 0) start.remove_prefix(kByteOrderMark.size());
    start.remove_prefix(std::min(start.find_first_not_of(" \t\r\n"), start.size()));
    for (const auto &row : kStarts) {
        if (start.rfind(row.start, 0) != 0 && !(row.kind == FileKind::Utf16 && isWide(head))) continue;
        bool isSvg = holdsSvg(head, row.kind);
        return {isSvg ? FileKind::Svg : row.kind, fmt::format("not a plot, but {}", isSvg ? "an SVG drawing" : row.name),
                isSvg ? kConvert : row.remedy};
    }
    return {};
}

struct Sense {
    uint64_t good = 0, bad = 0; ///< instructions, and what is none or malformed
    /// A plot has next to nothing bad in it, other texts have three times as much of it as of what looks good.
    bool isThere() const { return bad <= good; }
};

Sense senseAs(Language language, std::string_view text, bool isAll) {
    language::NoPen noPen;
    auto reader = language::makeReader(language, noPen, {{0, 0}, {1, 1}});
    reader->take(text);
    if (isAll) reader->finish();
    const Findings &found = reader->findings();
    return {found.instructions - found.malformed, found.unknown + found.malformed};
}

} // namespace

FileNature natureOf(const PlotFile &file, std::optional<Language> language) {
    std::string buffer(kLookedAt, '\0');
    std::string_view head = file.read(0, buffer);
    FileNature nature = byStart(head);
    if (!nature.isPlot() || !language) return nature;
    if (*language == Language::Hpgl && language::guessLanguage(head) == Language::Dmpl)
        return {FileKind::Dmpl, "in DM/PL (it begins with \";:\"), not in HP-GL", "print it with --emulation dmpl"};

    bool isAll = head.size() < kLookedAt;
    Sense sense = senseAs(*language, head, isAll);
    if (sense.isThere()) return {};
    if (*language == Language::Dmpl && senseAs(Language::Hpgl, head, isAll).isThere())
        return {FileKind::Hpgl, "in HP-GL, not in DM/PL", "print it with --emulation hpgl"};
    return {FileKind::Nonsense,
            sense.good == 0 ? "not a plot: nothing at its start is an instruction"
                            : fmt::format("not a plot: {} of the {} instructions at its start make no sense", sense.bad,
                                          sense.bad + sense.good),
            kExport};
}

void requirePlot(const PlotFile &file, std::optional<Language> typed, const char *verb) {
    std::string head(4096, '\0');
    const Language guessed = language::guessLanguage(file.read(0, head));
    const FileNature nature = natureOf(file, typed ? std::nullopt : std::optional(guessed));
    if (nature.isPlot()) return;
    const std::string force = fmt::format(", or {} it all the same with --language hpgl", verb);
    throw Failure(ExitCode::Unfit, fmt::format("{}: {}; {}{}", shown(file.path()), nature.what, nature.remedy,
                                               nature.kind == FileKind::Nonsense ? force : ""));
}

} // namespace host
