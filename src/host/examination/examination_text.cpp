#include "host/examination/examination.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <fmt/format.h>

namespace host {

namespace {

constexpr size_t kExcerpt = 60;

struct Explanation {
    std::string what;
    std::string remedy;
};

/// notSent: "not sent", or "would not be sent".
Explanation explain(const Examination &found, const PlotRules &rules, const char *notSent) {
    std::string bytes = counted(found.flawBytes, "byte");
    std::string mark = excerpt(rules.endMark(), kExcerpt);
    switch (found.flaw) {
    case Flaw::Empty: return {"the plot file is empty", "make it again"};
    case Flaw::NoTerminator:
        return {fmt::format("the job names no terminator, and emulation {} needs one", rules.emulation),
                "put the plot's own into the job file ('vectorix job --help')"};
    case Flaw::NotASCII:
        if (found.offset == 0 && found.excerpt.rfind("\xEF\xBB\xBF", 0) == 0) {
            return {
                fmt::format("it begins with a UTF-8 mark (0xEF 0xBB 0xBF), and no plot gets past it: {} {}", bytes, notSent),
                "save it without that mark, as plain ASCII"};
        }
        return {fmt::format("the byte 0x{:02X} at offset {} is not ASCII, and no plot gets past it: {} {}",
                            static_cast<unsigned char>(found.excerpt[0]), found.offset, bytes, notSent),
                "export the plot again without it"};
    case Flaw::BehindNul:
        return {fmt::format("{} behind NUL bytes {}, the first at offset {}", bytes, notSent, found.offset),
                "take the NUL bytes out of the file"};
    case Flaw::BehindMark:
        return {fmt::format("{} at the end {}, from offset {} on, for no \"{}\" ends them: \"{}\"", bytes, notSent,
                            found.offset, mark, excerpt(found.excerpt, kExcerpt)),
                fmt::format("end the plot file with \"{}\", or {}", mark,
                            rules.hasOwnEnd() ? "print with the emulation of the plot's own language"
                                              : "give the job the plot's own terminator")};
    case Flaw::Blank: return {fmt::format("nothing in it draws, and it {}", notSent), "export it again"};
    case Flaw::None: break;
    }
    return {};
}

} // namespace

void requireFitPlot(const Examination &examination, const PlotFile &file, const PlotRules &rules) {
    if (examination.isFit()) return;
    Explanation why = explain(examination, rules, "would not be sent");
    std::string forced = examination.withheldBytes < examination.fileBytes ? ", or print what can be sent with --force" : "";
    if (const FileNature &nature = examination.nature; !nature.isPlot()) {
        why = {nature.what, nature.remedy};
        forced = ", or print it all the same with --force";
    }
    throw Failure(ExitCode::Unfit, fmt::format("{}: {}; {}{}", shown(file.path()), why.what, why.remedy, forced));
}

std::string flawText(const Examination &examination, const PlotRules &rules) {
    Explanation why = explain(examination, rules, "not sent");
    int64_t harmless = examination.innerPaddingBytes + examination.endPaddingBytes;
    if (int64_t all = examination.withheldBytes - harmless; all > examination.flawBytes)
        why.what += fmt::format(" ({} not sent in all)", counted(all, "byte"));
    return why.what + "; " + why.remedy;
}

} // namespace host
