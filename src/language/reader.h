// Readers of plotter languages: bytes in, pen strokes and findings out. Examination, preview and the plotter in software all
// read plots through this one interface, and know no language.
#pragma once

#include "language/language.h"
#include "language/pen_sink.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace language {

/// An instruction that the reader could not carry out. It is reported and skipped, and reading goes on behind it.
struct Oddity {
    enum Kind : uint8_t {
        Unknown,   ///< no instruction of that name, or bytes that are none at all
        Malformed, ///< known, but its parameters make no sense, or are too many or too few
    };
    static constexpr size_t kLongest = 24;
    Kind kind;
    uint64_t offset;  ///< of its first byte
    std::string text; ///< how it begins, at most kLongest bytes; a dot stands for a byte that does not print
};

/// What one pen did.
struct PenFindings {
    uint64_t strokes = 0; ///< how often it was put down
    double downMillimetres = 0;
    double seconds = 0; ///< while it was in the holder: see Carriage
};

/// What the bytes so far asked for and what came of it. Lengths and time are those of the pen on the sheet.
struct Findings {
    static constexpr size_t kMaxOddities = 20;

    uint64_t bytes = 0;
    uint64_t instructions = 0; ///< known ones, malformed or not
    uint64_t unknown = 0;
    uint64_t malformed = 0;
    std::vector<Oddity> oddities; ///< the first kMaxOddities of the unknown and malformed ones

    bool anyDemand = false;       ///< whether demand has a meaning
    Rectangle demand;             ///< bounds of all that was to be drawn, before any clipping
    bool outsideHardClip = false; ///< something was to be drawn outside the area that the pen can reach

    double downMillimetres = 0; ///< drawn; dashes without their gaps, a solid fill as strokes one pen width apart
    double upMillimetres = 0;   ///< straight from the end of each stroke to the next
    uint64_t strokes = 0;       ///< how often the pen was put down
    std::array<PenFindings, 256> byPen = {}; ///< by its number; those that drew nothing have no strokes
    double seconds = 0;                      ///< estimate: see Carriage

    uint64_t lostVertices = 0; ///< that the polygon buffer had no room for
    uint64_t refused = 0;      ///< fills, outlines and dashings given up as far too much work for so few bytes

    void note(Oddity::Kind kind, uint64_t offset, std::string_view text);
};

/// What a plotter answers its host's questions from. Positions are in plotter units.
struct PenStatus {
    Point at;
    Point atUser; ///< in user units, when they are in effect
    bool down = false;
    int pen = 0;
    Rectangle scalingPoints; ///< P1, P2
    Rectangle window;
    Rectangle hardClip;
};

/// The start of an instruction, where a plot can be cut in two.
struct Place {
    uint64_t offset = 0;    ///< of the instruction's first byte
    bool penUp = true;      ///< and no polygon is being defined: nothing is in the making
    bool carries = true;    ///< state() holds all that counts here; see there
    int pen = 0;            ///< in the holder
    uint64_t strokes = 0;   ///< put down so far
    double millimetres = 0; ///< drawn so far
};

/// What of a drawing the sink is given.
enum class Clipping : uint8_t {
    Reach, ///< what lies within the area that the pen can reach
    None,  ///< all of it: for what is placed elsewhere afterwards. Points lie within the range of coordinates (kLargest)
};

/// Reads one language. How the bytes are cut into calls makes no difference. Nothing in them is fatal; the memory stays
/// within some tens of megabytes (a full polygon buffer) and the time within a fixed amount per byte, whatever they hold.
class Reader {
public:
    Reader() = default;
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;
    virtual ~Reader() = default;

    virtual void take(std::string_view bytes) = 0;
    /// The bytes end here: carries out what was still waiting for its end.
    virtual void finish() = 0;
    virtual PenStatus status() const = 0;
    /// Between instructions: where the next one starts.
    virtual Place place() const = 0;
    /// The instructions that bring a plotter, just initialised and with the same sheet, to where this reader is: its
    /// settings, those without effect on a drawing too, and the pen where it was, up or down. Nothing is drawn, no question
    /// asked and no page advanced on the way. What the plot never set is not in it; it begins as the plot did, initializing
    /// if that did. Each instruction is ended, ASCII and short, unless the plot's own was not; a polygon buffer that HP-GL
    /// holds comes with all its vertices. To be asked where an instruction starts (onInstruction): of one
    /// that is half read, what has been carried out is in it, and the rest of its bytes could not be read behind it. A few
    /// things no instruction can restore: Place::carries is false there. In DM/PL, dashes begun and a pen that was put down
    /// without drawing; in HP-GL, where a carriage return leads when the direction of letters has changed since, the
    /// column for tabulators behind UC, and what of settings is beyond KeptSettings::kMost.
    virtual std::string state() const = 0;
    const Findings &findings() const noexcept { return findings_; }

    /// Called for what a plotter would answer, after everything before it has been carried out: an HP-GL instruction as its
    /// mnemonic ("OH"), a device-control escape as its bytes ("\x1b.B"), for DM/PL area, unit and question ("EH,ECN,ER").
    /// The text is valid during the call. The function must not call the reader's take or finish.
    std::function<void(std::string_view)> onRequest;

    /// Called where an instruction starts, when all before it has been carried out: place() and state() are those of its
    /// first byte. (Some more bytes may have been read: it takes two letters to tell.) The same restriction as above.
    std::function<void()> onInstruction;

protected:
    /// Tells of an instruction at the offset, which has not been carried out yet.
    void tellStart(uint64_t offset) {
        if (!onInstruction) return;
        starting_ = offset;
        onInstruction();
        starting_.reset();
    }
    bool starts() const noexcept { return starting_.has_value(); }
    uint64_t nextStart() const noexcept { return starting_.value_or(findings_.bytes); }

    Findings findings_;

private:
    std::optional<uint64_t> starting_; // while it is told of
};

/// The sink must live as long as the reader. hardClip is the area that the pen can reach, lower below upper; secondsPerByte
/// is how long the line takes for a byte, 0 when the pen alone sets the pace.
std::unique_ptr<Reader> makeReader(Language language, PenSink &sink, const Rectangle &hardClip,
                                   Clipping clipping = Clipping::Reach, double secondsPerByte = 0);

/// By the first bytes of a file or job: DM/PL begins with ";:" (blanks and line ends before it do not count).
Language guessLanguage(std::string_view firstBytes) noexcept;

} // namespace language
