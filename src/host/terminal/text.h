// Texts between people, files and devices. A file or a device can hold control characters, which would steer the terminal:
// what came from outside is printed through shown(), and people may type the same escapes (unescaped). Numbers, durations
// and broken lines are made here, so that they look the same in all commands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

/// The text with control characters and bytes that are not UTF-8 written as \n, \e, \xNN: safe to print.
std::string shown(std::string_view text);

/// True when the text is wholly UTF-8.
bool isUtf8(std::string_view text);

/// shown(), cut after at most limit bytes of text with an ellipsis behind it.
std::string excerpt(std::string_view text, size_t limit);

/// The bytes that a text with \n \r \t \e \xNN \\ means. Throws Failure (usage) for another escape; what names the text in
/// its message.
std::string unescaped(std::string_view text, std::string_view what);

/// Throws Failure (usage) unless the text can go to a plotter: ASCII, no NUL, at most 255 bytes.
void requirePlotterText(std::string_view text, std::string_view what);

/// 1234567 as "1 234 567".
std::string grouped(int64_t number);

/// "1 byte", "2 034 bytes".
std::string counted(int64_t number, std::string_view noun);

/// A duration as people say it: "8 s", "3 min 20 s", "2 h 5 min".
std::string duration(double seconds);

/// A length as people say it: "830 mm", "2.41 m".
std::string metres(double millimetres);

/// The text in lines of at most width characters, broken at blanks only: a longer word stays whole. The rest of a broken
/// line is indented to the line's second column, if it has one (two blanks before it), else hang characters more than the
/// line. Width 0 breaks nothing.
std::string wrapped(std::string_view text, size_t width, size_t hang = 2);

/// The number of characters in UTF-8 text.
size_t widthOf(std::string_view text);

/// The text with a small first letter, to stand inside a sentence; "USB port" keeps its capitals.
std::string lowered(std::string_view text);

} // namespace host
