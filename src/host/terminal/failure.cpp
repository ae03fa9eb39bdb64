#include "host/terminal/failure.h"

#include "host/terminal/text.h"

#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <orb/vectorix.h>

namespace host {

std::string exitCodeHelp() {
    std::string text = "Exit codes:";
    for (const ExitCodeRow &row : kExitCodes)
        text += fmt::format("\n  {:<3}  {}", static_cast<int>(row.code), row.meaning);
    return text;
}

Failure fileFailure(const std::string &thing, int errorNumber) {
    const struct {
        int errorNumber;
        ExitCode code;
        const char *remedy;
    } kRows[] = {
        {ENOENT, ExitCode::Missing, "check the spelling"},
        {ENOTDIR, ExitCode::Missing, "check the spelling"},
        {ENAMETOOLONG, ExitCode::Missing, "check the spelling"},
        {ELOOP, ExitCode::Missing, "check where its links lead"},
        {EACCES, ExitCode::Permission, "choose another file, or ask its owner for access"},
        {EPERM, ExitCode::Permission, "choose another file, or ask its owner for access"},
        {EROFS, ExitCode::Permission, "choose a place that can be written to"},
        {EISDIR, ExitCode::Unfit, "name a file"},
        {ENOSPC, ExitCode::Failed, "make room on its disk"},
    };
    std::string what = lowered(strerror(errorNumber));
    for (const auto &row : kRows) {
        if (row.errorNumber == errorNumber) return {row.code, fmt::format("{}: {}; {}", shown(thing), what, row.remedy)};
    }
    return {ExitCode::Failed, fmt::format("{}: {}", shown(thing), what)};
}

Failure outputFailure(const std::string &file, int errorNumber) {
    if (errorNumber == EISDIR) return {ExitCode::Usage, fmt::format("{}: is a directory; name a file in it", shown(file))};
    if (errorNumber == EMEDIUMTYPE)
        return {ExitCode::Usage,
                fmt::format("{}: is a device or a pipe, and a file would come in its place; name a file", shown(file))};
    return fileFailure(file, errorNumber);
}

std::string errorText(int32_t errorID) {
#define ROW(name, value, fault, text)                                                                                       \
    if (errorID == (value)) return text;
    ORB_ERROR_IDENTIFIERS(ROW)
#undef ROW
    return fmt::format("error {}", errorID);
}

} // namespace host
