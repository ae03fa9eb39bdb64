#include "host/obstacles/link_report.h"

#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

void LinkReport::addHolder(Obstacle obstacle, const Holder &holder, Words words) {
    if (!holders.insert(holder.pid).second) return;
    words.emplace_back("who", holderText(holder));
    words.emplace_back("pid", fmt::format("{}", holder.pid));
    add(obstacle, words);
}

Severity LinkReport::severity() const {
    Severity gravest = Severity::Note;
    for (const Found &found : findings)
        gravest = std::max(gravest, found.severity);
    return gravest;
}

const Found *LinkReport::inTheWay() const {
    auto at = std::find_if(findings.begin(), findings.end(), [](const Found &f) { return f.severity == Severity::Blocks; });
    return at == findings.end() ? nullptr : &*at;
}

void requireFree(const LinkReport &report) {
    if (const Found *found = report.inTheWay()) throw Failure(found->code, shown(report.link) + ": " + found->line);
}

} // namespace host
