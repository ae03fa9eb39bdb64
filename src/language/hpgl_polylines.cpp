// HP-GL/2: encoded polylines. A number is a row of digits, the lowest first; the last one is marked by its range of bytes.
// Base 64 has 63..126 and, for the last digit, 191..254; base 32, for lines of seven bits, 63..94 and 95..126. The number's
// lowest bit is its sign, and as many bits above it as the job has announced are binary places.
#include "language/hpgl_handlers.h"

#include <algorithm>
#include <cmath>

namespace language::hpgl {

namespace {

constexpr unsigned kMostBits = 58; // a number of more is far beyond kLargest: its higher digits are dropped
constexpr int kMostFractionBits = 26;
constexpr unsigned char kLowestDigit = 63;

void number(Plotter &p) {
    Polyline &line = p.polyline;
    const bool negative = (line.bits & 1) != 0;
    const double whole = static_cast<double>(line.bits >> 1);
    line.bits = 0;
    line.shift = 0;
    const double value = negative ? -whole : whole;
    switch (line.next) {
    case Polyline::Pen:
        line.next = Polyline::Coordinate;
        selectPen(p, Numbers(&value, 1));
        return;
    case Polyline::Fraction:
        line.next = Polyline::Coordinate;
        line.fractionBits = static_cast<int>(std::max(-1.0 * kMostFractionBits, std::min<double>(value, kMostFractionBits)));
        return;
    case Polyline::Coordinate: break;
    }
    const double coordinate = clamped(std::ldexp(value, -line.fractionBits));
    if (!line.x) {
        line.x = coordinate;
        return;
    }
    const Point to = p.placeOf({*line.x, coordinate}, !line.absolute);
    if (line.up)
        p.lift();
    else
        p.down = true;
    p.go(to);
    p.lettering.lineStart = p.at;
    if (p.lettering.symbol != 0 && !p.defining) drawSymbol(p);
    line.x.reset();
    line.absolute = line.up = false;
}

} // namespace

void beginPolyline(Plotter &p) {
    p.polyline = {};
    p.lettering.lineStart = p.at;
}

bool polylineByte(Plotter &p, unsigned char byte) {
    Polyline &line = p.polyline;
    const unsigned char low = byte & 0x7f;
    if (line.sevenBit) byte = low;
    const unsigned base = line.sevenBit ? 32 : 64;
    const bool last = line.sevenBit ? byte >= kLowestDigit + 32 && byte <= 126 : byte >= 128 + kLowestDigit && byte <= 254;
    const bool digit = last || (byte >= kLowestDigit && byte < kLowestDigit + base && byte <= 126);
    if (digit) {
        const unsigned value =
            last ? byte - (line.sevenBit ? kLowestDigit + 32u : kLowestDigit + 128u) : byte - kLowestDigit;
        if (line.shift < kMostBits) line.bits |= static_cast<uint64_t>(value) << line.shift;
        line.shift += line.shift < kMostBits ? (line.sevenBit ? 5 : 6) : 0;
        if (last) number(p);
        return true;
    }
    switch (low) {
    case ':': line.next = Polyline::Pen; return true;
    case '>': line.next = Polyline::Fraction; return true;
    case '<': line.up = true; return true;
    case '=': line.absolute = true; return true;
    case '7': line.sevenBit = true; return true;
    default: return low <= ' ' || low == 127 || byte >= 128;
    }
}

bool endPolyline(Plotter &p) { return !p.polyline.x && p.polyline.shift == 0; }

} // namespace language::hpgl
