// What was found about one link: for the doctor, who tells all of it, and for a print, which ends at the first finding that
// is in the way. As both ask this one list, they cannot come to different ends.
#pragma once

#include "host/devices/holders.h"
#include "host/obstacles/obstacles.h"

#include <set>

namespace host {

struct LinkReport {
    std::string kind;          ///< for programs: "serial", "usb", "adapter", "computer"
    std::string link;          ///< as it was typed or found: a path, or a USB model and location; any bytes
    std::string hardware = {}; ///< safe to print; may be empty
    std::vector<Found> findings = {};
    std::vector<std::string> looked = {}; ///< what was looked at, and what it said; safe to print
    std::set<pid_t> holders = {};         ///< whom the findings name; 0 is one that is hidden

    void add(Obstacle obstacle, const Words &words = {}) { findings.push_back(found(obstacle, words)); }
    /// One finding for each process, whatever signs there are of it. words: beside {who} and {pid}.
    void addHolder(Obstacle obstacle, const Holder &holder, Words words);
    void saw(const std::string &what) { looked.push_back(what); }

    /// The severity of the gravest finding; Note when there is no finding.
    Severity severity() const;
    /// The first finding that is in the way; nullptr for none.
    const Found *inTheWay() const;
};

/// Throws Failure with what is in the way, if anything is.
void requireFree(const LinkReport &report);

} // namespace host
