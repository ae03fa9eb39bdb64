#include "plot/job_file.h"

#include "emulations/emulations.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/files/file_manager.h"
#include "platform/posix/console.h"
#include "plot/open_fork.h"
#include "property_list/reader.h"
#include "record/state.h"
#include "record/status_text.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace {

enum class Kind {
    String,    ///< a copy of the string
    Int32,     ///< 4 bytes
    Byte,      ///< the low byte, into a 1-byte field
    ByteInt32, ///< the low byte, into a 4-byte field whose other bytes are 0
    Double     ///< 8 bytes, not aligned
};

/// One key of the job file and the field that it fills.
struct JobKey {
    const char *key;
    Kind kind;
    size_t offset;
    void (*converted)() = nullptr; ///< called when the value was converted without loss
};

void showUseTools() { posix::printf("\nkORB_USETOOLS (= ORB_UseTools) read : %d\n", answer().ORB_UseTools & 0xFF); }

void chooseChunkSize() { answer().ORB_PlotChunkSize = emulations::of(answer().ORB_PlotterEmulationID).chunkSize; }

#define FIELD(name) offsetof(ORB_ServiceRecord, name)
constexpr JobKey kJobKeys[] = {
    {"Project name :", Kind::String, FIELD(ORB_CFSTR_ProjectName)},
    {"Plotter name :", Kind::String, FIELD(ORB_CFSTR_PlotterName)},
    {"Plotfile terminator :", Kind::String, FIELD(ORB_CFSTR_PlotfileTerminator)},
    {"ORB_UseTools :", Kind::Int32, FIELD(ORB_UseTools), showUseTools},
    {"ORB_USB_PIPEOUT :", Kind::Byte, FIELD(ORB_USB_PIPEOUT)},
    {"ORB_USB_PIPEIN :", Kind::Byte, FIELD(ORB_USB_PIPEIN)},
    {"Plotter group ID :", Kind::ByteInt32, FIELD(ORB_PlotterGroupID)},
    {"Plotter Subgroup ID :", Kind::Int32, FIELD(ORB_PlotterSubgroupID)},
    {"Plotter ID :", Kind::Int32, FIELD(ORB_PlotterID)},
    {"Plotter emulation ID :", Kind::Int32, FIELD(ORB_PlotterEmulationID), chooseChunkSize},
    {"Copy of the tiles :", Kind::Double, FIELD(ORB_TileCopies)},
    {"Axis of the tiles :", Kind::Double, FIELD(ORB_TileAxis)},
    {"X Tile :", Kind::Double, FIELD(ORB_XTile)},
    {"Y Tile :", Kind::Double, FIELD(ORB_YTile)},
    {"From Tile :", Kind::Double, FIELD(ORB_FromTile)},
    {"To Tile :", Kind::Double, FIELD(ORB_ToTile)},
};
constexpr JobKey kToolKeys[] = {
    {"ORB_CFSTR_Tool1 :", Kind::String, FIELD(ORB_CFSTR_Tool1)}, {"ORB_CFSTR_Tool2 :", Kind::String, FIELD(ORB_CFSTR_Tool2)},
    {"ORB_CFSTR_Tool3 :", Kind::String, FIELD(ORB_CFSTR_Tool3)}, {"ORB_CFSTR_Tool4 :", Kind::String, FIELD(ORB_CFSTR_Tool4)},
    {"ORB_CFSTR_Tool5 :", Kind::String, FIELD(ORB_CFSTR_Tool5)}, {"ORB_CFSTR_Tool6 :", Kind::String, FIELD(ORB_CFSTR_Tool6)},
    {"ORB_CFSTR_Tool7 :", Kind::String, FIELD(ORB_CFSTR_Tool7)}, {"ORB_CFSTR_Tool8 :", Kind::String, FIELD(ORB_CFSTR_Tool8)},
};
#undef FIELD

/// Fills the key's field. A value of another type counts as absent. False when there is no memory for a string.
bool store(const JobKey &key, CFTypeRef value) {
    char *field = reinterpret_cast<char *>(&answer()) + key.offset;
    if (key.kind == Kind::String) {
        if (CFGetTypeID(value) != CFStringGetTypeID()) return true;
        const CFStringRef copy = CFStringCreateCopy(value);
        CFStringRef held;
        memcpy(&held, field, sizeof held);
        replaceString(held, copy);
        memcpy(field, &held, sizeof held);
        return copy != 0;
    }
    if (CFGetTypeID(value) != CFNumberGetTypeID()) return true;
    bool lossless = false;
    int32_t number = 0;
    uint8_t byte = 0;
    double real = 0;
    switch (key.kind) {
    case Kind::Int32:
        lossless = CFNumberGetValue(value, kCFNumberSInt32Type, &number);
        memcpy(field, &number, sizeof number);
        break;
    case Kind::Byte:
        lossless = CFNumberGetValue(value, kCFNumberCharType, &byte);
        memcpy(field, &byte, sizeof byte);
        break;
    case Kind::ByteInt32:
        lossless = CFNumberGetValue(value, kCFNumberCharType, &byte);
        number = byte;
        memcpy(field, &number, sizeof number);
        break;
    case Kind::Double:
        lossless = CFNumberGetValue(value, kCFNumberDoubleType, &real);
        memcpy(field, &real, sizeof real);
        break;
    case Kind::String: break;
    }
    if (lossless && key.converted) key.converted();
    return true;
}

/// False when a string could not be stored: a job without its terminator or a tool is another job.
template <size_t N> bool storeAll(const JobKey (&keys)[N], CFDictionaryRef job) {
    for (const JobKey &key : keys) {
        if (CFTypeRef value = CFDictionaryGetValue(job, key.key); value != 0 && !store(key, value)) return false;
    }
    return true;
}

/// What a job that says nothing means; stays in the record when the file cannot be read.
void presetJob() {
    ORB_ServiceRecord &record = answer();
    record.ORB_PlotFileRef = record.ORB_PlotFileInRef;
    record.ORB_PlotterGroupID = 0;
    record.ORB_PlotterSubgroupID = 0;
    record.ORB_PlotterID = 0;
    record.ORB_PlotterEmulationID = 0;
    memset(record.reservedZeroed, 0, sizeof record.reservedZeroed);
    record.ORB_TileCopies = 0.0;
    record.ORB_TileAxis = 0.0;
    record.ORB_XTile = 1.0;
    record.ORB_YTile = 1.0;
    record.ORB_FromTile = 1.0;
    record.ORB_ToTile = 1.0;
    chooseChunkSize();
}

int32_t unfit(int32_t result) {
    answer().ORB_errorID = kORB_ErrorJobFile;
    return result;
}

} // namespace

bool plot::jobHasTools() { return emulations::of(answer().ORB_PlotterEmulationID).hasTools && answer().ORB_UseTools == 1; }

extern "C" int32_t ORB_readJobFile() {
    ORB_FSRef jobFile = answer().ORB_JobFileRef;
    presetJob();

    OpenFork fork;
    if (OSErr result = fork.open(jobFile); result != noErr) {
        posix::eprintf("%s() returned %d\n", fork.failedCall(), result);
        return unfit(result);
    }
    if (fork.size() > property_list::kLargestFile) {
        posix::eprintf("the job file holds %lld bytes, more than the %lld that a job may have\n",
                       static_cast<long long>(fork.size()), static_cast<long long>(property_list::kLargestFile));
        return unfit(0);
    }
    auto size = static_cast<size_t>(fork.size());
    std::unique_ptr<char[]> bytes(platform::backends().objects->mayCreate() ? new (std::nothrow) char[size + 1] : nullptr);
    if (!bytes) {
        posix::eprintf("gORB_FoundationStruct.ORB_JobForkData() returned NULL while allocating memory for plist data\n");
        return unfit(0);
    }
    OSErr result = fork.read(0, size, bytes.get(), [](OSErr attempt) {
        posix::eprintf("FSReadFork() returned %d\n", attempt);
        answer().ORB_errorID = kORB_ErrorJobFile;
    });
    if (result != noErr) return unfit(result);
    answer().ORB_errorID = kORB_NoError;

    CFRef reason;
    CFRef job(CFPropertyListCreateFromXMLData(bytes.get(), size, reason.out()));
    if (reason || !job) {
        CFShowStr(reason.get());
        return unfit(0);
    }
    if (CFGetTypeID(job.get()) != CFDictionaryGetTypeID()) return unfit(0);

    if (!storeAll(kJobKeys, job.get())) return unfit(0);
    return !plot::jobHasTools() || storeAll(kToolKeys, job.get()) ? 0 : unfit(0);
}
