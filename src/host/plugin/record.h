// Filling the service record for the plug-in, and reading what it returns. Strings and files stand in it as handles and
// references that only the plug-in can make, and nothing in the record says whose they are: here they get an owner, and what
// goes wrong becomes a Failure.
#pragma once

#include <orb/vectorix.h>
#include <string>

namespace host {

/// A string made by the plug-in, given back to it at the end.
class HostString {
public:
    /// Throws Failure when the text is not UTF-8; what names it in the message.
    HostString(const std::string &text, const std::string &what);
    HostString(const HostString &) = delete;
    HostString &operator=(const HostString &) = delete;
    ~HostString() { ORB_hostReleaseString(handle_); }
    CFStringRef get() const { return handle_; }

private:
    CFStringRef handle_;
};

/// A record of zeros, but for the service's number, and -1 as the port's descriptor: 0 would be standard input.
ORB_ServiceRecord emptyRecord(uint32_t service);

/// The text of a string field; empty for none.
std::string textOf(CFStringRef string);

/// Gives the message, job and tool strings of a returned record back to the plug-in; the handles in it are invalid then.
void releaseStrings(const ORB_ServiceRecord &record);

/// The reference by which the plug-in finds a file. Throws Failure when there is no such file or it cannot be referred to.
ORB_FSRef fileReference(const std::string &path);

} // namespace host
