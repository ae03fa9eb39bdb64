#include "host/plugin/record.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cstring>
#include <fmt/format.h>

namespace host {

HostString::HostString(const std::string &text, const std::string &what) : handle_(ORB_hostCreateString(text.c_str())) {
    if (handle_ == 0) throw Failure(ExitCode::Usage, fmt::format("{}: not UTF-8 text; type it in plain letters", what));
}

ORB_ServiceRecord emptyRecord(uint32_t service) {
    ORB_ServiceRecord record;
    memset(&record, 0, sizeof record);
    record.ORB_serviceNumber = service;
    record.ORB_portFD = -1;
    return record;
}

std::string textOf(CFStringRef string) {
    int32_t length = ORB_hostGetString(string, nullptr, 0);
    if (length <= 0) return {};
    std::string text(static_cast<size_t>(length) + 1, '\0');
    ORB_hostGetString(string, text.data(), static_cast<uint32_t>(text.size()));
    text.pop_back();
    return text;
}

void releaseStrings(const ORB_ServiceRecord &record) {
    const CFStringRef strings[] = {record.ORB_CFSTR_message,     record.ORB_CFSTR_ProjectName,
                                   record.ORB_CFSTR_PlotterName, record.ORB_CFSTR_PlotfileTerminator,
                                   record.ORB_CFSTR_Tool1,       record.ORB_CFSTR_Tool2,
                                   record.ORB_CFSTR_Tool3,       record.ORB_CFSTR_Tool4,
                                   record.ORB_CFSTR_Tool5,       record.ORB_CFSTR_Tool6,
                                   record.ORB_CFSTR_Tool7,       record.ORB_CFSTR_Tool8};
    for (CFStringRef string : strings)
        ORB_hostReleaseString(string);
}

ORB_FSRef fileReference(const std::string &path) {
    ORB_FSRef reference;
    switch (int32_t result = ORB_hostMakeFileRef(path.c_str(), &reference)) {
    case 0: return reference;
    case kORB_FileNotFound: throw fileFailure(path, ENOENT);
    case kORB_FileNoPermission: throw fileFailure(path, EACCES);
    default:
        throw Failure(ExitCode::Failed, fmt::format("{}: cannot be named to the plug-in (code {})", shown(path), result));
    }
}

} // namespace host
