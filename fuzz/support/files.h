// The job file and the plot file in memory.
#pragma once

#include "platform/files/file_manager.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace fuzz {

inline constexpr const char *kJobPath = "/job.plist";
inline constexpr const char *kPlotPath = "/plot.plt";

class Files final : public platform::FileStore {
public:
    std::string_view job, plot;
    int opened = 0;

    OSErr open(const std::string &path, ForkRefNum *fork) override {
        ++opened;
        *fork = path == kJobPath ? 1 : 2;
        return noErr;
    }
    OSErr size(ForkRefNum fork, int64_t *bytes) override {
        *bytes = static_cast<int64_t>(contents(fork).size());
        return noErr;
    }
    OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) override {
        const std::string_view bytes = contents(fork);
        const std::string_view part = bytes.substr(std::min(static_cast<size_t>(offset), bytes.size()), count);
        memcpy(buffer, part.data(), part.size());
        *actual = part.size();
        return part.size() == count ? noErr : eofErr;
    }
    OSErr close(ForkRefNum) override {
        --opened;
        return noErr;
    }

private:
    std::string_view contents(ForkRefNum fork) const { return fork == 1 ? job : plot; }
};

} // namespace fuzz
