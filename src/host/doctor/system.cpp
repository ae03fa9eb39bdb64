#include "host/doctor/system.h"

#include <algorithm>

namespace host {

namespace fs = std::filesystem;

const Process *System::running(const std::string &name) const {
    auto at = std::find_if(processes.begin(), processes.end(), [&](const Process &p) { return p.name == name; });
    return at == processes.end() ? nullptr : &*at;
}

System lookAt(const fs::path &root) {
    // Where container programs leave a sign inside.
    constexpr const char *kSigns[] = {".dockerenv", "run/.containerenv", "run/systemd/container"};
    System system;
    system.root = root;
    system.user = currentUser();
    system.processes = processes(root / "proc");
    system.rules = rulesFiles(root);
    system.queues = printQueues(root);
    system.isContainer = std::any_of(std::begin(kSigns), std::end(kSigns), [&](const char *sign) {
        std::error_code ignored;
        return fs::exists(root / sign, ignored);
    });
    return system;
}

} // namespace host
