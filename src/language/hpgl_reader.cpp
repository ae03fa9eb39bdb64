#include "language/hpgl_reader.h"

#include "language/hpgl_handlers.h"

#include <algorithm>

namespace language {

using hpgl::Form;
using hpgl::Numbers;

namespace {

constexpr unsigned char kEscape = 0x1b;
constexpr unsigned char kLineFeed = 10;
constexpr size_t kLongestSequence = 64; // of a setting; data may be of any length

bool isLetter(unsigned char byte) { return (byte | 0x20u) - 'a' < 26u; }
bool isDigit(unsigned char byte) { return byte - unsigned{'0'} < 10u; }
/// Blanks, line ends, and the control bytes that plotters pass over.
bool isBlank(unsigned char byte) { return byte <= ' ' || byte == 127; }

} // namespace

HpglReader::HpglReader(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte)
    : plotter_(sink, hardClip, clipping, secondsPerByte, findings_) {}

void HpglReader::take(std::string_view bytes) {
    for (char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (state_ == State::NumberList && isDigit(byte)) {
            number_.digit(byte - unsigned{'0'}); // most bytes of most jobs
            keep(byte);
        } else {
            step(byte);
        }
        ++findings_.bytes;
    }
}

void HpglReader::finish() {
    if (state_ == State::Escape) state_ = resumed_;
    if (state_ == State::Label || state_ == State::Quoted || state_ == State::Character) broken_ = true;
    endWhatIsOpen();
    state_ = State::Between;
    plotter_.carriage.finish();
}

void HpglReader::step(unsigned char byte) {
    if (byte == kEscape && state_ != State::Escape) {
        resumed_ = state_;
        escape_.begin();
        sequence_ = kEscape;
        state_ = State::Escape;
        return;
    }
    switch (state_) {
    case State::Between: startAt(byte); break;
    case State::Second:
        if (isLetter(byte)) {
            keep(byte);
            beginInstruction(byte);
        } else if (!isBlank(byte)) {
            state_ = State::Rubbish;
            rubbishByte(byte);
        }
        break;
    case State::NumberList: numbersByte(byte); break;
    case State::Quoted:
        if (byte == '"') state_ = State::NumberList;
        break;
    case State::Comment:
        if (isBlank(byte)) return keep(byte);
        state_ = byte == '"' || byte == ';' ? State::NumberList : State::Remark;
        if (state_ == State::NumberList) return numbersByte(byte);
        [[fallthrough]];
    case State::Remark:
        keep(byte);
        if (byte == ';') endInstruction();
        break;
    case State::Character: characterByte(byte); break;
    case State::Label: labelByte(byte); break;
    case State::Polyline:
        keep(byte);
        if (byte == ';')
            endInstruction();
        else if (!hpgl::polylineByte(plotter_, byte))
            broken_ = true;
        break;
    case State::Rubbish: rubbishByte(byte); break;
    case State::Escape: escapeByte(byte); break;
    case State::Foreign: break;
    case State::JobStart:
        if (byte != '@') return startAt(byte);
        state_ = State::JobLine;
        [[fallthrough]];
    case State::JobLine:
        preamble_.jobByte(byte);
        if (byte == kLineFeed) state_ = State::JobStart;
        break;
    }
}

/// Reads over bytes that begin no instruction. A run of them counts as one oddity.
void HpglReader::rubbishByte(unsigned char byte) {
    if (!isBlank(byte) && !isLetter(byte) && byte != ';') return keep(byte);
    note(Oddity::Unknown);
    startAt(byte);
}

/// Takes a byte with which an instruction may begin.
void HpglReader::startAt(unsigned char byte) {
    state_ = State::Between;
    if (isBlank(byte) || byte == ';' || byte == ',') return;
    offset_ = findings_.bytes;
    textLength_ = 0;
    keep(byte);
    letter_ = byte;
    state_ = isLetter(byte) ? State::Second : State::Rubbish;
}

void HpglReader::beginInstruction(unsigned char second) {
    state_ = State::NumberList;
    instruction_ = hpgl::findInstruction(letter_, second);
    number_.reset();
    count_ = 0;
    broken_ = false;
    tellStart(offset_);
    if (instruction_ == nullptr) return;
    switch (instruction_->form) {
    case Form::Groups: instruction_->handler(plotter_, {}); break;
    case Form::Terminator:
    case Form::Symbol: state_ = State::Character; break;
    case Form::Label:
    case Form::Text: state_ = State::Label; break;
    case Form::Comment:
        // In small letters it is rather part of a word in a file that is no plot, with no semicolon for a long way.
        if (((letter_ | second) & 0x20u) == 0) state_ = State::Comment;
        break;
    case Form::Strokes: hpgl::beginOwnCharacter(plotter_); break;
    case Form::Polyline:
        hpgl::beginPolyline(plotter_);
        state_ = State::Polyline;
        break;
    default: break;
    }
}

void HpglReader::numbersByte(unsigned char byte) {
    if (isLetter(byte)) {
        endInstruction();
        startAt(byte);
        return;
    }
    keep(byte);
    if (isDigit(byte)) {
        number_.digit(byte - unsigned{'0'});
    } else if (byte == ',' || isBlank(byte)) {
        completeNumber();
    } else if (byte == ';') {
        endInstruction();
    } else if (byte == '-' || byte == '+') {
        completeNumber();
        number_.sign(byte == '-');
    } else if (byte == '.') {
        if (!number_.point()) broken_ = true;
    } else if (byte == '"' && instruction_ != nullptr &&
               (instruction_->form == Form::Remark || instruction_->form == Form::Comment)) {
        completeNumber();
        state_ = State::Quoted;
    } else {
        broken_ = true;
    }
}

void HpglReader::completeNumber() {
    if (!number_.active()) return;
    if (!number_.complete()) {
        broken_ = true;
        number_.reset();
        return;
    }
    const double value = number_.take();
    if (instruction_ == nullptr) return;
    if (instruction_->form == Form::Strokes) return hpgl::ownCharacterNumber(plotter_, value);
    if (count_ < numbers_.size()) numbers_[count_] = value;
    ++count_;
    if (instruction_->form == Form::Groups && count_ == instruction_->group) {
        instruction_->handler(plotter_, Numbers(numbers_.data(), count_));
        count_ = 0;
    }
}

void HpglReader::endInstruction() {
    state_ = State::Between;
    completeNumber();
    if (instruction_ == nullptr) return note(Oddity::Unknown);
    ++findings_.instructions;
    bool good = !broken_;
    switch (instruction_->form) {
    case Form::Groups: good = good && count_ == 0; break;
    case Form::Label: hpgl::endLabel(plotter_); break;
    case Form::Strokes: good = hpgl::endOwnCharacter(plotter_) && good; break;
    case Form::Polyline: good = hpgl::endPolyline(plotter_) && good; break;
    case Form::Terminator: plotter_.lettering.printsTerminator = count_ > 0 && numbers_[0] == 0; break;
    case Form::Request:
        if (onRequest) onRequest(instruction_->name);
        break;
    default: {
        const bool barred = instruction_->draws && plotter_.defining;
        if (barred || count_ < instruction_->least) {
            good = false;
        } else {
            const size_t most = std::min<size_t>(instruction_->most, numbers_.size());
            const Numbers numbers(numbers_.data(), std::min(count_, most));
            const bool done = instruction_->handler == nullptr || instruction_->handler(plotter_, numbers);
            const bool known = count_ <= numbers_.size();
            if (done && known && instruction_->kept != hpgl::Kept::Nothing)
                hpgl::keepSetting(plotter_, *instruction_, numbers);
            good = good && done && (count_ <= most || instruction_->handler == nullptr);
        }
    }
    }
    if (!good) note(Oddity::Malformed);
}

/// The character of DT or SM; a semicolon in its place restores the default.
void HpglReader::characterByte(unsigned char byte) {
    keep(byte);
    hpgl::Lettering &lettering = plotter_.lettering;
    const bool none = byte == ';';
    state_ = State::NumberList;
    if (instruction_->form == Form::Symbol) {
        lettering.symbol = byte > ' ' && byte < 127 && !none ? byte : 0;
    } else if (byte == 0 || byte == kLineFeed) {
        broken_ = true; // these can end no label
    } else {
        lettering.terminator = none ? hpgl::Lettering::kEtx : byte;
    }
    if (none) endInstruction();
}

void HpglReader::labelByte(unsigned char byte) {
    keep(byte);
    const bool drawn = instruction_->form == Form::Label && !plotter_.defining;
    const bool last = byte == plotter_.lettering.terminator;
    if (drawn && (!last || plotter_.lettering.printsTerminator)) hpgl::label(plotter_, byte);
    if (!last) return;
    if (instruction_->draws && plotter_.defining) broken_ = true;
    endInstruction();
}

void HpglReader::escapeByte(unsigned char byte) {
    const auto step = escape_.take(byte);
    if (step != hpgl::EscapeScanner::Step::DoneAway && sequence_.size() < kLongestSequence)
        sequence_ += static_cast<char>(byte);
    if (step == hpgl::EscapeScanner::Step::More) return;
    state_ = resumed_;
    escapeMeans(escape_.meaning());
    if (step == hpgl::EscapeScanner::Step::DoneAway) this->step(byte);
}

void HpglReader::escapeMeans(hpgl::EscapeScanner::Meaning meaning) {
    using Meaning = hpgl::EscapeScanner::Meaning;
    if (meaning == Meaning::Request) {
        if (onRequest) onRequest(escape_.text());
    } else if (meaning != Meaning::DeviceControl && state_ != State::Foreign) {
        endWhatIsOpen();
        state_ = State::Between;
    }
    if (meaning == Meaning::DeviceControl && sequence_.size() < kLongestSequence) preamble_.control(sequence_);
    if (meaning == Meaning::Enter) {
        preamble_.enter();
        state_ = State::Between;
    }
    if (meaning == Meaning::Leave) state_ = State::Foreign;
    if (meaning == Meaning::Exit) {
        preamble_.beginJob();
        state_ = State::JobStart;
    }
    if (meaning == Meaning::Reset && state_ == State::Between) hpgl::initializeInstruction(plotter_, {});
}

void HpglReader::endWhatIsOpen() {
    switch (state_) {
    case State::Second:
    case State::Rubbish: note(Oddity::Unknown); break;
    case State::NumberList:
    case State::Quoted:
    case State::Comment:
    case State::Remark:
    case State::Character:
    case State::Label:
    case State::Polyline: endInstruction(); break;
    default: break;
    }
}

void HpglReader::keep(unsigned char byte) {
    if (textLength_ < text_.size()) text_[textLength_++] = static_cast<char>(byte);
}

void HpglReader::note(Oddity::Kind kind) { findings_.note(kind, offset_, {text_.data(), textLength_}); }

PenStatus HpglReader::status() const {
    const Rectangle all = plotter_.frame.area();
    return {.at = plotter_.at,
            .atUser = plotter_.frame.toUser(plotter_.at),
            .down = plotter_.down,
            .pen = plotter_.carriage.pen(),
            .scalingPoints = {plotter_.frame.p1(), plotter_.frame.p2()},
            .window = plotter_.window.value_or(all),
            .hardClip = all};
}

Place HpglReader::place() const {
    const bool ofPolygon = starts() && instruction_ != nullptr &&
                           (instruction_->handler == hpgl::edgePolygon || instruction_->handler == hpgl::fillPolygon);
    // A plotter that jobs send rectangles may have no polygon buffer to put one into; so the state leaves it out.
    const bool lost = ofPolygon && !plotter_.defines && !plotter_.polygon.points().empty();
    return {.offset = nextStart(),
            .penUp = !plotter_.down && !plotter_.defining,
            .carries = !lost && hpgl::stateCarriesAll(plotter_),
            .pen = plotter_.pens.selected,
            .strokes = findings_.strokes,
            .millimetres = findings_.downMillimetres};
}

std::string HpglReader::state() const {
    std::string text;
    preamble_.append(text);
    hpgl::appendState(plotter_, text);
    return text;
}

} // namespace language
