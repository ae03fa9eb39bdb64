#include "plot/plot_sender.h"

#include "emulations/emulations.h"
#include "link/link_switch.h"
#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "plot/job_file.h"
#include "plot/job_report.h"
#include "plot/open_fork.h"
#include "plot/usb_session.h"
#include "record/state.h"
#include "usb/interface.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <string_view>

namespace {

using namespace plot;
using emulations::Emulation;

constexpr size_t kLargestChunk = 255;

/// The end of a job before its plot file is through. Returns status.
int32_t giveUp(uint32_t reason, int32_t errorID, int32_t status, int64_t offset = -1) {
    answer().ORB_errorID = errorID;
    noteFailure(errorID, status, offset);
    noteStop(reason);
    return status;
}

/// Sends the tool strings; false when one does not convert.
bool sendTools() {
    const ORB_ServiceRecord &record = answer();
    const CFStringRef tools[] = {record.ORB_CFSTR_Tool1, record.ORB_CFSTR_Tool2, record.ORB_CFSTR_Tool3,
                                 record.ORB_CFSTR_Tool4, record.ORB_CFSTR_Tool5, record.ORB_CFSTR_Tool6,
                                 record.ORB_CFSTR_Tool7, record.ORB_CFSTR_Tool8};
    for (CFStringRef tool : tools) {
        if (CFStringGetLength(tool) == 0) continue;
        if (!loadText(tool)) return false;
        ORB_writePlotter();
        const LinkWrite &outcome = gORB_FoundationStruct.lastWrite;
        if (answer().ORB_errorID != kORB_NoError || outcome.status != 0) noteFailedWrite(outcome);
        if (platform::stopRequested()) break;
    }
    return true;
}

bool isASCII(std::string_view text) {
    uint64_t all = 0;
    for (; text.size() >= sizeof all; text.remove_prefix(sizeof all)) {
        uint64_t word;
        memcpy(&word, text.data(), sizeof word);
        all |= word;
    }
    for (char c : text)
        all |= static_cast<unsigned char>(c);
    return (all & 0x8080808080808080) == 0;
}

/// Streams one plot file.
class PlotStream {
public:
    PlotStream(OpenFork &fork, std::string_view terminator, const Emulation &emulation, int64_t chunkSize, int32_t status)
        : fork_(fork), terminator_(terminator), rule_(emulation.cut), showsEnd_(emulation.showsEnd),
          chunkSize_(std::clamp<int64_t>(chunkSize, 1, kLargestChunk)), status_(status) {}

    /// Sends full chunks, then the tail. Returns the running status.
    int32_t run() {
        noteFileSize(fork_.size());
        if (platform::stopRequested()) return giveUp(kORB_StopByHost, kORB_ErrorStopped, 0, 0);
        if (sendChunks()) sendTail();
        return status_;
    }

private:
    /// Sends all but the last chunk; false when the job ends here.
    bool sendChunks() {
        while (offset_ + chunkSize_ < fork_.size()) {
            if (!read(chunkSize_, kORB_ErrorReadingChunk, kORB_ErrorChunkUnreadable)) return false;
            size_t cut = emulations::findCut(text_, terminator_, rule_);
            if (cut == 0) {
                cut = text_.size();
                noteUncutChunk();
            }
            if (!send(cut)) return false;
        }
        return true;
    }

    /// Sends the file's end up to its last mark; what lies behind that is not sent.
    void sendTail() {
        int64_t length = fork_.size() - offset_;
        if (length == 0) {
            posix::puts("[ORB_readPlotFile2Write] readLength == 0 !");
            return;
        }
        status_ = 0; // from here on the result is that of the tail alone
        if (!read(length, kORB_ErrorReadingTail, kORB_ErrorTailUnreadable)) return;
        size_t end = emulations::findEnd(text_, terminator_, rule_);
        if (end == 0) {
            noteStop(kORB_StopNoMarkInTail);
            return;
        }
        if (showsEnd_) {
            CFRef piece(CFStringCreateWithUTF8(text_.substr(0, end)));
            ORB_show(platform::constantString("%@"), piece.get());
        }
        send(end);
    }

    /// Reads length bytes at the offset into text_; false when they cannot be read, or are not ASCII.
    bool read(int64_t length, int32_t attemptFailed, int32_t allFailed) {
        auto size = static_cast<size_t>(length);
        OSErr result = fork_.read(offset_, size, buffer_.data(), [&](OSErr) { answer().ORB_errorID = attemptFailed; });
        if (result != noErr) {
            status_ = giveUp(kORB_StopPlotFile, allFailed, result, offset_);
            return false;
        }
        answer().ORB_errorID = kORB_NoError;
        text_ = {buffer_.data(), size};
        if (isASCII(text_)) return true;
        posix::puts("\n[ORB_readPlotFile2Write] CFStringCreateFromExternalRepresentation returns empty ReadTextStr !");
        auto foreign =
            std::find_if(text_.begin(), text_.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        noteFailure(kORB_ErrorPathNameTooLong, 0, offset_ + (foreign - text_.begin()));
        noteStop(kORB_StopNotASCII);
        return false;
    }

    /// Sends the first length bytes of text_ as one piece; false when the host stops the job.
    bool send(size_t length) {
        int64_t offered = pieces_.load(text_.substr(0, length));
        status_ = ORB_writePlotter();
        notePiece(offset_, offered, gORB_FoundationStruct.lastWrite);
        offset_ += static_cast<int64_t>(length);
        if (!hostWantsStop()) return true;
        giveUp(kORB_StopByHost, kORB_ErrorStopped, 0, offset_);
        return false;
    }

    OpenFork &fork_;
    std::string_view terminator_;
    const emulations::CutRule &rule_;
    bool showsEnd_;
    int64_t chunkSize_;
    int64_t offset_ = 0;
    int32_t status_;
    std::array<char, kLargestChunk> buffer_;
    std::string_view text_;
    PieceBuffer pieces_;
};

} // namespace

extern "C" int32_t ORB_readPlotFile2Write() {
    beginReport();
    ORB_ServiceRecord &record = answer();
    int32_t result = ORB_readJobFile();
    if (result != 0 || record.ORB_errorID != kORB_NoError) {
        noteFailure(record.ORB_errorID, result);
        noteStop(kORB_StopJobFile);
        return result;
    }
    ORB_USBloadORB_pipe_inANDout();
    ORB_FSRef plotFile = record.ORB_PlotFileRef;

    CFRef terminator;
    if (CFGetTypeID(record.ORB_CFSTR_PlotfileTerminator) == CFStringGetTypeID()) {
        terminator.reset(CFStringCreateCopy(record.ORB_CFSTR_PlotfileTerminator));
        if (!terminator) {
            posix::puts("[ORB Vectorix Foundation : S18 : ORB_readPlotFile2Write] gORB_FoundationStruct.ORB_Term== NULL");
        }
    }
    std::string_view mark = platform::stringView(terminator.get());
    const Emulation &emulation = emulations::of(record.ORB_PlotterEmulationID);
    if (mark.empty() && emulation.cut.end.empty()) {
        return giveUp(kORB_StopJobFile, kORB_ErrorNoTerminator, 0);
    }

    HFSUniStr255 forkName;
    if (OSErr failure = FSGetDataForkName(&forkName); failure != noErr) {
        return giveUp(kORB_StopPlotFile, kORB_ErrorForkName, failure);
    }

    int32_t status = 0;
    UsbSession session;
    bool converted = true;
    if (record.ORB_OutputMethode == kORB_OSX_METHOD_USB) {
        if (!session.open(&status)) return status;
        converted = session.sendStart(&status);
    } else if (record.ORB_OutputMethode == kORB_OSX_METHOD_SERIAL) {
        if (gORB_FoundationStruct.startWrite.status != 0) noteFailedWrite(gORB_FoundationStruct.startWrite);
    } else {
        noteFailure(kORB_ErrorInterfaceNotOpened, kIOReturnNotOpen); // the job goes on, and nothing of it goes out
        noteStop(kORB_StopNoLink);
    }
    if (!converted || (jobHasTools() && !sendTools())) {
        return giveUp(kORB_StopUnconvertible, kORB_ErrorPathNameTooLong, status);
    }

    OpenFork fork;
    if (OSErr failure = fork.open(plotFile, forkName); failure != noErr) {
        posix::eprintf("%s() returned %d\n", fork.failedCall(), failure);
        return giveUp(kORB_StopPlotFile, fork.isOpen() ? kORB_ErrorJobFile : kORB_ErrorOpeningPlotFile, failure);
    }
    return PlotStream(fork, mark, emulation, record.ORB_PlotChunkSize, status).run();
}

extern "C" void ORB_show(CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CFRef text(CFStringCreateWithFormatAndArguments(format, arguments));
    va_end(arguments);
    if (!text) return;
    std::string_view bytes = platform::stringView(text.get());
    posix::printf("%.*s\n\n", static_cast<int>(bytes.size()), bytes.data());
}
