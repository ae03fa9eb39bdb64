// The plotter in software without its line: what it makes of the bytes that it hears, and when. It has a buffer, a pace, XON
// and XOFF, replies, and faults on demand, so that a host can be tried on what a real plotter does to it. It is handed the
// time instead of reading a clock: the same bytes at the same times always give the same result.
#pragma once

#include "language/plot_reader.h"
#include "virtual_plotter/face/limit_questions.h"
#include "virtual_plotter/face/replies.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace virtual_plotter {

enum class Fault : uint8_t {
    None,
    Hang,    ///< takes nothing any more
    HangUp,  ///< the line goes away
    Rubbish, ///< answers with random bytes, and says some unasked
    Xoff,    ///< holds the host and never lets it go on
};

struct PlotterOptions {
    std::optional<Language> language; ///< none: as the first bytes tell
    ReplyForm limits = ReplyForm::Commas;
    LimitTexts limitTexts; ///< that ask for the limits beside the language's own questions
    size_t bufferBytes = 1024;
    std::chrono::nanoseconds perByte{0}; ///< how long a byte of the buffer takes; 0: it is always empty, and holds nobody
    Fault fault = Fault::None;
    uint64_t faultAfter = 0; ///< bytes heard before it
};

/// Sets the options' language and questions for the limits as an emulation has them.
void setEmulation(PlotterOptions &options, int32_t emulation);

/// Hears bytes at times and says bytes. It has no clock: time is what the caller says, from any beginning, never backwards.
/// How the bytes of one moment are cut into calls makes no difference.
///
/// With a pace, the buffer fills from the line and empties by and by; the plotter then holds its host with XOFF while less
/// than a quarter of the buffer is free, and lets it go on with XON when three quarters are. Device-control questions
/// (ESC ".B") are answered when they are heard, all others when the buffer has come to them.
class VirtualPlotter {
public:
    using Time = std::chrono::nanoseconds;
    static constexpr char kXon = '\x11', kXoff = '\x13';

    VirtualPlotter(const PlotterOptions &options, PenSink &sink, const Rectangle &hardClip);
    VirtualPlotter(const VirtualPlotter &) = delete;
    VirtualPlotter &operator=(const VirtualPlotter &) = delete;

    /// How many bytes it takes at the moment; 0 when the buffer is full, or for good when it hangs or has hung up.
    size_t room() const;
    /// Takes the first of the bytes, room() of them at most; returns how many.
    size_t hear(std::string_view bytes, Time now);
    /// Carries out what the time allows.
    void advance(Time now);
    /// Carries out all that it has heard.
    void finish();

    /// What it has said since the last call.
    std::string takeSaid();
    bool isIdle() const { return buffer_.empty(); }
    bool isHanging() const { return reached(Fault::Hang); }
    bool hasHungUp() const { return reached(Fault::HangUp); }
    uint64_t heardBytes() const { return heard_; }
    const PlotReader &plot() const { return plot_; }

private:
    bool reached(Fault fault) const { return options_.fault == fault && heard_ >= options_.faultAfter; }
    bool isPaced() const { return options_.perByte.count() > 0; }
    void hearByte(char byte, Time now);
    void carryOut(size_t count);
    void answer(std::string_view request);
    void say(std::string_view text);
    void holdHost();

    PlotterOptions options_;
    PlotReader plot_;
    LimitQuestions questions_;
    std::deque<char> buffer_;
    std::string said_;
    std::string escape_; ///< the device-control sequence that is being heard
    Time nextAt_{0};     ///< when the buffer's first byte is carried out
    uint64_t heard_ = 0;
    bool holding_ = false;
    bool fresh_ = true;
    uint64_t unknown_ = 0, malformed_ = 0; ///< when the error was last asked for
    std::minstd_rand random_;
};

} // namespace virtual_plotter
