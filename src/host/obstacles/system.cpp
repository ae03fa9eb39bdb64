#include "host/obstacles/system.h"

#include <algorithm>

namespace host {

namespace fs = std::filesystem;

const Process *System::running(const std::string &name) const {
    auto at = std::find_if(processes->begin(), processes->end(), [&](const Process &p) { return p.name == name; });
    return at == processes->end() ? nullptr : &*at;
}

bool System::hasContainerSign(const fs::path &root) {
    // Where container programs leave a sign inside.
    constexpr const char *kSigns[] = {".dockerenv", "run/.containerenv", "run/systemd/container"};
    return std::any_of(std::begin(kSigns), std::end(kSigns), [&](const char *sign) {
        std::error_code ignored;
        return fs::exists(root / sign, ignored);
    });
}

} // namespace host
