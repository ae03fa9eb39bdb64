#include "printer_app/plotting/command_words.h"

#include "printer_app/children/child.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>

namespace printer_app {

using nlohmann::json;

namespace {

constexpr auto kLongest = std::chrono::minutes(5); // a conversion; the command has limits of its own, which come first
constexpr double kReach = 0.05;                    // mm beyond what the pen reaches, of rounding to plotter units
constexpr const char *kPictureDpi = "60";          // an A3 sheet as wide as a screen

bool isDrawing(const JobRecord &job) { return job.format == "application/pdf" || job.format == "image/svg+xml"; }

const Media &mediaOf(const QueueConfig &queue, const JobRecord &job) {
    const auto found = std::ranges::find(queue.media, job.options.media, &Media::name);
    return found == queue.media.end() ? queue.media.front() : *found;
}

std::string areaText(const Area &a) { return fmt::format("{:g},{:g},{:g},{:g}", a.left, a.lower, a.right, a.upper); }

/// Where the sheet lies when its lower left corner is where the usual one's is; with or without the margins along its edges.
/// Without limits of the plotter's own the sheet's name says both.
Words sheetWords(const QueueConfig &queue, const Media &media, bool wholePaper) {
    if (!queue.area) return {"--sheet", media.sheet};
    const double x = queue.area->left - queue.alongX, y = queue.area->lower - queue.alongY;
    Area paper{x, y, x + media.width, y + media.height};
    if (!wholePaper) paper = {x + queue.alongX, y + queue.alongY, paper.right - queue.alongX, paper.upper - queue.alongY};
    return {"--area", areaText(paper)};
}

void append(Words &words, const Words &more) { words.insert(words.end(), more.begin(), more.end()); }

Words previewWords(const std::string &command, const QueueConfig &queue, const JobRecord &job, const Words &placed) {
    Words words{command, "preview", job.file, "--json", "-p", queue.name};
    append(words, placed);
    if (isDrawing(job) && job.options.firstPage > 1) append(words, {"--page", std::to_string(job.options.firstPage)});
    return words;
}

/// The command's report; a refusal has an exit code other than 0 and a message.
json reportOf(const Words &words) {
    const Ended ended = runToEnd(words, kLongest);
    if (ended.code < 0) return {{"exitCode", 1}, {"message", "it takes too long to read"}};
    json report = json::parse(ended.output, nullptr, false);
    if (report.is_discarded() || !report.contains("exitCode"))
        return {{"exitCode", 1}, {"message", fmt::format("vectorix ended with {}: {}", ended.code, ended.diagnostics)}};
    return report;
}

std::string refusalIn(const json &report, const JobRecord &job) {
    if (report.at("exitCode") == 0) return "";
    std::string message = forPeople(report.value("message", ""));
    // The command names the file in the spool, of which nobody knows.
    for (size_t at; (at = message.find(job.file)) != std::string::npos;)
        message.replace(at, job.file.size(), job.name);
    return message.empty() ? "vectorix cannot read it" : message;
}

/// Whether some of it lies where the pen does not reach: the box is given from the corner of what sheetWords() named.
bool leavesReach(const json &report, const QueueConfig &queue, const Media &media) {
    if (!queue.area) return report.value("leavesSheet", false);
    const auto box = report.at("box").get<std::vector<double>>();
    return box.size() == 4 &&
           (box[0] < queue.alongX - kReach || box[1] < queue.alongY - kReach ||
            box[2] > media.width - queue.alongX + kReach || box[3] > media.height - queue.alongY + kReach);
}

int degreesIn(const json &report) {
    const auto converted = report.find("converted");
    return converted != report.end() && converted->is_object() ? converted->value("degrees", 0) : 0;
}

Figures figuresIn(const json &report) {
    Figures figures;
    const json converted = report.value("converted", json());
    const json colours = converted.is_object() ? converted.value("colours", json::object()) : json::object();
    if (const auto box = report.find("box"); box != report.end() && box->is_array() && box->size() == 4) {
        figures.width = box->at(2).get<double>() - box->at(0).get<double>();
        figures.height = box->at(3).get<double>() - box->at(1).get<double>();
    }
    figures.seconds = report.value("seconds", 0.0);
    for (const json &pen : report.value("byPen", json::array()))
        figures.pens.push_back(
            {pen.at("number"), pen.at("strokes"), pen.at("downMillimetres"), colours.value(pen.at("number").dump(), "")});
    return figures;
}

/// Turned as it was asked for, beside what fits the sheet better.
Words turned(Words words, int degrees) {
    if (degrees % 360) append(words, {"--rotate", std::to_string(degrees % 360)});
    return words;
}

double scaleIn(const json &report) {
    const auto converted = report.find("converted");
    return converted != report.end() && converted->is_object() ? converted->value("scale", 1.0) : 1.0;
}

/// How a drawing lies: as large as it is, where the pen reaches all of it; else fitted, but never larger.
Words placeDrawing(const std::string &command, const QueueConfig &queue, const JobRecord &job, std::string &refusal,
                   Words &notes) {
    const Media &media = mediaOf(queue, job);
    const auto tryOut = [&](const Words &placed) { return reportOf(previewWords(command, queue, job, placed)); };
    const auto with = [](Words words, const Words &more) {
        append(words, more);
        return words;
    };
    const Words whole = sheetWords(queue, media, true), reach = sheetWords(queue, media, false),
                automatic{"--rotate", "auto"};
    const Words fitted = with(reach, {"--fit"});
    const bool isFitted = job.options.scaling == Scaling::Fit;
    json report = tryOut(with(isFitted ? fitted : whole, automatic));
    refusal = refusalIn(report, job);
    if (!refusal.empty()) return {};
    const int degrees = degreesIn(report);
    if (isFitted) return turned(fitted, degrees + job.options.turn);
    if (job.options.turn % 180 == 0) {
        if (!leavesReach(report, queue, media)) return turned(whole, degrees + job.options.turn);
        // What turned by itself is what is drawn; its page may stand where the sheet lies.
        const int beside = 90 - degrees;
        if (!leavesReach(tryOut(turned(whole, beside)), queue, media)) return turned(whole, beside + job.options.turn);
    }
    if (job.options.scaling == Scaling::None) {
        notes.emplace_back("the pen does not reach all of it");
        return turned(whole, degrees + job.options.turn);
    }
    report = tryOut(with(fitted, automatic));
    return turned(scaleIn(report) > 1 ? with(reach, {"--center"}) : fitted, degreesIn(report) + job.options.turn);
}

/// A plot file is sent as it is, unless something else was asked for.
Words placePlot(const QueueConfig &queue, const JobRecord &job) {
    Words words;
    if (job.options.scalingIsTyped && job.options.scaling == Scaling::Fit) {
        words = sheetWords(queue, mediaOf(queue, job), false);
        words.emplace_back("--fit");
    }
    return turned(words, job.options.turn);
}

/// What a print of a job's pages would do. A client may name a last page beyond the document's own.
json dryRunOf(const std::string &command, const QueueConfig &queue, const JobRecord &job, const Words &placed) {
    Words words{command,     "print", job.file,   "--json",       "--dry-run", "--capture",
                "/dev/null", "-p",    queue.name, "--pen-change", "skip",      "--no-prompt"};
    append(words, placed);
    const int first = job.options.firstPage, last = job.options.lastPage;
    const auto upTo = [&](const std::string &end) {
        Words all = words;
        if (isDrawing(job)) append(all, {"--page", fmt::format("{}-{}", first, end)});
        return reportOf(all);
    };
    json report = last > 0 ? upTo(std::to_string(std::max(first, last))) : json();
    return report.is_null() || report.at("exitCode") != 0 ? upTo("") : report;
}

std::vector<json> sheetsOf(const json &dryRun) {
    const auto several = dryRun.find("sheets");
    return several == dryRun.end() ? std::vector{dryRun} : several->get<std::vector<json>>();
}

/// What is said of any sheet, once.
Words notesOf(const std::vector<json> &sheets) {
    Words notes;
    for (const json &sheet : sheets)
        for (const json &note : sheet.at("notes"))
            if (std::string text = forPeople(note.get<std::string>()); std::ranges::find(notes, text) == notes.end())
                notes.push_back(std::move(text));
    return notes;
}

/// 0 for what has no pages.
int pageOf(const json &sheet) { return sheet.at("page").is_number() ? sheet.at("page").get<int>() : 0; }

/// The pens of all sheets, which are plotted one by one: "#000000=1,#ff0000=2"; empty for a plot file.
std::string pensOf(const std::vector<json> &sheets) {
    std::map<std::string, std::string> colours; // by pen
    for (const json &sheet : sheets)
        if (const json &converted = sheet.at("converted"); converted.is_object())
            for (const auto &[pen, colour] : converted.at("colours").items())
                colours.emplace(pen, colour);
    std::string rules;
    for (const auto &[pen, colour] : colours)
        rules += fmt::format("{}{}={}", rules.empty() ? "" : ",", colour, pen);
    return rules;
}

} // namespace

Examination examine(const std::string &command, const QueueConfig &queue, const JobRecord &job, const std::string &picture) {
    Examination result;
    result.words = isDrawing(job) ? placeDrawing(command, queue, job, result.refusal, result.notes) : placePlot(queue, job);
    if (!result.refusal.empty()) return result;

    const json plan = dryRunOf(command, queue, job, result.words);
    result.refusal = refusalIn(plan, job);
    if (!result.refusal.empty()) return result;
    const std::vector<json> sheets = sheetsOf(plan);
    append(result.notes, notesOf(sheets));
    std::ranges::transform(sheets, std::back_inserter(result.pages), pageOf);
    if (const std::string pens = pensOf(sheets); !pens.empty()) append(result.words, {"--pens", pens});

    Words words = previewWords(command, queue, job, result.words);
    append(words, {"-o", picture, "--dpi", kPictureDpi});
    const json report = reportOf(words);
    result.hasPicture = report.at("exitCode") == 0;
    if (result.hasPicture) {
        result.figures = figuresIn(report);
        result.figures->sheet = isDrawing(job) ? mediaOf(queue, job).sheet : "";
    }
    return result;
}

Words printWords(const std::string &command, const JobRecord &job, int page, int64_t place, const std::string &socket) {
    Words words{command, "print", job.file, "-p", job.queue, "--progress", "json:3", "--control", socket, "--no-prompt"};
    append(words, job.words);
    if (page > 0) append(words, {"--page", std::to_string(page)});
    if (place > 0) append(words, {"--from", std::to_string(place)});
    return words;
}

} // namespace printer_app
