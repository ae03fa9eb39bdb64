#include "hardclip/query_report.h"

#include "record/state.h"

#include <algorithm>
#include <cstring>

namespace hardclip {

namespace {

constexpr ORB_QueryReport emptyReport() {
    ORB_QueryReport empty{};
    empty.structSize = sizeof empty;
    empty.errorID = kORB_NoError;
    return empty;
}

ORB_QueryReport report = emptyReport();
int32_t unsentStatus = 0; // of the last request; 0 when it went out

} // namespace

void beginQueryReport() noexcept {
    report = emptyReport();
    unsentStatus = 0;
}

void noteRequest() noexcept {
    const char *text = answer().ORB_writeBuffer;
    unsentStatus = 0;
    report.requestBytes = static_cast<uint32_t>(strnlen(text, sizeof report.request - 1));
    memcpy(report.request, text, report.requestBytes);
    report.request[report.requestBytes] = '\0';
}

void noteUnsent(int32_t status) noexcept { unsentStatus = status; }

void noteRead(std::string_view reply) noexcept {
    ++report.reads;
    if (reply.empty()) return;
    report.replyBytes = static_cast<uint32_t>(std::min(reply.size(), sizeof report.reply - 1));
    memcpy(report.reply, reply.data(), report.replyBytes);
    report.reply[report.replyBytes] = '\0';
}

void noteOutcome(int32_t status) noexcept {
    report.errorID = answer().ORB_errorID;
    report.status = status;
    if (unsentStatus == 0 || report.replyBytes > 0) return;
    report.errorID = kORB_ErrorPipe;
    report.status = unsentStatus;
}

const ORB_QueryReport &queryReport() noexcept { return report; }

} // namespace hardclip
