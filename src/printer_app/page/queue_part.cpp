#include "printer_app/page/parts.h"

#include "printer_app/page/html.h"

#include <algorithm>
#include <fmt/format.h>

namespace printer_app {
namespace {

constexpr size_t kShownPast = 3; ///< of the history; the others are folded away

bool isInTheWay(const FindingView &finding) { return finding.isInTheWay; }

bool isBlocked(const QueueView &queue) { return std::any_of(queue.findings.begin(), queue.findings.end(), isInTheWay); }

State stateOf(const QueueView &queue) {
    if (!queue.isThere) return {"bad", "Not connected"};
    if (isBlocked(queue)) return {"bad", "In trouble"};
    return queue.jobs.empty() ? State{"good", "Ready"} : stateOf(queue.jobs.front());
}

std::string findingPart(const FindingView &finding) {
    std::string remedy;
    if (!finding.command.empty()) remedy += fmt::format("<code>{}</code>\n", escaped(finding.command));
    if (!finding.then.empty()) remedy += fmt::format("<p class=\"soft\">{}</p>\n", escaped(finding.then));
    return fmt::format("<li class=\"{}\"><p>{}</p>\n{}</li>\n", finding.isInTheWay ? "bad" : "calm", escaped(finding.text),
                       remedy);
}

std::string findingsPart(const QueueView &queue) {
    std::string items;
    for (const FindingView &finding : queue.findings)
        if (isInTheWay(finding) == isBlocked(queue)) items += findingPart(finding);
    if (items.empty()) return items;
    return fmt::format("<div class=\"findings\" data-key=\"findings\"><h3>{}</h3>\n<ul>\n{}</ul></div>\n",
                       isBlocked(queue) ? "What stands in the way" : "Worth knowing", items);
}

std::string jobsPart(const QueueView &queue, const PageView &page) {
    std::string jobs;
    for (const JobView &job : queue.jobs)
        jobs += jobPart(job, queue.name, page.token);
    if (jobs.empty()) jobs = "<p class=\"empty\">Nothing to plot.</p>\n";
    return fmt::format("<div class=\"jobs\" data-key=\"jobs\"><h3 class=\"unseen\">Jobs</h3>\n{}</div>\n", jobs);
}

std::string historyPart(const QueueView &queue, const PageView &page) {
    if (queue.history.empty()) return "";
    std::string shown, folded;
    for (size_t i = 0; i < queue.history.size(); ++i)
        (i < kShownPast ? shown : folded) += pastJobPart(queue.history[i], queue.name, page.token);
    if (!folded.empty()) {
        folded = fmt::format("<details data-key=\"older\"><summary>{} more</summary>\n{}</details>\n",
                             queue.history.size() - kShownPast, folded);
    }
    return fmt::format("<div class=\"history\" data-key=\"history\"><h3>History</h3>\n{}{}</div>\n", shown, folded);
}

std::string addressPart(const QueueView &queue) {
    return fmt::format("<details class=\"address\" data-key=\"address\"><summary>Print from other programs</summary>\n"
                       "<p>Most systems find this printer by themselves. Where one asks for its "
                       "address:</p>\n<code>{}</code>\n</details>\n",
                       escaped(queue.uri));
}

} // namespace

std::string queuePart(const QueueView &queue, const PageView &page) {
    const std::string head = fmt::format("<div class=\"head\"><h2>{}</h2><span class=\"soft\">{}</span>{}</div>\n",
                                         named(queue.name), escaped(queue.device), stateMark(stateOf(queue)));
    const std::string side = fmt::format("<div class=\"side\" data-key=\"side\">\n{}{}</div>\n",
                                         uploadPart(queue, page.uploadLimit), addressPart(queue));
    return fmt::format(
        "<section class=\"queue\" data-key=\"queue-{0}\" data-queue=\"{0}\" data-session=\"{1}\" tabindex=\"-1\" "
        "aria-label=\"{0}\">\n{2}</section>\n",
        escaped(queue.name), escaped(page.token),
        head + findingsPart(queue) + jobsPart(queue, page) + side + historyPart(queue, page));
}

} // namespace printer_app
