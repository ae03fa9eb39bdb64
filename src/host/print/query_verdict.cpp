#include "host/print/query_verdict.h"

#include "emulations/emulations.h"
#include "host/options/line_settings.h"
#include "host/print/reply_numbers.h"
#include "host/print/usb_verdict.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <string_view>

namespace host {

namespace {

constexpr double kMillimetresPerUnit = 0.025; // HP-GL's plotter unit
constexpr size_t kExcerpt = 60;
// The plug-in ends a query over USB after so many reads, complete or not, and reports no error.
constexpr uint32_t kMostUsbReads = 99;

std::string_view replyOf(const ORB_QueryReport &report) { return {report.reply, report.replyBytes}; }

Verdict fail(const QueryOutcome &outcome, ExitCode code, const std::string &text) {
    return {code, fmt::format("{}: {}", shown(outcome.source), text), {}};
}

Verdict silent(const QueryOutcome &outcome) {
    const char *settings = outcome.usb ? "" : ", do the line settings match its switches, does the cable carry its replies";
    std::string within = outcome.usb ? "" : fmt::format(" within about {} seconds", outcome.report.reads);
    return fail(outcome, ExitCode::Lost,
                fmt::format("no reply to {}{}; is the plotter on-line with paper loaded{}? Not every plotter has a reply",
                            requestShown(outcome.report), within, settings));
}

Verdict incomplete(const QueryOutcome &outcome) {
    return fail(outcome, ExitCode::Failed,
                fmt::format("the reply to {} is incomplete: \"{}\"; try again{}", requestShown(outcome.report),
                            excerpt(replyOf(outcome.report), kExcerpt),
                            outcome.usb ? ", or another --emulation"
                                        : ", compare the line settings with the plotter's switches, or try another "
                                          "--emulation"));
}

/// The question never left.
Verdict held(const QueryOutcome &outcome) {
    return fail(outcome, ExitCode::Lost,
                fmt::format("{} could not be sent: the line is held ({}); is the plotter on-line with paper loaded, and do "
                            "handshake and cable fit it?",
                            requestShown(outcome.report), outcome.whyHeld));
}

/// What was given up before it ended by itself; none when that changes nothing.
std::optional<Verdict> givenUp(const QueryOutcome &outcome) {
    const ORB_QueryReport &report = outcome.report;
    if (outcome.usb) return report.replyBytes == 0 ? silent(outcome) : incomplete(outcome);
    if (report.reads == 0 || report.errorID == kORB_ErrorUnvalidPort) return held(outcome);
    return {};
}

/// Of this vendor's plotters some listen on their first pipe, and only an identifier tells which.
bool mayListenElsewhere(const QueryOutcome &outcome) {
    constexpr uint16_t kVendor = 0x0B75;
    return !outcome.isUsbGone && outcome.usb->vendor == kVendor && outcome.usbOutPipe != 1;
}

/// The line to the plotter failed, before or after the request.
Verdict failedLink(const QueryOutcome &outcome) {
    const ORB_QueryReport &report = outcome.report;
    if (outcome.usb && !outcome.isUsbGone && report.errorID == kORB_ErrorUSBNotOpen) {
        return fail(outcome, ExitCode::Lost,
                    "its reply cannot be read; perhaps it gives none over USB. Otherwise switch it off and on, then try "
                    "again");
    }
    if (outcome.usb) {
        UsbFault fault = explainUsb(*outcome.usb, outcome.isUsbGone, report.errorID, report.status, outcome.usbOutPipe);
        if (mayListenElsewhere(outcome)) fault.text += "; if it is one of 20595 to 20597, add --plotter-id";
        return fail(outcome, fault.code, fault.text);
    }
    if (report.errorID == kORB_ErrorSetAttributes) {
        return fail(outcome, ExitCode::Failed, errorText(report.errorID) + "; " + settingsRemedy(outcome.source));
    }
    std::string what =
        report.requestBytes > 0 ? fmt::format("{} could not be sent", requestShown(report)) : errorText(report.errorID);
    return fail(outcome, ExitCode::Lost, what + "; check the cable, then try again");
}

bool givesCorners(const QueryOutcome &outcome) { return emulations::of(outcome.emulation).givesCorners; }

/// Width and height in millimetres; none where there is no area between the corners.
std::optional<std::array<double, 2>> sizeOf(const std::optional<Corners> &corners) {
    if (!corners) return {};
    double width = (*corners)[2] - (*corners)[0], height = (*corners)[3] - (*corners)[1];
    if (width <= 0 || height <= 0) return {};
    return {{width * kMillimetresPerUnit, height * kMillimetresPerUnit}};
}

/// How the record's values came to be others than what the plotter said; empty when they are the same.
std::string differenceNote(const QueryOutcome &outcome) {
    if (!givesCorners(outcome)) return {};
    const std::string_view reply = replyOf(outcome.report);
    const std::vector<double> said = numbersIn(reply);
    const auto &values = outcome.values;
    if (said.size() >= values.size() && std::equal(values.begin(), values.end(), said.begin())) return {};
    const char *why = said.size() < values.size()                 ? "too few numbers"
                      : reply.find('-') != std::string_view::npos ? "it reads numbers without their signs"
                      : reply.find('.') != std::string_view::npos ? "it reads no decimal points"
                                                                  : "it reads on behind the end of the line";
    return fmt::format("the plotter said \"{}\", of which the plug-in made {}: {}", excerpt(reply, kExcerpt),
                       fmt::join(values, ", "), why);
}

} // namespace

std::optional<Corners> cornersOf(const QueryOutcome &outcome) {
    const std::vector<double> said = numbersIn(replyOf(outcome.report));
    Corners corners;
    if (!givesCorners(outcome) || said.size() < corners.size()) return {};
    std::copy_n(said.begin(), corners.size(), corners.begin());
    return corners;
}

std::string requestShown(const ORB_QueryReport &report) { return shown({report.request, report.requestBytes}); }

std::string replyShown(const ORB_QueryReport &report) { return shown(replyOf(report)); }

Verdict judge(const QueryOutcome &outcome) {
    const ORB_QueryReport &report = outcome.report;
    if (outcome.stopped) return fail(outcome, ExitCode::Stopped, "stopped");
    if (outcome.isUsbGone && (outcome.isGivenUp || report.errorID != kORB_NoError || report.replyBytes == 0))
        return failedLink(outcome);
    if (outcome.isGivenUp) {
        if (auto verdict = givenUp(outcome)) return *verdict;
    }
    bool isIncomplete = outcome.usb && report.reads >= kMostUsbReads;
    if (report.errorID == kORB_ErrorNoReply) {
        if (report.replyBytes == 0) return silent(outcome);
        isIncomplete = true;
    } else if (report.errorID != kORB_NoError) {
        return failedLink(outcome);
    } else if (report.replyBytes == 0 && outcome.usb) {
        return silent(outcome);
    } else if (report.replyBytes == 0) {
        // Nothing was read, and no failure: the read met the line's end.
        return fail(outcome, ExitCode::Lost, "the line hung up before a reply came; check cable and power, then try again");
    }
    if (isIncomplete) return incomplete(outcome);
    if (std::all_of(outcome.values.begin(), outcome.values.end(), [](double value) { return value == 0; })) {
        return fail(outcome, ExitCode::Failed,
                    fmt::format("the reply \"{}\" gives no area; is paper loaded?", excerpt(replyOf(report), kExcerpt)));
    }
    Verdict verdict;
    if (std::string note = differenceNote(outcome); !note.empty()) verdict.notes.push_back(note);
    return verdict;
}

std::string limitLines(const QueryOutcome &outcome) {
    if (!givesCorners(outcome)) {
        const auto &values = outcome.values;
        return fmt::format("value 1      {}\nvalue 2      {}\nvalue 3      {}\nvalue 4      {}\n", values[0], values[1],
                           values[2], values[3]);
    }
    const std::optional<Corners> said = cornersOf(outcome);
    const Corners &corners = said ? *said : outcome.values;
    std::string lines =
        fmt::format("lower left   {}, {}\nupper right  {}, {}\n", corners[0], corners[1], corners[2], corners[3]);
    if (auto size = sizeOf(said)) lines += fmt::format("size         {:.1f} x {:.1f} mm\n", (*size)[0], (*size)[1]);
    return lines;
}

Json queryJson(const QueryOutcome &outcome, const Verdict &verdict) {
    const ORB_QueryReport &report = outcome.report;
    Json object = jsonOf(verdict);
    object["source"] = outcome.source;
    object["emulation"] = outcome.emulation;
    object["seconds"] = outcome.seconds;
    if (verdict.code == ExitCode::Done) {
        object["values"] = outcome.values;
        const std::optional<Corners> corners = cornersOf(outcome);
        if (corners) object["corners"] = *corners;
        if (auto size = sizeOf(corners)) {
            object["width"] = (*size)[0];
            object["height"] = (*size)[1];
        }
    }
    object["request"] = std::string(report.request, report.requestBytes);
    object["reply"] = std::string(replyOf(report));
    object["reads"] = report.reads;
    object["errorID"] = report.errorID;
    object["errorText"] = errorText(report.errorID);
    object["errorStatus"] = report.status;
    return object;
}

std::vector<JsonFields> queryFields() {
    return {
        {"exitCode, message, notes", "what became of the question; only the first two when it was not asked"},
        {"source, emulation, seconds", "who was asked, and how"},
        {"values", "the four limits of the record, in the order of the reply; absent when there are none"},
        {"corners", "lower left and upper right as the plotter said them, with signs and decimals"},
        {"width, height", "of the area between them, in mm"},
        {"request, reply", "what was sent and heard last"},
        {"reads", "tries to hear something"},
        {"errorID, errorText, errorStatus", "the failure; 22007 for none, and its system code"},
    };
}

} // namespace host
