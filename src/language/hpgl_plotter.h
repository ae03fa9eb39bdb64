// The plotter that HP-GL's instructions work on: pens, line types, fills, lettering, and where the pen is. Its members are
// open, because the instructions of all families read and set them, each in a file of its own.
#pragma once

#include "language/carriage.h"
#include "language/frame.h"
#include "language/kept_settings.h"
#include "language/number_scanner.h"
#include "language/polygon_buffer.h"

#include <array>
#include <optional>
#include <span>

namespace language::hpgl {

using Numbers = std::span<const double>;

struct Pens {
    static constexpr size_t kCount = 256;
    int selected = 1;      ///< a job that selects no pen draws with pen 1, as one whose holder was filled by hand
    bool chosen = false;   ///< the job has selected one
    bool relative = false; ///< widths are percent of the diagonal of P1 and P2, not millimetres
    std::array<double, kCount> widths{};
};

struct Lines {
    int type = 0; ///< 1 to 8 fixed, negative adaptive, as LT counts them
    enum : uint8_t { Solid, Ends, Dashes } kind = Solid;
    double length = 4; ///< of a pattern
    bool millimetres = false;
    struct Pattern {
        std::array<double, LineType::kMaxParts> parts{};
        size_t count = 0; ///< 0: the standard one
    };
    std::array<Pattern, 9> patterns; ///< by UL; 1 to 8
};

struct Filling {
    int type = 1;       ///< 1, 2 solid, 3 hatched, 4 cross-hatched, 10 shaded
    double spacing = 0; ///< in user units along x, or percent of shading; 0: 1 percent of the diagonal of P1 and P2
    double angle = 0;
};

struct Lettering {
    static constexpr unsigned char kEtx = 3;
    unsigned char terminator = kEtx;
    bool printsTerminator = false;
    bool relativeSize = false;      ///< percent of the distance between P1 and P2 on either axis, not plotter units
    double width = 0, height = 0;   ///< of a capital
    bool relativeDirection = false; ///< of percents, like the size
    Point direction{1, 0};          ///< run, rise
    double slant = 0;               ///< tangent
    Point extra;                    ///< space between characters and lines, in cells
    int origin = 1;
    unsigned char symbol = 0; ///< drawn at each point that the pen is sent to; 0: none

    std::array<unsigned char, 256> line; ///< characters kept until their width is known, for the origins that need it
    size_t length = 0;
    Point lineStart; ///< where a carriage return leads to
    double column = 0;
};

/// A character that the plot itself makes, being drawn.
struct OwnCharacter {
    Point at;
    bool down = false;
    bool any = false;        ///< numbers were given
    std::optional<double> x; ///< of the step whose y is to come
};

/// An encoded polyline being read.
struct Polyline {
    uint64_t bits = 0;
    unsigned shift = 0;
    bool sevenBit = false, absolute = false, up = false;
    enum : uint8_t { Coordinate, Pen, Fraction } next = Coordinate;
    int fractionBits = 0;
    std::optional<double> x;
};

struct Plotter {
    Plotter(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte, Findings &found);

    Findings &findings;
    Carriage carriage;
    Frame frame;
    PolygonBuffer polygon;
    std::vector<Point> onSheet; ///< the polygon while it is being filled, kept for its memory
    bool defining = false;      ///< between PM0 and PM2: moves go into the polygon buffer
    bool defines = false;       ///< the job knows PM

    Point at; ///< in plotter units; so are all points here
    bool down = false;
    bool relative = false;
    std::optional<Rectangle> window;
    Pens pens;
    Lines lines;
    Filling filling;
    Lettering lettering;
    OwnCharacter ownCharacter;
    Polyline polyline;
    double tickUp = 0.5, tickDown = 0.5; ///< percent
    bool chordsByDeviation = false;
    bool initialized = false; ///< by the job
    KeptSettings settings;    ///< that the job has made since, but for those which the members above tell as well

    /// Goes to a place in plotter units with the pen as it is: a line, a move, or a vertex of a polygon.
    void go(Point to);
    /// The same for a place in user units or, in relative mode, a step in them.
    void goUser(Point to) { go(placeOf(to, relative)); }
    Point placeOf(Point user, bool asStep) const noexcept;
    void lower();
    void lift();
    /// Takes the pen, lifted, back to where the instructions have it, after something was drawn on the side.
    void resume() { carriage.moveTo(frame.toSheet(at)); }

    /// Hand settings on to the carriage; to be called after they, or P1 and P2, have changed.
    void applyPen();
    void applyLineType();
    void applyWindow();
};

// What the reader does beside calling instructions.
void initialize(Plotter &plotter);
/// Reader::state() and Place::carries, for what the plotter knows.
void appendState(const Plotter &plotter, std::string &text);
bool stateCarriesAll(const Plotter &plotter);
/// How many columns the pen has come from where a carriage return leads; none when it is not on that line.
std::optional<double> columnsWritten(const Plotter &plotter);
void label(Plotter &plotter, unsigned char character);
void endLabel(Plotter &plotter);
void beginOwnCharacter(Plotter &plotter);
void ownCharacterNumber(Plotter &plotter, double number);
/// False when it ends in the middle of a step.
bool endOwnCharacter(Plotter &plotter);
void drawSymbol(Plotter &plotter);
void beginPolyline(Plotter &plotter);
/// False for a byte that has no place in a polyline.
bool polylineByte(Plotter &plotter, unsigned char byte);
/// False when it ends in the middle of a point.
bool endPolyline(Plotter &plotter);

/// The angle of an arc's chords in degrees. chord is what the instruction says: 0 for the default, otherwise degrees or,
/// with chordsByDeviation, how far a chord may lie beside an arc of that radius.
double chordAngle(const Plotter &plotter, double chord, double radius) noexcept;

} // namespace language::hpgl
