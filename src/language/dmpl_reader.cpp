#include "language/dmpl_reader.h"

#include "language/chords.h"

#include <algorithm>
#include <cmath>

namespace language {

/// A row of the table: an instruction of one or two letters, and what it does.
struct DmplReader::Instruction {
    enum Action : uint8_t {
        ignore, ///< with any numbers behind it
        up,
        down,
        absolute,
        relative,
        home,
        origin,
        pen,
        speed,
        line,
        arcAbout,    ///< centre and sweep
        circleAbout, ///< centre
        unit,
        area,
        report,
        label,
        end,
    };
    char name[2]; // the second is 0 for none
    Action action;
    uint8_t numbers; ///< that it takes at a time, and again for each further lot; 0: acts at once, and skips any numbers
};

namespace {

using Instruction = DmplReader::Instruction;

constexpr Instruction kInstructions[] = {
    {{'U', 0}, Instruction::up, 2},
    {{'D', 0}, Instruction::down, 2},
    {{'A', 0}, Instruction::absolute, 2},
    {{'R', 0}, Instruction::relative, 2},
    {{'H', 0}, Instruction::home, 2},
    {{'O', 0}, Instruction::origin, 0},
    {{'P', 0}, Instruction::pen, 1},
    {{'V', 0}, Instruction::speed, 1},
    {{'L', 0}, Instruction::line, 1},
    {{'C', 'A'}, Instruction::arcAbout, 3},
    {{'C', 'C'}, Instruction::circleAbout, 2},
    {{'E', 'C'}, Instruction::unit, 0},
    {{'E', 'F'}, Instruction::area, 0},
    {{'E', 'H'}, Instruction::area, 0},
    {{'E', 'R'}, Instruction::report, 0},
    {{'S', 0}, Instruction::label, 0},
    {{'@', 0}, Instruction::end, 0},
    // Tools, pressure, paper, windows, marks, pauses: nothing that moves the pen over the sheet for good.
    {{'B', 'P'}, Instruction::ignore, 0},
    {{'F', 0}, Instruction::ignore, 0},
    {{'J', 0}, Instruction::ignore, 0},
    {{'K', 0}, Instruction::ignore, 0},
    {{'N', 0}, Instruction::ignore, 0},
    {{'Q', 0}, Instruction::ignore, 0},
    {{'T', 0}, Instruction::ignore, 0},
    {{'W', 0}, Instruction::ignore, 0},
    {{'X', 0}, Instruction::ignore, 0},
    {{'Z', 0}, Instruction::ignore, 0},
    {{'c', 0}, Instruction::ignore, 0},
    {{'e', 0}, Instruction::ignore, 0},
};

constexpr struct {
    unsigned char code;
    double plotterUnits;
} kUnits[] = {
    {'1', 0.001 * 25.4 * kUnitsPerMillimetre},
    {'5', 0.005 * 25.4 * kUnitsPerMillimetre},
    {'M', 0.1 * kUnitsPerMillimetre},
    {'N', 0.025 * kUnitsPerMillimetre},
};

constexpr double kPattern = 10 * kUnitsPerMillimetre;

bool isNumeric(unsigned char byte) { return (byte >= '0' && byte <= '9') || byte == '.' || byte == '-' || byte == '+'; }
bool hasSecondLetter(unsigned char byte) { return byte == 'B' || byte == 'C' || byte == 'E'; }
bool isSeparator(unsigned char byte) { return byte <= ' ' || byte == ',' || byte == ';' || byte == ':' || byte == 127; }

} // namespace

DmplReader::DmplReader(PenSink &sink, const Rectangle &hardClip, Clipping clipping)
    : carriage_(sink, hardClip, clipping, findings_), unit_(kUnits[0].plotterUnits) {}

void DmplReader::take(std::string_view bytes) {
    for (char c : bytes) {
        step(static_cast<unsigned char>(c));
        ++findings_.bytes;
    }
}

void DmplReader::finish() {
    if (state_ == State::second || state_ == State::unitCode || state_ == State::text) broken_ = true;
    if (state_ == State::second) beginInstruction(letter_, 0);
    endInstruction();
    state_ = State::open;
}

void DmplReader::step(unsigned char byte) {
    switch (state_) {
    case State::deselected:
        if (byte == ';') state_ = State::selecting;
        return;
    case State::selecting: state_ = byte == ':' ? State::open : byte == ';' ? State::selecting : State::deselected; return;
    case State::text:
        if (byte == '_' || byte == '\r' || byte == '\n') state_ = State::open;
        return;
    default: break;
    }
    if (state_ == State::open && !isSeparator(byte) && !isNumeric(byte)) {
        endInstruction();
        offset_ = findings_.bytes;
        textLength_ = 0;
    }
    if (textLength_ < text_.size()) text_[textLength_++] = static_cast<char>(byte);

    if (state_ == State::second) {
        state_ = State::open;
        return beginInstruction(letter_, byte);
    }
    if (state_ == State::unitCode) {
        if (byte <= ' ') return;
        state_ = State::open;
        return setUnit(byte);
    }
    if (byte >= '0' && byte <= '9') {
        number_.digit(byte - unsigned{'0'});
    } else if (byte == '.') {
        broken_ = !number_.point() || broken_;
    } else if (byte == '-' || byte == '+') {
        completeNumber();
        number_.sign(byte == '-');
    } else if (isSeparator(byte)) {
        completeNumber();
    } else if (hasSecondLetter(byte)) {
        letter_ = byte;
        state_ = State::second;
    } else {
        beginInstruction(byte, 0);
    }
}

void DmplReader::beginInstruction(unsigned char first, unsigned char second) {
    count_ = 0;
    broken_ = false;
    const auto *found = std::find_if(std::begin(kInstructions), std::end(kInstructions), [&](const Instruction &i) {
        return i.name[0] == static_cast<char>(first) && i.name[1] == static_cast<char>(second);
    });
    if (found == std::end(kInstructions)) {
        instruction_ = nullptr;
        findings_.note(Oddity::unknown, offset_, {text_.data(), textLength_});
        return;
    }
    instruction_ = found;
    ++findings_.instructions;
    switch (found->action) {
    case Instruction::up:
        down_ = false;
        carriage_.moveTo(at_);
        break;
    case Instruction::down:
        if (!down_) carriage_.touch();
        down_ = true;
        break;
    case Instruction::absolute: relative_ = false; break;
    case Instruction::relative: relative_ = true; break;
    case Instruction::home:
        down_ = false;
        origin_ = {};
        go({});
        break;
    case Instruction::origin: origin_ = at_; break;
    case Instruction::unit: state_ = State::unitCode; break;
    case Instruction::area: area_ = static_cast<char>(second); break;
    case Instruction::report:
        if (onRequest) {
            const char text[] = {'E', area_, ',', 'E', 'C', static_cast<char>(unitCode_), ',', 'E', 'R'};
            onRequest({text, sizeof text});
        }
        break;
    case Instruction::label: state_ = State::text; break;
    case Instruction::end:
        down_ = false;
        carriage_.moveTo(at_);
        state_ = State::deselected;
        break;
    default: break;
    }
}

void DmplReader::setUnit(unsigned char code) {
    for (const auto &unit : kUnits) {
        if (unit.code != code) continue;
        unit_ = unit.plotterUnits;
        unitCode_ = code;
        return;
    }
    broken_ = true;
}

void DmplReader::completeNumber() {
    if (!number_.active()) return;
    broken_ = broken_ || !number_.complete();
    const double value = number_.take();
    if (instruction_ == nullptr || instruction_->numbers == 0) return;
    numbers_[count_++] = value;
    if (count_ < instruction_->numbers) return;
    count_ = 0;
    act();
}

/// Carries the instruction out once, with the numbers that it takes at a time.
void DmplReader::act() {
    const auto &n = numbers_;
    switch (instruction_->action) {
    case Instruction::pen:
        // Pen 0 is the tool that a single holder has: jobs for cutters select it and draw.
        if (n[0] < 0 || n[0] >= 256)
            broken_ = true;
        else
            carriage_.setPen(std::max(1, static_cast<int>(n[0])), carriage_.width());
        break;
    case Instruction::speed:
        if (n[0] > 0) carriage_.setSpeed(n[0]);
        break;
    case Instruction::line: {
        const int type = static_cast<int>(std::clamp(n[0], 0.0, 100.0));
        carriage_.setLineType(dashed(LineType::fixed, standardPattern(type), kPattern));
        break;
    }
    case Instruction::arcAbout: arc(placeOf(n[0], n[1]), std::clamp(n[2], -360.0, 360.0)); break;
    case Instruction::circleAbout: arc(placeOf(n[0], n[1]), 360); break;
    default: go(placeOf(n[0], n[1])); break;
    }
}

void DmplReader::endInstruction() {
    completeNumber();
    if (instruction_ != nullptr && (broken_ || count_ != 0)) {
        findings_.note(Oddity::malformed, offset_, {text_.data(), textLength_});
    }
    instruction_ = nullptr;
    count_ = 0;
    broken_ = false;
}

Point DmplReader::placeOf(double x, double y) const noexcept {
    const Point from = relative_ ? at_ : origin_;
    return clamped(Point{from.x + x * unit_, from.y + y * unit_});
}

void DmplReader::go(Point to) {
    at_ = to;
    if (down_)
        carriage_.lineTo(to);
    else
        carriage_.moveTo(to);
}

/// Draws an arc of so many degrees from where the pen is, even when the pen is up; it is put back up then.
void DmplReader::arc(Point centre, double sweep) {
    const bool down = down_;
    const Point radius{at_.x - centre.x, at_.y - centre.y};
    down_ = true;
    forEachChord(sweep, kDefaultChord, [&](Point turn) {
        go(clamped(
            Point{centre.x + radius.x * turn.x - radius.y * turn.y, centre.y + radius.x * turn.y + radius.y * turn.x}));
    });
    down_ = down;
    if (!down_) carriage_.moveTo(at_);
}

PenStatus DmplReader::status() const {
    return {.at = at_,
            .atUser = {(at_.x - origin_.x) / unit_, (at_.y - origin_.y) / unit_},
            .down = down_,
            .pen = carriage_.pen(),
            .scalingPoints = carriage_.hardClip(),
            .window = carriage_.hardClip(),
            .hardClip = carriage_.hardClip()};
}

} // namespace language
