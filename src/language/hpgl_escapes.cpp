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
    case State::control: return deviceControl(byte);
    case State::parameters:
        if (byte == ':') return Step::done;
        // Parameters may be left out along with their colon; then the next byte is none of theirs.
        return isDigit(byte) || within("; ,-", byte) ? Step::more : Step::doneAway;
    case State::mode: return modeSwitch(byte);
    case State::group: state_ = State::command; return printerCommand(byte);
    case State::command: return printerCommand(byte);
    case State::data: return --number_ == 0 ? Step::done : Step::more;
    case State::first: break;
    }
    if (byte == '.')
        state_ = State::control;
    else if (byte == '%')
        state_ = State::mode;
    else if (within("&*()", byte))
        state_ = State::group;
    else {
        if (byte == 'E') meaning_ = Meaning::reset;
        // A control byte is not part of any sequence.
        return byte < ' ' ? Step::doneAway : Step::done;
    }
    return Step::more;
}

EscapeScanner::Step EscapeScanner::deviceControl(unsigned char letter) noexcept {
    meaning_ = Meaning::deviceControl;
    text_[2] = static_cast<char>(letter);
    if (within(kRequests, letter)) meaning_ = Meaning::request;
    if (!within(kWithParameters, letter)) return Step::done;
    state_ = State::parameters;
    return Step::more;
}

EscapeScanner::Step EscapeScanner::modeSwitch(unsigned char byte) noexcept {
    if (isDigit(byte)) {
        number_ = append(number_, byte);
        return Step::more;
    }
    if (byte == '-') {
        negative_ = true;
        return Step::more;
    }
    if (byte == 'A') meaning_ = Meaning::leave;
    if (byte == 'B') meaning_ = Meaning::enter;
    if (byte == 'X' && negative_ && number_ == kUniversalExit) meaning_ = Meaning::exit;
    return isUpper(byte) ? Step::done : Step::doneAway;
}

EscapeScanner::Step EscapeScanner::printerCommand(unsigned char byte) noexcept {
    if (isDigit(byte)) {
        number_ = append(number_, byte);
        return Step::more;
    }
    if (byte < ' ') return Step::doneAway;
    if (!isUpper(byte)) {
        number_ = 0; // the group's letter, a sign, or a command that another one follows
        return Step::more;
    }
    if (byte != 'W' || number_ == 0) return Step::done;
    state_ = State::data;
    return Step::more;
}

} // namespace language::hpgl
