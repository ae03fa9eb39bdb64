#include "virtual_plotter/face/replies.h"

#include <array>
#include <cmath>
#include <initializer_list>

namespace virtual_plotter {

namespace {

constexpr const char *kName = "ORB1";

/// Whole numbers, for that is what hosts read.
std::string list(std::initializer_list<double> numbers, char separator = ',') {
    std::string text;
    for (double number : numbers) {
        if (!text.empty()) text += separator;
        text += std::to_string(std::llround(number));
    }
    return text;
}

std::string corners(const Rectangle &r, char separator = ',') {
    return list({r.lower.x, r.lower.y, r.upper.x, r.upper.y}, separator);
}

/// Bits of the status byte.
enum : int { kPenDown = 1, kFresh = 8, kReady = 16, kError = 32 };

std::string status(const Asked &asked) {
    const bool isWrong = asked.unknown + asked.malformed > 0;
    return std::to_string(kReady | (asked.pen.down ? kPenDown : 0) | (asked.isFresh ? kFresh : 0) | (isWrong ? kError : 0));
}

/// 0 none, 1 an instruction that is unknown, 2 one with wrong parameters.
std::string error(const Asked &asked) { return asked.unknown > 0 ? "1" : asked.malformed > 0 ? "2" : "0"; }

struct Reply {
    std::string_view request;
    std::string (*text)(const Asked &);
};

constexpr Reply kReplies[] = {
    {"OA",
     [](const Asked &a) {
         return list({a.pen.at.x, a.pen.at.y, a.pen.down ? 1.0 : 0.0});
     }},
    {"OC",
     [](const Asked &a) {
         return list({a.pen.atUser.x, a.pen.atUser.y, a.pen.down ? 1.0 : 0.0});
     }},
    {"OD",
     [](const Asked &a) {
         return list({a.pen.at.x, a.pen.at.y, a.pen.down ? 1.0 : 0.0});
     }},
    {"OE", error},
    {"OF",
     [](const Asked &) {
         return list({kUnitsPerMillimetre, kUnitsPerMillimetre});
     }},
    {"OH", [](const Asked &a) { return corners(a.pen.hardClip); }},
    {"OI", [](const Asked &) { return std::string(kName); }},
    // Options: no paper feed, selects pens, two reserved, draws arcs, fills polygons, no memory for definitions, two
    // reserved.
    {"OO",
     [](const Asked &) {
         return list({0, 1, 0, 0, 1, 1, 0, 0});
     }},
    {"OP", [](const Asked &a) { return corners(a.pen.scalingPoints); }},
    {"OS", status},
    {"OW", [](const Asked &a) { return corners(a.pen.window); }},
    // Device control: name, free buffer, error of the line, buffer, and extended status (8: the buffer is empty).
    {"\x1B.A", [](const Asked &) { return std::string(kName) + ",1"; }},
    {"\x1B.B", [](const Asked &a) { return std::to_string(a.freeBytes); }},
    {"\x1B.E", [](const Asked &) { return std::string("0"); }},
    {"\x1B.L", [](const Asked &a) { return std::to_string(a.bufferBytes); }},
    {"\x1B.O", [](const Asked &a) { return std::string(a.freeBytes == a.bufferBytes ? "8" : "0"); }},
    {"\x1B.S", [](const Asked &a) { return std::to_string(a.bufferBytes); }},
};

/// Plotter units in one unit of the ";:" language, by its code.
constexpr struct {
    char code;
    double plotterUnits;
} kUnits[] = {{'1', 1.016}, {'5', 5.08}, {'M', 4.0}, {'N', 1.0}};

/// "EH,ECN,ER": four numbers on the state of the plotter, then the limits in the unit that the question chose. A comma ends
/// each, for not every host takes the last number without it.
std::string areaReply(std::string_view request, const PenStatus &pen) {
    double size = 1;
    const size_t code = request.find("EC");
    for (const auto &unit : kUnits) {
        if (code != std::string_view::npos && code + 2 < request.size() && unit.code == request[code + 2])
            size = unit.plotterUnits;
    }
    const Rectangle &r = pen.hardClip;
    return list({0, 0, 0, 0, r.lower.x / size, r.lower.y / size, r.upper.x / size, r.upper.y / size}) + ",\r";
}

} // namespace

std::string replyTo(std::string_view request, const Asked &asked, ReplyForm form) {
    if (request == "OH" && form == ReplyForm::Blanks) return corners(asked.pen.hardClip, ' ') + " \r";
    if (request.ends_with(",ER")) return areaReply(request, asked.pen);
    for (const Reply &reply : kReplies) {
        if (reply.request == request) return reply.text(asked) + '\r';
    }
    return {};
}

std::string limitsReply(const Rectangle &hardClip) { return corners(hardClip) + '\r'; }

std::string cornerReply(const Point &corner) { return list({corner.x, corner.y}) + '\r'; }

} // namespace virtual_plotter
