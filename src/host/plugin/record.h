// The service record as the command fills it, and the strings in it.
#pragma once

#include <orb/vectorix.h>
#include <string>

namespace host {

/// An owned string of the plug-in.
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

/// A record with nothing in it but what says so: no open port.
ORB_ServiceRecord emptyRecord(uint32_t service);

/// The text of a string field; empty for none.
std::string textOf(CFStringRef string);

/// Gives back every string of a returned record.
void releaseStrings(const ORB_ServiceRecord &record);

/// Names a file to the plug-in. Throws Failure when it cannot be named.
ORB_FSRef fileReference(const std::string &path);

} // namespace host
