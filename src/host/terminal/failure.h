// How a command ends. Scripts decide by the exit code whether to print again, wait or call somebody, so the codes are few,
// documented and stable. A Failure carries one with its message up from any depth; what nobody catches on the way is
// printed in one place, runCommandLine(). Codes of file calls are translated here, so that each gives the same exit code
// and remedy in all commands.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace host {

/// Documented and stable: none is given another meaning.
enum class ExitCode {
    Done = 0,
    Failed = 1,     ///< the job failed or was not wholly sent
    Usage = 2,      ///< what was typed
    Missing = 3,    ///< no such device or file
    Permission = 4, ///< not allowed
    Busy = 5,       ///< somebody else holds the port
    Lost = 6,       ///< the device went away or is silent
    Unfit = 7,      ///< the job file, the plot file or the profile
    Stopped = 130   ///< by the user
};

struct ExitCodeRow {
    ExitCode code;
    const char *meaning;
};

inline constexpr ExitCodeRow kExitCodes[] = {
    {ExitCode::Done, "done"},
    {ExitCode::Failed, "the job failed or was not wholly sent"},
    {ExitCode::Usage, "usage"},
    {ExitCode::Missing, "no such device or file"},
    {ExitCode::Permission, "permission denied"},
    {ExitCode::Busy, "the port or the plotter is busy"},
    {ExitCode::Lost, "the device was lost, or is silent"},
    {ExitCode::Unfit, "the job file, the plot file or the profile is unfit"},
    {ExitCode::Stopped, "stopped by the user"},
};

/// The exit codes as a paragraph for the help.
std::string exitCodeHelp();

/// Ends the command. The text names the thing and the remedy, in the form "THING: what happened; what to do".
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string &text) : std::runtime_error(text), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

/// The failure that an errno code of a file call means; thing names the file in the message.
Failure fileFailure(const std::string &thing, int errorNumber);

/// The same for a file that was to be written.
Failure outputFailure(const std::string &file, int errorNumber);

/// The text of an ORB_errorID.
std::string errorText(int32_t errorID);

} // namespace host
