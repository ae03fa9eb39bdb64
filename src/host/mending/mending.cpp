#include "host/mending/mending.h"

#include "emulations/emulations.h"
#include "host/mending/dmpl_mender.h"
#include "host/mending/hpgl_mender.h"
#include "host/mending/stroke_hash.h"
#include "host/mending/utf16.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>

namespace host {

using language::Language;

namespace {

constexpr std::string_view kTexts[kMendings] = {
    "byte order mark taken off",
    "printer wrapper taken off",
    "NUL bytes taken out",
    "line ends between instructions made \";\"",
    "ETX between instructions made \";\"",
    "8-bit polylines rewritten",
    "polylines ended with \";\"",
    "8-bit characters in comments made \"?\"",
    "question at the end taken off",
};

std::vector<std::string> textsOf(const Mendings &mendings, const PlotRules &rules) {
    std::vector<std::string> texts;
    for (size_t i = 0; i < kMendings; ++i) {
        if (!mendings[i]) continue;
        const bool isEnd = i == static_cast<size_t>(Mending::End);
        texts.push_back(isEnd ? fmt::format("ended with \"{}\"", shown(rules.endMark())) : std::string(kTexts[i]));
    }
    return texts;
}

/// HP-GL that begins in the language of a printer, or in that of its job control. A pen plotter knows neither.
bool isWrapped(const PlotFile &plot) {
    std::string buffer(4096, '\0');
    std::string_view head = plot.read(0, buffer);
    head.remove_prefix(std::min(head.find_first_not_of(" \t\r\n"), head.size()));
    return head.starts_with("@PJL") || (head.size() > 1 && head[0] == '\x1B' && head[1] != '.');
}

std::unique_ptr<Mender> menderOf(Language language, const Examination &found, const PlotRules &rules) {
    if (language == Language::Dmpl) return std::make_unique<DmplMender>();
    const bool ends = rules.endMark() == ";";
    return std::make_unique<HpglMender>(HpglMender::Wishes{.ends = ends, .parts = ends && found.flaw == Flaw::BehindMark});
}

/// Throws Unmendable.
Mended writtenAnew(const PlotFile &plot, Mender &mender, const PlotRules &rules) {
    KeptFile kept(plot.path());
    bool isMarked = false, isStart = true;
    plot.readBlocks([&](std::string_view block) {
        isMarked = isMarked || (isStart && block.starts_with(kUtf8Mark));
        mender.take(std::exchange(isStart, false) && isMarked ? block.substr(kUtf8Mark.size()) : block);
        kept.add(mender.written());
        return true;
    });
    mender.finish();
    kept.add(mender.written());
    Mendings mendings = mender.mendings();
    mendings.set(static_cast<size_t>(Mending::ByteOrderMark), isMarked);
    return {PlotFile(std::move(kept)), textsOf(mendings, rules)};
}

/// The last instruction, of which a part is there.
std::string lastWords(const PlotFile &plot) {
    std::string buffer(60, '\0');
    std::string_view tail = plot.read(std::max<int64_t>(0, plot.size() - std::ssize(buffer)), buffer);
    while (!tail.empty() && static_cast<unsigned char>(tail.back()) <= ' ')
        tail.remove_suffix(1);
    return shown(tail.substr(tail.find_last_of(";\n") + 1));
}

/// Throws Failure when there is a better reason to give than that of the examination.
void explain(const Unmendable &why, Examination found, const PlotFile &plot, const PlotRules &rules) {
    if (!found.nature.isPlot()) return;
    auto refuse = [&](const std::string &reason) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: {} with --force", shown(plot.path()), reason));
    };
    if (why.why == Unmendable::CutOff) {
        refuse(fmt::format("cut off: it ends in the middle of an instruction, \"{}\"; export it again, or print what can be "
                           "sent",
                           lastWords(plot)));
    }
    if (why.why == Unmendable::Printed) {
        refuse(
            fmt::format("what stands at offset {} is for a printer, and beside the plot: a plotter cannot draw it; export "
                        "it in HP-GL alone, or print it as it is",
                        why.offset));
    }
    if (found.flaw != Flaw::NotASCII || why.byte == 0) return;
    found.offset = static_cast<int64_t>(why.offset);
    found.excerpt = std::string(1, static_cast<char>(why.byte));
    requireFitPlot(found, plot, rules);
}

/// None where a plot that is not fit cannot be mended. Throws Failure.
std::optional<Mended> attempted(const PlotFile &plot, const Examination &found, Language language, const PlotRules &rules) {
    try {
        const std::unique_ptr<Mender> mender = menderOf(language, found, rules);
        Mended result = writtenAnew(plot, *mender, rules);
        const Drawn original = drawnBy(plot, language);
        const bool isEnded = mender->did(Mending::End);
        if (found.isFit() && !isEnded && !mender->did(Mending::Wrapper)) return {};
        if (isEnded && original.isCutOff) throw Unmendable{Unmendable::CutOff, 0};
        if (drawnBy(result.plot, language).strokes != original.strokes) return {};
        if (!examine(result.plot, rules).isFit()) return {};
        return result;
    } catch (const Unmendable &why) {
        explain(why, found, plot, rules);
        return {};
    }
}

/// True for a plot that may need mending although all of it would be sent: it is wrapped, or behind it is so much padding
/// that the sender's last chunk holds nothing else, where the plot's last mark is not looked for.
bool mayBeMendedYet(const Examination &found, const PlotFile &plot, int32_t emulation) {
    const emulations::Emulation &row = emulations::of(emulation);
    if (found.flaw != Flaw::None || row.language != Language::Hpgl) return false;
    return found.innerPaddingBytes + found.endPaddingBytes >= row.chunkSize || isWrapped(plot);
}

bool mayBeMended(const Examination &found, const PlotFile &plot, int32_t emulation) {
    constexpr Flaw kMendable[] = {Flaw::NotASCII, Flaw::BehindNul, Flaw::BehindMark};
    // A wrapper makes a short plot look like none: whether it is one, the mended plot shows.
    if (!found.nature.isPlot() && found.nature.kind != FileKind::Nonsense) return false;
    return std::ranges::find(kMendable, found.flaw) != std::end(kMendable) || mayBeMendedYet(found, plot, emulation);
}

/// Of a text in UTF-16, all of which is ASCII.
std::optional<Mended> mendedUtf16(const PlotFile &text, const PlotRules &rules) {
    std::optional<PlotFile> plot = asciiOf(text);
    if (!plot) return {};
    std::optional<Mended> further = mended(*plot, rules);
    Mended result = further ? std::move(*further) : Mended{std::move(*plot), {}};
    result.mendings.insert(result.mendings.begin(), "UTF-16 made ASCII");
    return result;
}

} // namespace

std::optional<Mended> mended(const PlotFile &plot, const PlotRules &rules) {
    const Examination found = examine(plot, rules);
    const std::optional<Language> language = emulations::of(rules.emulation).language;
    std::optional<Mended> result;
    if (found.nature.kind == FileKind::Utf16)
        result = mendedUtf16(plot, rules);
    else if (language && mayBeMended(found, plot, rules.emulation))
        result = attempted(plot, found, *language, rules);
    if (!result) requireFitPlot(found, plot, rules);
    return result;
}

} // namespace host
