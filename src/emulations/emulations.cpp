#include "emulations/emulations.h"

#include <algorithm>
#include <iterator>

namespace emulations {

namespace {

using language::Language;

constexpr CutRule kCommaD = {.mark = {",D", 1}, .terminatorBehind = 11, .end = "@"};
constexpr CutRule kCommaDOrEtxD = {.mark = {",D", 1}, .otherwise = {"\3D", 1}, .terminatorBehind = 11};
constexpr CutRule kD = {.mark = {"D", 0}, .terminatorBehind = 11};

constexpr const char *kLineStart = ";:ECN,EF,P0,A,U,U0,0,K,";
// Enters HP-GL from the language that the plotter was in, and asks for two of its values.
constexpr const char *kSwitch = "\x1b%0B\x03NP4,\x03NP7,70,\x03NP7,76,!ST1;";
static_assert(std::char_traits<char>::length(kSwitch) == 30);

constexpr Request kSpaced[] = {{"IN-1;OH;"}};
// Area (EH, EF) and unit (ECN, EC1, ECM, EC5).
constexpr Request kArea[] = {{";:EF,EC5,ER,Q@"}, {";:EH,ECN,ER,Q@"}, {";:EH,EC1,ER,Q@"}, {";:EH,ECM,ER,Q@"},
                             {";:EH,EC5,ER,Q@"}, {";:EF,ECN,ER,Q@"}, {";:EF,EC1,ER,Q@"}, {";:EF,ECM,ER,Q@"}};
constexpr Request kCorner[] = {{"["}, {"["}, {kSwitch, 17010}};
constexpr Request kCornerTwice[] = {{"[["}, {"[["}, {kSwitch, 17010}}; // twice, to fill a packet
constexpr Request kSwitched[] = {{"IN;OH;"}, {"IN;OH;"}, {kLineStart}};

// The plotter in software looks for the line without the semicolon before it: that may be the end of an instruction, which
// must not wait for what follows.
constexpr std::string_view kLineStartHeard = std::string_view(kLineStart).substr(1);

constexpr std::string_view kDmplAway = ",;:U,P0,@"; // what a number was cut off by ends with the comma

constexpr Emulation kDefault{};
constexpr Emulation kEmulations[] = {
    {.number = kHpgl, .name = "hpgl", .usbStart = {"IN;", 1, true}, .announcesReads = true},
    {.number = 17005, .requests = kSpaced, .reply = ReplyForm::Blanks, .playedAs = Language::Hpgl},
    {.number = kDmpl,
     .name = "dmpl",
     .language = Language::Dmpl,
     .cut = kCommaD,
     .chunkSize = 255,
     .hasTools = true,
     .serialStart = ";:",
     .usbStart = {kLineStart, 2},
     .penAway = kDmplAway,
     .requests = kArea,
     .reply = ReplyForm::BehindFields,
     .givesCorners = false,
     .playedAs = Language::Dmpl},
    {.number = 17009,
     .language = {},
     .cut = kCommaDOrEtxD,
     .penAway = "",
     .requests = kCorner,
     .reply = ReplyForm::Pairs,
     .givesCorners = false,
     .announcesReads = true,
     .playedAs = Language::Hpgl,
     .questions = {kSwitch}},
    {.number = 17010,
     .givesCorners = false,
     .announcesReads = true,
     .playedAs = Language::Hpgl,
     .questions = {kSwitch, kLineStartHeard}},
    {.number = 17011, .language = {}, .cut = kD, .showsEnd = true, .penAway = ""},
    {.number = 17012, .language = {}, .cut = kD, .showsEnd = true, .penAway = ""},
    {.number = 17022, .chunkSize = 16, .announcesReads = true},
    {.number = 17030,
     .language = Language::Dmpl,
     .cut = kCommaD,
     .penAway = kDmplAway,
     .requests = kArea,
     .reply = ReplyForm::BehindFields,
     .givesCorners = false,
     .playedAs = Language::Dmpl},
    {.number = 17032, .chunkSize = 255, .reply = ReplyForm::CommasToEnd},
    // Its hosts ask in HP-GL.
    {.number = 17036,
     .language = Language::Dmpl,
     .cut = kCommaD,
     .penAway = kDmplAway,
     .playedAs = Language::Dmpl,
     .questions = {"IN;OH;"}},
    {.number = 17037, .chunkSize = 16, .announcesReads = true},
};

/// The first row that fits decides.
constexpr int32_t kAny = 0;
constexpr struct {
    uint16_t vendor;
    int32_t emulation;
    Requests requests;
} kUsbRequests[] = {
    {0x099F, kDmpl, kArea},  {0x099F, 17030, kArea},       {0x0B4D, 17010, kSwitched},
    {0x0C30, kAny, kSpaced}, {0x0B4D, kAny, kCornerTwice},
};

} // namespace

const Emulation &of(int64_t number) noexcept {
    const auto *row = std::ranges::find(kEmulations, number, &Emulation::number);
    return row == std::end(kEmulations) ? kDefault : *row;
}

const Emulation *named(std::string_view name) noexcept {
    const auto *row = std::ranges::find(kEmulations, name, &Emulation::name);
    return row == std::end(kEmulations) || name.empty() ? nullptr : row;
}

Requests usbRequests(uint16_t vendor, int32_t emulation) noexcept {
    for (const auto &row : kUsbRequests) {
        if (row.vendor == vendor && (row.emulation == emulation || row.emulation == kAny)) return row.requests;
    }
    return kHpglRequest;
}

} // namespace emulations
