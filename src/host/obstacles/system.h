// The state of the computer that the checks share: the user's groups, processes, udev rules. Each part is read when a check
// first asks for it, and once: the doctor judges all links by the same moment, and a print, which mostly finds its link
// free, reads next to nothing.
#pragma once

#include "host/obstacles/processes.h"
#include "host/obstacles/udev_rules.h"
#include "host/obstacles/user.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace host {

template <class Value> class Fact {
public:
    using Read = Value (*)(const std::filesystem::path &root);
    /// root must outlive the fact.
    Fact(const std::filesystem::path &root, Read read) : root_(root), read_(read) {}
    Fact &operator=(Value value) {
        value_ = std::move(value);
        return *this;
    }

    const Value &operator*() const {
        if (!value_) value_ = read_(root_);
        return *value_;
    }
    const Value *operator->() const { return &**this; }

private:
    const std::filesystem::path &root_;
    Read read_;
    mutable std::optional<Value> value_;
};

struct System {
    /// below: "/" for this system.
    explicit System(std::filesystem::path below = "/") : root(std::move(below)) {}
    System(const System &) = delete;
    System &operator=(const System &) = delete;

    const std::filesystem::path root; ///< of /proc, /sys, /etc and the rest
    Fact<User> user{root, [](const std::filesystem::path &) { return currentUser(); }};
    Fact<std::vector<Process>> processes{root, runningProcesses};
    Fact<std::vector<RulesFile>> rules{root, rulesFiles};
    Fact<bool> isContainer{root, hasContainerSign};

    std::filesystem::path below(const char *path) const { return root / path; }
    /// The first process of that name; nullptr for none.
    const Process *running(const std::string &name) const;

private:
    static bool hasContainerSign(const std::filesystem::path &root);
};

} // namespace host
