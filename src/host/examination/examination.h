// A look at the whole plot file before the first byte of it goes out: which bytes a print would not send, and why. The
// plug-in notices such bytes only while it sends, if at all, and half a drawing costs paper. The file is cut here by the
// plug-in's own rules, so that what is foretold is what happens.
#pragma once

#include "host/examination/file_kind.h"
#include "host/files/plot_file.h"

#include <string>
#include <string_view>

namespace host {

/// What decides how a plot file is cut and where it ends.
struct PlotRules {
    int32_t emulation = 0;
    std::string terminator;

    /// What the last piece of a plot file ends with.
    std::string endMark() const;
    /// True when the emulation says what ends a plot file, whatever the job's terminator.
    bool hasOwnEnd() const;
};

/// Why bytes that may draw are not sent.
enum class Flaw {
    None,
    Empty,        ///< there are none
    NoTerminator, ///< the job names none, and its emulation needs one
    NotASCII,     ///< a byte that is not ASCII: sending ends before the piece that holds it
    BehindNul,    ///< they stand behind a NUL, at which their piece ends
    BehindMark,   ///< they stand behind the last mark that can end the plot
    Blank         ///< all of it is padding
};

struct Examination {
    int64_t fileBytes = 0;
    int64_t pieces = 0;        ///< that are sent
    int64_t withheldBytes = 0; ///< of a print that nothing disturbs
    FileNature nature;         ///< a plot of the emulation's language, or what it is instead
    Flaw flaw = Flaw::None;
    int64_t offset = 0;            ///< in the file, of the first byte that the flaw is about
    int64_t flawBytes = 0;         ///< that are not sent because of it
    std::string excerpt;           ///< those bytes, or their beginning; any bytes
    int64_t innerPaddingBytes = 0; ///< not sent, but nothing is lost, for none of them draws: those behind NUL bytes
    int64_t endPaddingBytes = 0;   ///< the same, behind the last terminator
    std::string endPadding;        ///< what the latter are, where that can be told: "a PJL trailer"
    bool isFit() const { return flaw == Flaw::None && nature.isPlot(); }
};

/// Reads the file once, in constant memory. Throws Failure when it cannot be read.
Examination examine(const PlotFile &file, const PlotRules &rules);

/// Throws Failure (unfit), with offset and remedy, for a plot that would not be wholly sent.
void requireFitPlot(const Examination &examination, const PlotFile &file, const PlotRules &rules);

/// For a plot that was printed with --force: what was not sent, why, and the remedy. Not for Flaw::None.
std::string flawText(const Examination &examination, const PlotRules &rules);

/// True when nothing in the text draws: white space, control bytes, escape sequences, and a printer's job control behind
/// them. With hasQuestions, HP-GL's questions to the plotter ("OE") count as padding, too.
bool isPadding(std::string_view text, bool hasQuestions = false);

} // namespace host
