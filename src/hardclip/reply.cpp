#include "hardclip/reply.h"

#include "platform/posix/console.h"
#include "record/status_text.h"

#include <algorithm>

namespace hardclip {

namespace {

constexpr double kFirstPairMark = 111.0; // stored as the fourth value when only the first pair was read

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The number being read. After markEmpty() it is -1 until a digit comes.
class Accumulator {
public:
    void add(char digit) { value_ = value_ * 10 < 0 ? digit - '0' : value_ * 10 + (digit - '0'); }
    double value() const { return value_; }
    bool isZero() const { return value_ == 0; }
    bool isEmpty() const { return value_ < 0; }
    void clear() { value_ = 0; }
    void markEmpty() { value_ = -1; }

private:
    double value_ = 0;
};

void showOnConsole(int number, double value) { posix::printf("ORB_HARDC_%d = ORB_Double : %lf\n", number, value); }
void showInStatus(int number, double value) { setStatusFormat("ORB_HARDC_%d = ORB_Double : %lf", number, value); }

/// Numbers separated by commas, ended by a comma or by any byte that is none of theirs.
void readCommas(std::string_view reply, Link link, bool endsAnyhow, Reading &reading) {
    Accumulator number;
    int fields = 0;
    for (char c : reply) {
        if (fields > 3) break;
        if (c == ' ' || c == ')') continue;
        if (isDigit(c)) {
            number.add(c);
        } else if (c == ',') {
            reading.values[fields++] = number.value();
            if (link == Link::Serial) showOnConsole(fields, number.value());
            if (fields == 4) reading.complete = true;
            number.clear();
        } else if (fields == 3 && !number.isZero()) {
            reading.values[3] = number.value();
            reading.complete = true;
            if (link == Link::Usb) fields = 4; // a serial reply is read on, and sets the value again
        }
    }
    if (link == Link::Serial || fields != 3) return;
    if (!number.isZero() && reading.values[3] == 0) {
        reading.values[3] = number.value();
        reading.complete = true;
    }
    if (endsAnyhow) reading.complete = true;
}

/// Numbers separated by blanks; a '%' starts anew, and a blank right behind it, or at the start, separates nothing.
void readBlanks(std::string_view reply, Link link, Reading &reading) {
    Accumulator number;
    int fields = 0;
    size_t start = 0;
    for (size_t i = 0; i < reply.size() && fields <= 3; ++i) {
        char c = reply[i];
        if (c == '%') {
            start = i + 1;
            fields = 0;
        } else if (c == ' ' && i == start) {
            posix::puts("< ORB_startspace found >");
        } else if (c == ' ') {
            reading.values[fields++] = number.value();
            if (fields < 4 || link == Link::Serial) showOnConsole(fields, number.value());
            if (fields == 4) reading.complete = true;
            number.clear();
        } else if (c == ',') {
            posix::printf("< comma found here in MHGL , >");
        } else if (isDigit(c)) {
            number.add(c);
        } else if (c != ')' && fields == 3 && !number.isZero()) {
            reading.values[3] = number.value();
            reading.complete = true;
        }
    }
}

/// What is left of the reply behind the commas that are still to be skipped; nothing when it holds fewer.
std::string_view behindSkipped(std::string_view reply, Link link, int &skip) {
    if (skip == 0) return reply;
    if (link == Link::Usb) {
        if (size_t open = reply.find("(0"); open != std::string_view::npos) reply.remove_prefix(open + 1);
    }
    for (size_t i = 0; i < reply.size(); ++i) {
        if (reply[i] == ',' && --skip == 0) return reply.substr(i + 1);
    }
    return {};
}

/// Four numbers behind four other fields, over a serial line.
void readSkippedSerial(std::string_view reply, Reading &reading) {
    Accumulator number;
    int fields = 0;
    for (char c : behindSkipped(reply, Link::Serial, reading.skip)) {
        if (c == ' ' || c == ')') continue;
        if (isDigit(c)) {
            number.add(c);
            continue;
        }
        if (c == ',') {
            ++fields;
        } else if (fields == 3 && !number.isZero()) {
            fields = 4;
        } else {
            continue;
        }
        reading.values[fields - 1] = number.value();
        if (fields == 2) showOnConsole(fields, number.value());
        showInStatus(fields, number.value());
        number.clear();
        if (fields == 4) {
            reading.complete = true;
            return;
        }
    }
}

/// The same over USB: only the fourth comma ends the fourth number.
void readSkippedUsb(std::string_view reply, Reading &reading) {
    Accumulator number;
    int fields = 0;
    for (char c : behindSkipped(reply, Link::Usb, reading.skip)) {
        if (isDigit(c)) number.add(c);
        if (c != ',') continue;
        reading.values[fields++] = number.value();
        number.clear();
        if (fields == 4) {
            reading.complete = true;
            return;
        }
    }
}

/// A pair of numbers over a serial line: values 1 and 2, or 3 and 4.
void readPairSerial(std::string_view reply, ReplyPart part, Reading &reading) {
    const bool first = part == ReplyPart::First;
    double *pair = reading.values + (first ? 0 : 2);
    Accumulator number;
    bool behindComma = false;
    for (char c : reply) {
        if (isDigit(c)) {
            number.add(c);
        } else if (!behindComma) {
            if (c != ',') continue;
            pair[0] = number.value();
            if (!first) showInStatus(3, number.value());
            reading.complete = false;
            number.markEmpty();
            behindComma = true;
        } else {
            if (c == ')' || c == ',' || (c == ' ' && !first) || number.isEmpty()) continue;
            // Any other byte ends the pair, and each further one ends it again, with what came since.
            pair[1] = number.value();
            if (first) reading.values[3] = kFirstPairMark;
            reading.complete = true;
            number.clear();
        }
    }
}

/// The first pair over USB: complete with the reply's end, whatever it holds.
void readFirstPairUsb(std::string_view reply, Reading &reading) {
    Accumulator number;
    bool behindComma = false;
    for (char c : reply) {
        if (isDigit(c)) number.add(c);
        if (c != ',' || behindComma) continue;
        reading.values[0] = number.value();
        reading.values[2] = kFirstPairMark;
        number.markEmpty();
        behindComma = true;
    }
    reading.values[1] = number.value();
    reading.values[3] = kFirstPairMark;
    reading.complete = true;
}

void readSecondPairUsb(std::string_view reply, Reading &reading) {
    Accumulator number;
    bool behindComma = false;
    for (char c : reply) {
        if (isDigit(c)) number.add(c);
        if (isDigit(c) || behindComma || c == ' ' || c == ')') continue;
        reading.values[2] = number.value();
        if (c != ',') continue;
        number.clear();
        behindComma = true;
    }
    reading.values[3] = number.value();
    reading.complete = true;
}

void readPair(std::string_view reply, Link link, ReplyPart part, Reading &reading) {
    if (link == Link::Serial) return readPairSerial(reply, part, reading);
    return part == ReplyPart::First ? readFirstPairUsb(reply, reading) : readSecondPairUsb(reply, reading);
}

} // namespace

Reading readingOf(ReplyForm form) noexcept { return {.skip = form == ReplyForm::BehindFields ? 4 : 0}; }

bool holdsDigit(std::string_view reply, char lowest) noexcept {
    return std::any_of(reply.begin(), reply.end(), [lowest](char c) { return c >= lowest && c <= '9'; });
}

void readReply(std::string_view reply, ReplyForm form, Link link, ReplyPart part, Reading &reading) {
    if (link == Link::Usb) reading.complete = false;
    switch (form) {
    case ReplyForm::Blanks:
        // Over USB any digit but 0 makes such a reply complete; values that did not come stay 0.
        if (link == Link::Usb) reading.complete = holdsDigit(reply, '1');
        return readBlanks(reply, link, reading);
    case ReplyForm::BehindFields:
        return link == Link::Serial ? readSkippedSerial(reply, reading) : readSkippedUsb(reply, reading);
    case ReplyForm::Pairs: return readPair(reply, link, part, reading);
    case ReplyForm::Commas: return readCommas(reply, link, false, reading);
    case ReplyForm::CommasToEnd: return readCommas(reply, link, true, reading);
    }
}

} // namespace hardclip
