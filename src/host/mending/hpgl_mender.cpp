#include "host/mending/hpgl_mender.h"

#include <algorithm>

namespace host {

using language::hpgl::EscapeScanner;
using language::hpgl::findInstruction;
using language::hpgl::Form;

namespace {

constexpr unsigned char kEscape = 0x1B, kLineFeed = '\n', kEtx = language::hpgl::Lettering::kEtx;
constexpr size_t kLongestSequence = 4096; // of an escape, in bytes
constexpr std::string_view kLineEnds = "\r\n", kEtxText = "\3";

bool isLetter(unsigned char byte) { return (byte | 0x20u) - 'a' < 26u; }
bool isBlank(unsigned char byte) { return byte <= ' ' || byte == 127; }
bool startsWithMnemonic(std::string_view text) {
    return text.size() >= 2 && findInstruction(static_cast<unsigned char>(text[0]), static_cast<unsigned char>(text[1]));
}

/// True for a sequence of a printer's language that puts something on the paper: rows of dots, filled areas, text.
bool isPrinted(std::string_view sequence) {
    const std::string_view group = sequence.substr(1, 2);
    if (group == "*b") return sequence.find_first_of("vVwW") != std::string_view::npos;
    return (group == "*c" && sequence.ends_with('P')) || (group == "&p" && sequence.ends_with('X'));
}

} // namespace

void HpglMender::step(unsigned char byte) {
    if (state_ == State::Escape) return escapeByte(byte);
    if (byte == kEscape) {
        resumed_ = state_;
        escape_.begin();
        sequence_ = static_cast<char>(byte);
        state_ = State::Escape;
        return;
    }
    if (byte == 0) return nul();
    switch (state_) {
    case State::Polyline: return polylineByte(byte);
    case State::Quoted:
    case State::Comment:
    case State::Remark: return commentByte(byte);
    case State::Foreign: return foreignByte(byte);
    case State::JobLine: return jobLineByte(byte);
    default: break;
    }
    if (byte >= 0x80) refuse(Unmendable::Stray, byte);
    switch (state_) {
    case State::Second: return secondByte(byte);
    case State::NumberList: return numbersByte(byte);
    case State::Character: return characterByte(byte);
    case State::Label: return labelByte(byte);
    case State::JobStart: return jobStartByte(byte);
    default: return betweenByte(byte);
    }
}

/// Plug-in and plotter pass over it; behind a number it parts.
void HpglMender::nul() {
    if (state_ == State::Character) refuse(Unmendable::Stray);
    note(Mending::Nul);
    if (state_ == State::NumberList && holdsNothing()) hold(" ");
}

void HpglMender::betweenByte(unsigned char byte) {
    state_ = State::Between;
    if (isBlank(byte)) {
        holdByte(byte);
    } else if (byte == '@' && !isBegun_) {
        jobStartByte(byte);
    } else if (isLetter(byte)) {
        flush();
        mnemonic_ = static_cast<char>(byte);
        state_ = State::Second;
    } else {
        flush();
        put(static_cast<char>(byte));
        isEnded_ = byte == ';';
        hidesMark_ = false;
    }
}

void HpglMender::secondByte(unsigned char byte) {
    if (isBlank(byte)) return; // between the letters of a mnemonic it stands for nothing
    if (isLetter(byte)) {
        instruction_ = findInstruction(static_cast<unsigned char>(mnemonic_[0]), byte);
        mnemonic_ += static_cast<char>(byte);
        return beginInstruction();
    }
    put(mnemonic_);
    betweenByte(byte);
}

void HpglMender::beginInstruction() {
    const Form form = instruction_ ? instruction_->form : Form::NumberList;
    if (std::exchange(isReset_, false)) put("IN;");
    isBegun_ = true;
    hidesMark_ = false;
    state_ = State::NumberList;
    if (form == Form::Request) {
        question_ = mnemonic_;
        return;
    }
    put(mnemonic_);
    isEnded_ = false;
    if (instruction_ && (instruction_->name == "IN" || instruction_->name == "DF")) terminator_ = kEtx;
    if (form == Form::Terminator || form == Form::Symbol) state_ = State::Character;
    if (form == Form::Label || form == Form::Text) state_ = State::Label;
    if (form == Form::Comment && ((mnemonic_[0] | mnemonic_[1]) & 0x20) == 0) state_ = State::Comment;
    if (form == Form::Polyline) {
        state_ = State::Polyline;
        polyline_.begin();
    }
}

void HpglMender::numbersByte(unsigned char byte) {
    if (isBlank(byte)) return holdByte(byte);
    if (isLetter(byte)) {
        partFromNext();
        return betweenByte(byte);
    }
    flush();
    if (byte == ';') return endInstruction();
    put(static_cast<char>(byte));
    const Form form = instruction_ ? instruction_->form : Form::NumberList;
    if (byte == '"' && (form == Form::Remark || form == Form::Comment)) state_ = State::Quoted;
}

/// Comments and the texts of others are not drawn, so that any character may stand for another.
void HpglMender::commentByte(unsigned char byte) {
    if (byte >= 0x80) {
        note(Mending::Comments);
        byte = '?';
    }
    if (state_ == State::Quoted) {
        put(static_cast<char>(byte));
        if (byte == '"') state_ = State::NumberList;
    } else if (state_ == State::Comment && byte == '"') {
        state_ = State::NumberList;
        numbersByte(byte);
    } else if (byte == ';') {
        endInstruction();
    } else {
        put(static_cast<char>(byte));
        if (!isBlank(byte)) state_ = State::Remark;
    }
}

void HpglMender::characterByte(unsigned char byte) {
    state_ = State::NumberList;
    const bool isNone = byte == ';';
    if (instruction_->form == Form::Terminator && byte != kLineFeed) terminator_ = isNone ? kEtx : byte;
    if (isNone) return endInstruction();
    put(static_cast<char>(byte));
}

void HpglMender::labelByte(unsigned char byte) {
    put(static_cast<char>(byte));
    if (byte == terminator_) state_ = State::Between;
}

void HpglMender::polylineByte(unsigned char byte) {
    std::string text;
    const PolylineMender::Step step = polyline_.take(byte, text);
    put(text);
    switch (step) {
    case PolylineMender::Step::Rewritten: note(Mending::Polylines); break;
    case PolylineMender::Step::Ends:
        isEnded_ = true;
        state_ = State::Between;
        break;
    case PolylineMender::Step::Astray:
        endPolylineEarly(Unmendable::Stray);
        this->step(byte);
        break;
    case PolylineMender::Step::Copied: break;
    }
}

/// Where digits of no number are followed by what cannot be in a polyline, they are the instruction behind it.
void HpglMender::endPolylineEarly(Unmendable::Why otherwise) {
    const std::string next = polyline_.rest();
    if (!startsWithMnemonic(next)) refuse(otherwise);
    note(Mending::PolylineEnd);
    endInstruction();
    for (char c : next)
        step(static_cast<unsigned char>(c));
}

void HpglMender::foreignByte(unsigned char byte) {
    if (!isBlank(byte)) refuse(Unmendable::Printed);
}

void HpglMender::jobStartByte(unsigned char byte) {
    if (isBlank(byte)) return holdByte(byte);
    if (byte != '@') return betweenByte(byte);
    note(Mending::Wrapper);
    held();
    state_ = State::JobLine;
}

void HpglMender::jobLineByte(unsigned char byte) {
    if (byte == kLineFeed) state_ = State::JobStart;
}

void HpglMender::escapeByte(unsigned char byte) {
    const EscapeScanner::Step step = escape_.take(byte);
    if (step != EscapeScanner::Step::DoneAway && sequence_.size() < kLongestSequence) sequence_ += static_cast<char>(byte);
    if (step == EscapeScanner::Step::More) return;
    state_ = resumed_;
    const EscapeScanner::Meaning meaning = escape_.meaning();
    if (meaning == EscapeScanner::Meaning::DeviceControl || meaning == EscapeScanner::Meaning::Request)
        deviceControl();
    else
        leavePlot(meaning);
    if (step == EscapeScanner::Step::DoneAway) this->step(byte);
}

/// Pen plotters take it out of the stream wherever it stands: it stays.
void HpglMender::deviceControl() {
    const bool isWaiting = state_ == State::Between || state_ == State::NumberList || state_ == State::JobStart;
    if (sequence_.size() == kLongestSequence) refuse(Unmendable::Stray);
    hidesMark_ = isWaiting && (hidesMark_ || sequence_.find(';') != std::string::npos);
    if (isWaiting)
        hold(sequence_);
    else
        put(sequence_);
}

/// At a sequence of a printer's language, which is left out.
void HpglMender::leavePlot(EscapeScanner::Meaning meaning) {
    note(Mending::Wrapper);
    if (isPrinted(sequence_)) refuse(Unmendable::Printed);
    if (state_ != State::Foreign) {
        endWhatIsOpen();
        flush();
        state_ = State::Between;
    }
    if (meaning == EscapeScanner::Meaning::Reset && state_ == State::Between) {
        isReset_ = isBegun_; // there is nothing to reset before the first instruction
        terminator_ = kEtx;
    }
    if (meaning == EscapeScanner::Meaning::Enter) state_ = State::Between;
    if (meaning == EscapeScanner::Meaning::Leave) state_ = State::Foreign;
    if (meaning == EscapeScanner::Meaning::Exit) state_ = State::JobStart;
}

void HpglMender::endWhatIsOpen() {
    switch (state_) {
    case State::Polyline:
        if (!polyline_.rest().empty()) {
            endPolylineEarly(Unmendable::Stray);
            return endWhatIsOpen();
        }
        return polylineByte(';');
    case State::NumberList: put(std::exchange(question_, {})); [[fallthrough]];
    case State::Comment:
    case State::Remark: return endInstruction();
    case State::Second:
    case State::Quoted:
    case State::Character:
    case State::Label: refuse(Unmendable::Stray);
    default: break;
    }
}

/// Before the letter of the next instruction: makes the line ends between them a semicolon.
void HpglMender::partFromNext() {
    const bool isEtx = holds(kEtxText), isLineEnd = holds(kLineEnds);
    if (!wishes_.parts || !(isEtx || isLineEnd)) return;
    put(std::exchange(question_, {}));
    endInstruction();
    std::string rest = held();
    std::erase_if(rest, [](char c) { return c == kEtx || kLineEnds.find(c) != std::string_view::npos; });
    put(rest);
    if (isLineEnd) note(Mending::LineEnds);
    if (isEtx) note(Mending::Etx);
}

void HpglMender::holdByte(unsigned char byte) {
    const char c = static_cast<char>(byte);
    hold({&c, 1});
}

void HpglMender::flush() {
    put(std::exchange(question_, {}));
    Mender::flush();
}

void HpglMender::endInstruction() {
    put(';');
    isEnded_ = true;
    state_ = State::Between;
}

void HpglMender::finish() {
    if (state_ == State::Polyline && !polyline_.rest().empty()) endPolylineEarly(Unmendable::CutOff);
    if (!question_.empty()) {
        note(Mending::Question);
        question_.clear();
    }
    if (state_ == State::Second) refuse(Unmendable::CutOff);
    if (wishes_.ends && !isEnded_) {
        if (state_ == State::NumberList && (lastByte() == ',' || lastByte() == '.')) refuse(Unmendable::CutOff);
        put(';');
        note(Mending::End);
    }
    put(held());
    if (wishes_.ends && hidesMark_) {
        put(';');
        note(Mending::End);
    }
}

} // namespace host
