// Bytes that are read more than once and are in no file that the user has: what came through a pipe, or was made out of a
// plot. They may be more than the memory holds. Their file has no name, so that nothing is left behind however the process
// ends.
#pragma once

#include "host/files/unique_fd.h"

#include <string>
#include <string_view>

namespace host {

/// An empty file below $TMPDIR or /tmp, to be filled.
class KeptFile {
public:
    /// name is what messages call the bytes. Throws Failure.
    explicit KeptFile(std::string name);

    /// Throws Failure, when there is no room for instance.
    void add(std::string_view bytes);

    const std::string &name() const { return name_; }
    /// The file, for reading anywhere in it. To be called once.
    UniqueFd take() { return std::move(fd_); }

private:
    std::string name_, folder_;
    UniqueFd fd_;
};

} // namespace host
