// The rules by which a plotter's reply becomes the four hard-clip values.
//
// Numbers are unsigned decimals in plotter units, in the order of the reply. The rules differ by the plotter's language, and
// a little by the link. They never fail: bytes that fit no rule are skipped, and what is not complete stays incomplete.
#pragma once

#include "emulations/emulations.h"

#include <string_view>

namespace hardclip {

using emulations::ReplyForm;

enum class Link { Serial, Usb };

/// Which reply of a language that gives two: the first with the first pair of values, the second with the last.
enum class ReplyPart { First, Second };

/// What lives from one reply of a query to the next. All else starts afresh with each reply.
struct Reading {
    double values[4] = {};
    bool complete = false;
    int skip = 0; ///< commas to be skipped before the first value
};

/// A query's first reading: nothing read, and what stands before the values still to be skipped.
Reading readingOf(ReplyForm form) noexcept;

/// True when the reply holds a digit from lowest to '9'.
bool holdsDigit(std::string_view reply, char lowest) noexcept;

/// Reads one reply. Over serial lines some rules show what they find on the console and in the status text.
void readReply(std::string_view reply, ReplyForm form, Link link, ReplyPart part, Reading &reading);

} // namespace hardclip
