#include "language/hpgl_escapes.h"

namespace language::hpgl {

namespace {

constexpr std::string_view kWithParameters = "@HIMNPQST"; // up to a colon; the other letters stand alone
constexpr std::string_view kRequests = "ABELOS";
constexpr uint32_t kUniversalExit = 12345;
constexpr uint32_t kMostData = 1'000'000;

bool within(std::string_view set, unsigned char byte) { return set.find(static_cast<char>(byte)) != std::string_view::npos; }
bool isDigit(unsigned char byte) { return byte >= '0' && byte <= '9'; }
bool isUpper(unsigned char byte) { return byte >= '@' && byte <= 'Z'; }

uint32_t append(uint32_t number, unsigned char digit) {
    return number < kMostData ? number * 10 + (digit - uint32_t{'0'}) : number;
}

} // namespace

EscapeScanner::Step EscapeScanner::take(unsigned char byte) noexcept {
    switch (state_) {
    case State::Control: return deviceControl(byte);
    case State::Parameters:
        if (byte == ':') return Step::Done;
        // Parameters may be left out along with their colon; then the next byte is none of theirs.
        return isDigit(byte) || within("; ,-", byte) ? Step::More : Step::DoneAway;
    case State::Mode: return modeSwitch(byte);
    case State::Group: state_ = State::Command; return printerCommand(byte);
    case State::Command: return printerCommand(byte);
    case State::Data: return --number_ == 0 ? Step::Done : Step::More;
    case State::First: break;
    }
    if (byte == '.')
        state_ = State::Control;
    else if (byte == '%')
        state_ = State::Mode;
    else if (within("&*()", byte))
        state_ = State::Group;
    else {
        if (byte == 'E') meaning_ = Meaning::Reset;
        // A control byte is not part of any sequence.
        return byte < ' ' ? Step::DoneAway : Step::Done;
    }
    return Step::More;
}

EscapeScanner::Step EscapeScanner::deviceControl(unsigned char letter) noexcept {
    meaning_ = Meaning::DeviceControl;
    text_[2] = static_cast<char>(letter);
    if (within(kRequests, letter)) meaning_ = Meaning::Request;
    if (!within(kWithParameters, letter)) return Step::Done;
    state_ = State::Parameters;
    return Step::More;
}

EscapeScanner::Step EscapeScanner::modeSwitch(unsigned char byte) noexcept {
    if (isDigit(byte)) {
        number_ = append(number_, byte);
        return Step::More;
    }
    if (byte == '-') {
        negative_ = true;
        return Step::More;
    }
    if (byte == 'A') meaning_ = Meaning::Leave;
    if (byte == 'B') meaning_ = Meaning::Enter;
    if (byte == 'X' && negative_ && number_ == kUniversalExit) meaning_ = Meaning::Exit;
    return isUpper(byte) ? Step::Done : Step::DoneAway;
}

EscapeScanner::Step EscapeScanner::printerCommand(unsigned char byte) noexcept {
    if (isDigit(byte)) {
        number_ = append(number_, byte);
        return Step::More;
    }
    if (byte < ' ') return Step::DoneAway;
    if (!isUpper(byte)) {
        number_ = 0; // the group's letter, a sign, or a command that another one follows
        return Step::More;
    }
    if (byte != 'W' || number_ == 0) return Step::Done;
    state_ = State::Data;
    return Step::More;
}

} // namespace language::hpgl
