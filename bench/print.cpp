#include "print.h"

#include "figures.h"
#include "platform/backends.h"

#include <stdexcept>
#include <utility>

namespace bench {

namespace {

constexpr char kJob[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                        "<key>Plotter emulation ID :</key><integer>17002</integer>"
                        "<key>Plotfile terminator :</key><string>;</string></dict></plist>\n";

ORB_FSRef reference(const std::string &path) {
    ORB_FSRef ref;
    if (ORB_hostMakeFileRef(path.c_str(), &ref) != 0) throw std::runtime_error(path + ": no reference to it");
    return ref;
}

/// What a progress function needs to tell one piece from the next.
struct Pieces {
    std::vector<uint8_t> sizes;
    int64_t sent = 0;
};

int32_t notePiece(const ORB_JobReport *soFar, void *context) {
    auto &pieces = *static_cast<Pieces *>(context);
    pieces.sizes.push_back(static_cast<uint8_t>(soFar->sentBytes - std::exchange(pieces.sent, soFar->sentBytes)));
    return 0;
}

} // namespace

Hasty::Hasty() : before_(std::exchange(platform::backends().clock, this)) {
    ORB_hostSetConsole([](const char *, uint32_t, int32_t, void *) {}, nullptr);
}

Hasty::~Hasty() {
    ORB_hostSetConsole(nullptr, nullptr);
    platform::backends().clock = before_;
}

PrintJob::PrintJob(const std::string &plotFile, const std::string &port) : job_(".plist") {
    job_.append(kJob);
    record_.ORB_serviceNumber = kORB_ServicePrint;
    record_.ORB_OutputMethode = port.empty() ? kORB_OSX_METHOD_USB : kORB_OSX_METHOD_SERIAL;
    record_.ORB_USBidVendor = 0x0B75;
    record_.ORB_USBidProduct = 7;
    record_.ORB_baudRate = 38400;
    record_.ORB_dataBits = kORB_DataBits8;
    record_.ORB_portFD = -1;
    record_.ORB_JobFileRef = reference(job_.path());
    record_.ORB_PlotFileInRef = reference(plotFile);
    if (!port.empty()) record_.ORB_CFSTR_bsdIn_VectorixDevice = ORB_hostCreateString(port.c_str());
}

PrintJob::~PrintJob() { ORB_hostReleaseString(record_.ORB_CFSTR_bsdIn_VectorixDevice); }

void PrintJob::run() const {
    const ORB_ServiceRecord answer = ORB_getVectorixCS2(record_);
    ORB_JobReport report;
    report.structSize = sizeof report;
    ORB_hostGetJobReport(&report);
    ORB_hostReleaseString(answer.ORB_CFSTR_message);
    ORB_hostReleaseString(answer.ORB_CFSTR_PlotfileTerminator);
    if (answer.ORB_errorID != kORB_NoError || report.firstErrorID != kORB_NoError || report.sentBytes != report.fileBytes)
        throw std::runtime_error(text("the print failed: error %d, first %d (%d), %lld of %lld bytes sent",
                                      answer.ORB_errorID, report.firstErrorID, report.firstStatus,
                                      static_cast<long long>(report.sentBytes), static_cast<long long>(report.fileBytes)));
}

std::vector<uint8_t> piecesOf(const PrintJob &job) {
    Pieces pieces;
    ORB_hostSetProgress(notePiece, &pieces);
    job.run();
    ORB_hostSetProgress(nullptr, nullptr);
    return std::move(pieces.sizes);
}

} // namespace bench
