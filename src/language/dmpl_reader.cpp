#include "language/dmpl_reader.h"

#include "language/chords.h"
#include "language/number_text.h"

#include <algorithm>
#include <cmath>

namespace language {

/// A row of the table: an instruction of one or two letters, and what it does.
struct DmplReader::Instruction {
    enum Action : uint8_t {
        Ignore, ///< with any numbers behind it
        Up,
        Down,
        Absolute,
        Relative,
        Home,
        Origin,
        Pen,
        Speed,
        Line,
        ArcAbout,    ///< centre and sweep
        CircleAbout, ///< centre
        Unit,
        Area,
        Report,
        Label,
        End,
    };
    char name[2]; // the second is 0 for none
    Action action;
    uint8_t numbers; ///< that it takes at a time, and again for each further lot; 0: acts at once, and skips any numbers
    bool isSetting = false; ///< that is kept, with its numbers unless they are points
};

namespace {

using Instruction = DmplReader::Instruction;

constexpr Instruction kInstructions[] = {
    {{'U', 0}, Instruction::Up, 2},
    {{'D', 0}, Instruction::Down, 2},
    {{'A', 0}, Instruction::Absolute, 2},
    {{'R', 0}, Instruction::Relative, 2},
    {{'H', 0}, Instruction::Home, 2, true},
    {{'O', 0}, Instruction::Origin, 0},
    {{'P', 0}, Instruction::Pen, 1, true},
    {{'V', 0}, Instruction::Speed, 1, true},
    {{'L', 0}, Instruction::Line, 1, true},
    {{'C', 'A'}, Instruction::ArcAbout, 3},
    {{'C', 'C'}, Instruction::CircleAbout, 2},
    {{'E', 'C'}, Instruction::Unit, 0, true},
    {{'E', 'F'}, Instruction::Area, 0, true},
    {{'E', 'H'}, Instruction::Area, 0, true},
    {{'E', 'R'}, Instruction::Report, 0},
    {{'S', 0}, Instruction::Label, 0},
    {{'@', 0}, Instruction::End, 0},
    // Tools, pressure, paper, windows, marks, pauses: nothing that moves the pen over the sheet for good. Only pressure and
    // windows are sure to do nothing but to last.
    {{'B', 'P'}, Instruction::Ignore, 0, true},
    {{'F', 0}, Instruction::Ignore, 0},
    {{'J', 0}, Instruction::Ignore, 0},
    {{'K', 0}, Instruction::Ignore, 0},
    {{'N', 0}, Instruction::Ignore, 0},
    {{'Q', 0}, Instruction::Ignore, 0},
    {{'T', 0}, Instruction::Ignore, 0},
    {{'W', 0}, Instruction::Ignore, 0, true},
    {{'X', 0}, Instruction::Ignore, 0},
    {{'Z', 0}, Instruction::Ignore, 0},
    {{'c', 0}, Instruction::Ignore, 0},
    {{'e', 0}, Instruction::Ignore, 0},
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

DmplReader::DmplReader(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte)
    : carriage_(sink, hardClip, clipping, secondsPerByte, findings_), unit_(kUnits[0].plotterUnits) {}

void DmplReader::take(std::string_view bytes) {
    for (char c : bytes) {
        step(static_cast<unsigned char>(c));
        ++findings_.bytes;
    }
}

void DmplReader::finish() {
    if (state_ == State::Second || state_ == State::UnitCode || state_ == State::Text) broken_ = true;
    if (state_ == State::Second) beginInstruction(letter_, 0);
    endInstruction();
    state_ = State::Open;
    carriage_.finish();
}

void DmplReader::step(unsigned char byte) {
    switch (state_) {
    case State::Deselected:
        if (byte == ';') state_ = State::Selecting;
        return;
    case State::Selecting: state_ = byte == ':' ? State::Open : byte == ';' ? State::Selecting : State::Deselected; return;
    case State::Text:
        if (byte == '_' || byte == '\r' || byte == '\n') state_ = State::Open;
        return;
    default: break;
    }
    if (state_ == State::Open && !isSeparator(byte) && !isNumeric(byte)) {
        endInstruction();
        offset_ = findings_.bytes;
        textLength_ = 0;
    }
    if (textLength_ < text_.size()) text_[textLength_++] = static_cast<char>(byte);

    if (state_ == State::Second) {
        state_ = State::Open;
        return beginInstruction(letter_, byte);
    }
    if (state_ == State::UnitCode) {
        if (byte <= ' ') return;
        state_ = State::Open;
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
        state_ = State::Second;
    } else {
        beginInstruction(byte, 0);
    }
}

void DmplReader::beginInstruction(unsigned char first, unsigned char second) {
    count_ = 0;
    broken_ = false;
    tellStart(offset_);
    const auto *found = std::find_if(std::begin(kInstructions), std::end(kInstructions), [&](const Instruction &i) {
        return i.name[0] == static_cast<char>(first) && i.name[1] == static_cast<char>(second);
    });
    if (found == std::end(kInstructions)) {
        instruction_ = nullptr;
        findings_.note(Oddity::Unknown, offset_, {text_.data(), textLength_});
        return;
    }
    instruction_ = found;
    ++findings_.instructions;
    switch (found->action) {
    case Instruction::Up:
        down_ = false;
        carriage_.moveTo(at_);
        break;
    case Instruction::Down:
        if (!down_) carriage_.touch();
        down_ = true;
        break;
    case Instruction::Absolute: relative_ = false; break;
    case Instruction::Relative: relative_ = true; break;
    case Instruction::Home:
        down_ = false;
        origin_ = {};
        go({});
        break;
    case Instruction::Origin: origin_ = at_; break;
    case Instruction::Unit: state_ = State::UnitCode; break;
    case Instruction::Area: area_ = static_cast<char>(second); break;
    case Instruction::Report:
        if (onRequest) {
            const char text[] = {'E', area_, ',', 'E', 'C', static_cast<char>(unitCode_), ',', 'E', 'R'};
            onRequest({text, sizeof text});
        }
        break;
    case Instruction::Label: state_ = State::Text; break;
    case Instruction::End:
        down_ = false;
        carriage_.moveTo(at_);
        state_ = State::Deselected;
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
    case Instruction::Pen:
        // Pen 0 is the tool that a single holder has: jobs for cutters select it and draw.
        if (n[0] < 0 || n[0] >= 256)
            broken_ = true;
        else
            carriage_.setPen(std::max(1, static_cast<int>(n[0])), carriage_.width());
        break;
    case Instruction::Speed:
        if (n[0] > 0) carriage_.setSpeed(n[0]);
        break;
    case Instruction::Line: {
        const int type = static_cast<int>(std::clamp(n[0], 0.0, 100.0));
        carriage_.setLineType(dashed(LineType::Fixed, standardPattern(type), kPattern));
        break;
    }
    case Instruction::ArcAbout: arc(placeOf(n[0], n[1]), std::clamp(n[2], -360.0, 360.0)); break;
    case Instruction::CircleAbout: arc(placeOf(n[0], n[1]), 360); break;
    default: go(placeOf(n[0], n[1])); break;
    }
}

void DmplReader::endInstruction() {
    completeNumber();
    if (instruction_ != nullptr && (broken_ || count_ != 0)) {
        findings_.note(Oddity::Malformed, offset_, {text_.data(), textLength_});
    }
    if (instruction_ != nullptr && instruction_->isSetting && !broken_) keepSetting();
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

/// As it stands in the plot, less the separators behind it; but what takes points keeps none.
void DmplReader::keepSetting() {
    const std::string_view name(instruction_->name, instruction_->name[1] == 0 ? 1 : 2);
    std::string text(text_.data(), instruction_->numbers == 2 ? name.size() : textLength_);
    if (text.size() == text_.size()) return;
    while (isSeparator(static_cast<unsigned char>(text.back())))
        text.pop_back();
    if (instruction_->action == Instruction::Area) settings_.drop(name == "EF" ? "EH" : "EF", KeptSettings::kWhole);
    settings_.keep(name, KeptSettings::kWhole, text + ',');
}

Place DmplReader::place() const {
    return {.offset = nextStart(),
            .penUp = !down_,
            .carries = !down_ || (carriage_.touched() && (carriage_.lineType().count == 0 || carriage_.phase() == 0)),
            .pen = carriage_.pen(),
            .strokes = findings_.strokes,
            .millimetres = findings_.downMillimetres};
}

/// The pen goes by absolute points from home, and puts the origin down on the way.
std::string DmplReader::state() const {
    std::string text = ";:U,";
    settings_.append(text);
    text += "A,";
    const auto go = [&](Point to) {
        text += 'U';
        appendNumber(text, to.x / unit_);
        text += ',';
        appendNumber(text, to.y / unit_);
        text += ',';
    };
    if (origin_ != Point{}) {
        go(origin_);
        text += "O,";
    }
    go({at_.x - origin_.x, at_.y - origin_.y});
    if (relative_) text += "R,";
    if (down_) text += "D,";
    return text;
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
