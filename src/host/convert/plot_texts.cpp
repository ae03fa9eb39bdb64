#include "host/convert/plot_texts.h"

#include "emulations/emulations.h"
#include "host/mending/stroke_hash.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"
#include "language/reader.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

using language::Language;

namespace {

/// Of an instruction that a plot begins with before it draws.
bool isHpglStart(std::string_view name) {
    constexpr std::string_view kStarts[] = {"IN", "DF", "BP"};
    auto isSame = [](char a, char b) { return (a & ~0x20) == b; };
    return std::ranges::any_of(kStarts, [&](std::string_view start) { return std::ranges::equal(name, start, isSame); });
}

/// Units, area and the like stand ahead of pens, moves, letters and arcs.
bool isDmplStart(std::string_view name) { return std::string_view("PUDSC@").find(name.front()) == std::string_view::npos; }

/// What may stand behind a plot that a plotter listens to no further.
constexpr std::string_view kHpglEnds[] = {"\x1B.)", "\x1B.Z"}, kDmplEnds[] = {"@"};

struct Frame {
    bool (*isStart)(std::string_view name);
    std::span<const std::string_view> ends;
};

Frame frameOf(Language language) {
    return language == Language::Dmpl ? Frame{isDmplStart, kDmplEnds} : Frame{isHpglStart, kHpglEnds};
}

/// Where the plot's own initialisation ends.
int64_t startOf(const PlotFile &plot, Language language, const Frame &frame) {
    language::NoPen noPen;
    const auto reader = language::makeReader(language, noPen, {{0, 0}, {16158, 11040}});
    std::optional<int64_t> start;
    std::string buffer(2, '\0');
    reader->onInstruction = [&] {
        const auto at = static_cast<int64_t>(reader->place().offset);
        if (!start && !frame.isStart(plot.read(at, buffer))) start = at;
    };
    plot.readBlocks([&](std::string_view block) {
        reader->take(block);
        return !start;
    });
    return start.value_or(plot.size());
}

struct End {
    int64_t offset;
    bool isEnded; ///< by the mark of an instruction
};

End endOf(const PlotFile &plot, const Frame &frame, std::string_view mark) {
    std::string buffer(4096, '\0');
    const int64_t tailStart = std::max<int64_t>(0, plot.size() - std::ssize(buffer));
    std::string_view tail = plot.read(tailStart, buffer);
    tail = tail.substr(0, tail.find_last_not_of(" \t\r\n") + 1);
    int64_t offset = plot.size();
    for (const std::string_view end : frame.ends) {
        if (!tail.ends_with(end)) continue;
        tail.remove_suffix(end.size());
        offset = tailStart + std::ssize(tail);
    }
    return {offset, tail.ends_with(mark)};
}

std::string markOf(const PlotRules &rules, Language language) {
    return std::string(rules.hasOwnEnd() || rules.terminator.empty() ? language::terminatorOf(language) : rules.terminator);
}

/// Throws Failure (usage).
Language languageOf(const PlotRules &rules) {
    if (const auto language = emulations::of(rules.emulation).language) return *language;
    throw Failure(ExitCode::Usage,
                  fmt::format("--emulation: {} is a language that cannot be followed; leave out --before and "
                              "--after",
                              rules.emulation));
}

} // namespace

PlotTexts ended(PlotTexts texts, const PlotRules &rules) {
    const std::string mark = markOf(rules, languageOf(rules));
    for (std::string *text : {&texts.before, &texts.after})
        if (!text->empty() && !text->ends_with(mark)) *text += mark;
    return texts;
}

PlotFile withTexts(const PlotFile &plot, const PlotTexts &texts, const PlotRules &rules) {
    const Language language = languageOf(rules);
    const Frame frame = frameOf(language);
    const std::string mark = markOf(rules, language);
    const End end = endOf(plot, frame, mark);
    const int64_t start = std::min(startOf(plot, language, frame), end.offset);
    KeptFile kept(plot.path());
    addBytes(kept, plot, 0, start);
    kept.add(texts.before);
    addBytes(kept, plot, start, end.offset);
    if (!end.isEnded && !texts.after.empty()) kept.add(mark);
    kept.add(texts.after);
    addBytes(kept, plot, end.offset, plot.size());
    PlotFile made(std::move(kept));
    if (drawnBy(made, language).strokes == drawnBy(plot, language).strokes) return made;
    throw Failure(ExitCode::Usage,
                  fmt::format("{}: with --before \"{}\" and --after \"{}\" something else would be drawn; give "
                              "texts for speed, force or paper alone",
                              shown(plot.path()), shown(texts.before), shown(texts.after)));
}

} // namespace host
