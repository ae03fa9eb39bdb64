// The table of emulations: all that differs from one plotter language, or dialect, to the next.
//
// An emulation is a number that the host gives. What it changes is spread over plug-in, command and the plotter in software:
// the cutting of plot files, texts that are sent ahead, the question for the hard-clip limits, the form of the answer. Here
// it stands together, one row each, so that a new one is a row, and so that they cannot disagree. A number without a row, in
// the range or not, is an emulation whose every member is what it is by default: plain HP-GL.
#pragma once

#include "emulations/cut.h"
#include "language/language.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace emulations {

inline constexpr int32_t kFirst = 17001, kLast = 17037; ///< the numbers that jobs may name
inline constexpr int32_t kHpgl = 17002, kDmpl = 17008;  ///< those that can be typed by name

/// A question for the hard-clip limits.
struct Request {
    const char *text;
    int32_t becomes = 0; ///< the emulation whose form the reply has; 0: it stays
};

/// The questions of an emulation by its variant. The first one is that of all variants which have none of their own.
using Requests = std::span<const Request>;

inline constexpr Request kHpglRequest[] = {{"IN;OH;"}};

/// How the four limits are written.
enum class ReplyForm : uint8_t {
    Commas,       ///< "0,0,10900,7650" CR
    CommasToEnd,  ///< the same; over USB the end of the reply ends the fourth, even when it is 0
    Blanks,       ///< "0 0 10900 7650 " CR
    BehindFields, ///< behind four other fields, each ended by a comma
    Pairs,        ///< "0,0" CR, and the upper corner likewise in a second reply
};

/// What a plotter wants to hear first over USB.
struct UsbStart {
    const char *text = ""; ///< empty: nothing
    int times = 1;
    bool isReset = false; ///< written straight to the pipe: a reset that was not taken is not tried again
};

struct Emulation {
    int32_t number = 0;
    const char *name = ""; ///< that can be typed for it
    /// Of its plot files; none: there is no reader of it.
    std::optional<language::Language> language = language::Language::Hpgl;

    CutRule cut = {};
    int64_t chunkSize = 64;       ///< bytes of the plot file that are looked at together: the most that a piece may hold
    bool showsEnd = false;        ///< the last piece of a plot is shown on the console
    bool hasTools = false;        ///< a job may hold strings that set the tools up
    const char *serialStart = ""; ///< what it wants to hear when the port is opened
    UsbStart usbStart = {};
    /// Lifts the pen and puts it away, also behind half an instruction; empty where no such text is known.
    std::string_view penAway = ";PU;SP0;";

    Requests requests = kHpglRequest; ///< over a serial line
    ReplyForm reply = ReplyForm::Commas;
    bool givesCorners = true;    ///< the limits are lower left and upper right corner, in units of 0.025 mm
    bool announcesReads = false; ///< a line on the console precedes each read over USB

    /// What the plotter in software reads it as; none: what the first bytes tell.
    std::optional<language::Language> playedAs = {};
    /// Texts that ask it for the limits beside its language's own questions.
    std::array<std::string_view, 2> questions = {};
};

/// The row of an emulation.
const Emulation &of(int64_t number) noexcept;

/// The emulation that can be typed by that name; nullptr when there is none.
const Emulation *named(std::string_view name) noexcept;

/// The questions over USB. There the maker is known, and decides first.
Requests usbRequests(uint16_t vendor, int32_t emulation) noexcept;

} // namespace emulations
