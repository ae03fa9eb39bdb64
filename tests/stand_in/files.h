// Files in memory, by path. Nothing is looked up on disk: a file reference made for a path that does not exist there
// (platform::internFSRef) leads here all the same.
#pragma once

#include "platform/files/file_manager.h"
#include "stand_in/fate.h"

#include <functional>
#include <map>
#include <string>

namespace stand_in {

class FileStore final : public platform::FileStore {
public:
    explicit FileStore(Fate &fate) : fate_(fate) {}

    std::map<std::string, std::string> files;
    std::function<OSErr(int64_t offset)> onRead; ///< noErr lets the read pass
    OSErr sizeResult = noErr;
    int openForks = 0;

    bool isOpen(const std::string &path) const;

    OSErr open(const std::string &path, ForkRefNum *fork) override;
    OSErr size(ForkRefNum fork, int64_t *bytes) override;
    OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) override;
    OSErr close(ForkRefNum fork) override;

private:
    Fate &fate_;
    std::map<ForkRefNum, std::string> open_;
};

} // namespace stand_in
