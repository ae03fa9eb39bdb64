// Reads DM/PL, the language that is selected by ";:". It acts on each byte as it comes: a plot file may be larger than the
// memory, and on a line bytes come a few at a time.
#pragma once

#include "language/carriage.h"
#include "language/kept_settings.h"
#include "language/number_scanner.h"
#include "language/reader.h"

#include <array>

namespace language {

/// Instructions are letters, alone or with a second one, and numbers behind them; commas, blanks, semicolons and colons part
/// them. Numbers behind U (pen up), D (pen down), A (absolute), R (relative) and H (home) are points. "@" ends the job: what
/// follows, up to the next ";:", is not for this plotter. Labels (S) are read over.
class DmplReader final : public Reader {
public:
    DmplReader(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte);
    void take(std::string_view bytes) override;
    void finish() override;
    PenStatus status() const override;
    Place place() const override;
    std::string state() const override;

    struct Instruction;

private:
    enum class State : uint8_t {
        Open,       // a number or an instruction
        Second,     // letter of an instruction that has two
        UnitCode,   // behind EC
        Text,       // of a label
        Deselected, // up to ";:"
        Selecting,  // after its ";"
    };

    void step(unsigned char byte);
    void beginInstruction(unsigned char first, unsigned char second);
    void completeNumber();
    void endInstruction();
    void setUnit(unsigned char code);
    void keepSetting();
    void act();
    void go(Point to);
    void arc(Point centre, double sweep);
    Point placeOf(double x, double y) const noexcept;

    Carriage carriage_;
    State state_ = State::Open;
    const Instruction *instruction_ = nullptr;
    unsigned char letter_ = 0;
    NumberScanner number_;
    std::array<double, 3> numbers_{};
    size_t count_ = 0;
    bool broken_ = false;
    uint64_t offset_ = 0;
    std::array<char, 64> text_{};
    size_t textLength_ = 0;
    KeptSettings settings_;

    Point at_;     // in plotter units
    Point origin_; // of absolute points
    bool down_ = false;
    bool relative_ = false;
    double unit_; // in plotter units
    unsigned char unitCode_ = '1';
    char area_ = 'H'; // EH or EF
};

} // namespace language
