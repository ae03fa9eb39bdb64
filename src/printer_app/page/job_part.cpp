#include "printer_app/page/parts.h"

#include "host/terminal/text.h"
#include "printer_app/page/html.h"

#include <algorithm>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <iterator>

namespace printer_app {
namespace {

using namespace fmt::literals;
using Phase = JobView::Phase;

constexpr struct ActionRow {
    Action action;
    std::string_view name, label;
} kActions[] = {
    {Action::PaperIsIn, "paper-is-in", "Paper is in"},
    {Action::GoOn, "go-on", "Go on"},
    {Action::Pause, "pause", "Pause"},
    {Action::PauseAtOnce, "pause-at-once", "Pause at once"},
    {Action::Stop, "stop", "Stop"},
    {Action::PlotAgain, "plot-again", "Plot again"},
    {Action::FromHere, "from-here", "Plot on from here"},
};

constexpr struct PhaseRow {
    Phase phase;
    State state;
    bool wantsSomebody; ///< the first action is what is waited for
    bool isNews;        ///< said aloud when it begins
} kPhases[] = {
    {Phase::Preparing, {"calm", "Getting ready"}, false, false},
    {Phase::Queued, {"calm", "In the queue"}, false, false},
    {Phase::Waiting, {"wanting", "Waits for you"}, true, true},
    {Phase::Plotting, {"busy", "Plotting"}, false, false},
    {Phase::Paused, {"wanting", "Paused"}, true, false},
    {Phase::Troubled, {"bad", "In trouble"}, true, true},
    {Phase::Done, {"good", "Done"}, false, true},
    {Phase::Stopped, {"calm", "Stopped"}, false, true},
    {Phase::Failed, {"bad", "Failed"}, false, true},
    {Phase::Stopping, {"busy", "Stopping"}, false, false},
};

const PhaseRow &rowOf(Phase phase) {
    return *std::find_if(std::begin(kPhases), std::end(kPhases), [&](const PhaseRow &row) { return row.phase == phase; });
}

const ActionRow &rowOf(Action action) {
    return *std::find_if(std::begin(kActions), std::end(kActions),
                         [&](const ActionRow &row) { return row.action == action; });
}

std::string paragraph(std::string_view style, std::string_view html) {
    return html.empty() ? "" : fmt::format("<p class=\"{}\">{}</p>\n", style, html);
}

std::string timeOf(time_t moment) {
    std::tm here{}, there{};
    localtime_r(&moment, &here);
    gmtime_r(&moment, &there);
    return fmt::format("<time datetime=\"{:%Y-%m-%dT%H:%M:%SZ}\">{} {:%b, %H:%M}</time>", there, here.tm_mday, here);
}

std::string sizeOf(const Figures &figures) { return fmt::format("{:.0f} × {:.0f} mm", figures.width, figures.height); }

std::string sheetOf(const Figures &figures) { return escaped(sheetName(figures.sheet)); }

std::string picture(const JobView &job, std::string_view queue) {
    if (!job.hasPicture) {
        return fmt::format("<p class=\"picture none\" data-key=\"none\">{}</p>\n",
                           job.phase == Phase::Preparing ? "The picture is being made" : "No picture");
    }
    return fmt::format(
        "<a class=\"picture\" data-key=\"picture\" href=\"/picture?queue={queue}&amp;job={job}\" target=\"_blank\">"
        "<img src=\"/picture?queue={queue}&amp;job={job}\" alt=\"Picture of {name}\" loading=\"lazy\"></a>\n",
        "queue"_a = inAddress(queue), "job"_a = job.id, "name"_a = escaped(job.name));
}

std::string term(std::string_view what, std::string_view html) {
    return html.empty() ? "" : fmt::format("<div><dt>{}</dt><dd>{}</dd></div>\n", what, html);
}

std::string sender(const JobView &job) { return timeOf(job.created) + (job.user.empty() ? "" : " by " + named(job.user)); }

std::string figuresList(const JobView &job) {
    std::string terms;
    if (const auto &figures = job.figures) {
        terms += term("Drawing", sizeOf(*figures));
        terms += term("Sheet", sheetOf(*figures));
        terms += term("Takes about", host::duration(figures->seconds));
    }
    return fmt::format("<dl>\n{}{}</dl>\n", terms, term("Sent", sender(job)));
}

/// A colour for the eye, and its name for those who read.
std::string swatch(const std::string &colour) {
    if (colour.empty()) return "";
    return fmt::format("<svg class=\"swatch\" role=\"img\" viewBox=\"0 0 1 1\"><title>{0}</title>"
                       "<rect width=\"1\" height=\"1\" fill=\"{0}\"/></svg>",
                       colour);
}

std::string pens(const Figures &figures) {
    std::string items;
    for (const PenFigures &pen : figures.pens)
        items += fmt::format("<li>{}<b>Pen {}</b> {}</li>\n", swatch(pen.colour), pen.number, host::metres(pen.millimetres));
    return items.empty() ? "" : "<ul class=\"pens\" aria-label=\"Pens\">\n" + items + "</ul>\n";
}

std::string notes(const JobView &job) { return paragraph("soft", escaped(fmt::format("{}", fmt::join(job.notes, "; ")))); }

std::string progress(const JobView &job) {
    if (job.totalBytes <= 0) return "";
    const int64_t percent = std::clamp<int64_t>(job.bytes, 0, job.totalBytes) * 100 / job.totalBytes;
    std::string said = fmt::format("{} %", percent);
    if (job.secondsLeft) said += fmt::format(", {} left", host::duration(*job.secondsLeft));
    if (job.sheets > 1) said += fmt::format(", sheet {} of {}", job.sheet, job.sheets);
    return fmt::format(
        "<div class=\"progress\" data-key=\"progress\"><progress max=\"100\" value=\"{}\" aria-label=\"Plotted of {}\">"
        "</progress><span>{}</span></div>\n",
        percent, escaped(job.name), said);
}

/// The name of the job is for those who hear the button alone.
std::string button(const ActionRow &row, std::string_view style, const JobView &job) {
    return fmt::format("<button class=\"{0}\" data-key=\"{1}\" name=\"action\" value=\"{1}\">{2}"
                       "<span class=\"unseen\"> {3}</span></button>\n",
                       style, row.name, row.label, escaped(job.name));
}

bool hasBegun(const JobView &job) { return job.bytes > 0 || job.sheet > 1 || job.phase == Phase::Plotting; }

/// In two steps, for it cannot be taken back. Where nothing is drawn yet, "stop" would say that something is.
std::string stopSteps(ActionRow row, const JobView &job) {
    std::string_view what = "The plot ends here; what is not drawn by now is left out.";
    if (!hasBegun(job)) {
        row.label = "Remove";
        what = "It leaves the queue, and nothing of it is plotted.";
    }
    return fmt::format("<details class=\"stop\" data-key=\"stop\"><summary>{}…<span class=\"unseen\"> {}</span></summary>\n"
                       "<p>{}</p>\n{}</details>\n",
                       row.label, escaped(job.name), what, button(row, "danger", job));
}

std::string buttons(const JobView &job, std::string_view queue, std::string_view token) {
    if (job.actions.empty()) return "";
    std::string made;
    for (const Action &action : job.actions) {
        const bool isWanted = &action == &job.actions.front() && rowOf(job.phase).wantsSomebody;
        const ActionRow &row = rowOf(action);
        made += action == Action::Stop ? stopSteps(row, job) : button(row, isWanted ? "wanted" : "plain", job);
    }
    return fmt::format(
        "<form method=\"post\" action=\"/do\" data-key=\"do\"><input type=\"hidden\" name=\"session\" value=\"{}\">"
        "<input type=\"hidden\" name=\"queue\" value=\"{}\"><input type=\"hidden\" name=\"job\" value=\"{}\">\n{}</form>\n",
        escaped(token), escaped(queue), job.id, made);
}

std::string news(const JobView &job) {
    const PhaseRow &row = rowOf(job.phase);
    return row.isNews ? escaped(fmt::format("{}: {}. {}", job.name, row.state.words, job.message)) : "";
}

/// kind: "job" or "past".
std::string article(std::string_view kind, const JobView &job, std::string_view queue, std::string_view facts) {
    return fmt::format(
        "<article class=\"{kind}\" data-key=\"{kind}-{id}\" data-news=\"{news}\" tabindex=\"-1\" aria-label=\"{label}\">\n"
        "{picture}<div class=\"facts\">\n<div class=\"title\"><h4>{name}</h4>{state}</div>\n{facts}</div>\n</article>\n",
        "kind"_a = kind, "id"_a = job.id, "news"_a = news(job), "label"_a = escaped(job.name),
        "picture"_a = picture(job, queue), "name"_a = named(job.name), "state"_a = stateMark(stateOf(job)),
        "facts"_a = facts);
}

} // namespace

std::optional<Action> actionNamed(std::string_view name) {
    for (const ActionRow &row : kActions)
        if (row.name == name) return row.action;
    return {};
}

State stateOf(const JobView &job) { return rowOf(job.phase).state; }

std::string stateMark(const State &state) {
    return fmt::format("<span class=\"state {}\">{}</span>", state.tone, state.words);
}

std::string jobPart(const JobView &job, std::string_view queue, std::string_view token) {
    return article("job", job, queue,
                   paragraph("message", escaped(job.message)) + progress(job) + buttons(job, queue, token) +
                       figuresList(job) + (job.figures ? pens(*job.figures) : "") + notes(job));
}

std::string pastJobPart(const JobView &job, std::string_view queue, std::string_view token) {
    std::string facts = timeOf(job.ended ? job.ended : job.created);
    if (!job.user.empty()) facts += ", sent by " + named(job.user);
    if (job.figures) facts += ", " + sizeOf(*job.figures);
    return article("past", job, queue,
                   paragraph("message", escaped(job.message)) + paragraph("soft", facts) + notes(job) +
                       buttons(job, queue, token));
}

} // namespace printer_app
