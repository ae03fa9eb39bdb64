#include "host/options/line_settings.h"

#include "host/devices/pseudo_terminal.h"
#include "host/plugin/progress.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>

namespace host {

namespace {

// The rates that the plug-in sets; any other would silently become 9600. Rate 0, which hangs up, sends nothing.
constexpr std::array kRates = {50, 75, 110, 134, 150, 200, 300, 600, 1200, 1800, 2400, 4800, 9600, 19200, 38400};

template <class Value> struct Code {
    Value value;
    int32_t code;
};
constexpr Code<int> kBits[] = {{5, kORB_DataBits5}, {6, kORB_DataBits6}, {7, kORB_DataBits7}, {8, kORB_DataBits8}};
constexpr Code<int> kStopBits[] = {{1, kORB_StopBits1}, {2, kORB_StopBits2}};
constexpr Code<const char *> kParities[] = {{"none", kORB_ParityNone}, {"even", kORB_ParityEven}, {"odd", kORB_ParityOdd}};
constexpr Code<const char *> kHandshakes[] = {{"xonxoff", kORB_FlowXonXoff}, {"hardware", kORB_FlowHardware}};

template <class Value, size_t N> std::string namesOf(const Code<Value> (&table)[N], const char *separator = "|") {
    std::vector<std::string> names;
    for (const auto &row : table)
        names.push_back(fmt::format("{}", row.value));
    return fmt::format("{}", fmt::join(names, separator));
}

/// Accepts the values of a table, and names them when it is given another.
template <class Value, size_t N> Option::Check oneOf(const Code<Value> (&table)[N]) {
    return [&table](const std::string &value) {
        bool known = std::any_of(std::begin(table), std::end(table),
                                 [&](const auto &row) { return value == fmt::format("{}", row.value); });
        return known ? std::string() : fmt::format("{} is not one of {}", value, namesOf(table, ", "));
    };
}

std::string checkRate(const std::string &value) {
    int rate = 0;
    auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), rate);
    bool whole = error == std::errc() && end == value.data() + value.size();
    if (whole && std::find(kRates.begin(), kRates.end(), rate) != kRates.end()) return {};
    return fmt::format("{} is not a rate that the plug-in can set; choose one of {}", value, fmt::join(kRates, ", "));
}

template <class Value, size_t N> int32_t codeOf(const Code<Value> (&table)[N], const auto &value) {
    return std::find_if(std::begin(table), std::end(table), [&](const auto &row) { return value == row.value; })->code;
}

} // namespace

void addLineOptions(const Command &app, LineSettings &settings) {
    const char *group = "Line settings";
    app.option("--baud", settings.baud, "Rate in bit/s, 50 to 38400 (9600)").check(checkRate).valueName("RATE").group(group);
    app.option("--bits", settings.bits, "Data bits (8)").check(oneOf(kBits)).valueName(namesOf(kBits)).group(group);
    app.option("--parity", settings.parity, "Parity (none)")
        .check(oneOf(kParities))
        .valueName(namesOf(kParities))
        .group(group);
    app.option("--stop-bits", settings.stopBits, "Stop bits (1)")
        .check(oneOf(kStopBits))
        .valueName(namesOf(kStopBits))
        .group(group);
    app.option("--handshake", settings.handshake, "How the plotter holds the line (xonxoff)")
        .check(oneOf(kHandshakes))
        .valueName(namesOf(kHandshakes))
        .group(group);
}

std::string settingsText(const LineSettings &settings) {
    return fmt::format("{} bit/s, {} data bits, parity {}, {} stop bit{}, handshake {}", settings.baud, settings.bits,
                       settings.parity, settings.stopBits, settings.stopBits == 1 ? "" : "s", settings.handshake);
}

double secondsFor(int64_t bytes, const LineSettings &settings) {
    constexpr int kStartBits = 1;
    int bitsPerByte = kStartBits + settings.bits + (settings.parity == "none" ? 0 : 1) + settings.stopBits;
    return static_cast<double>(bytes) * bitsPerByte / settings.baud;
}

const char *whyHeld(int fd, const LineSettings &settings) {
    switch (waitOnLine(fd, settings.handshake == "hardware")) {
    case Wait::ClearToSend: return "CTS is down";
    case Wait::XoffOrNothing: return "held by XOFF, or not taking data";
    default: return "not taking data";
    }
}

const char *settingsRemedy(const std::string &port) {
    struct stat node;
    const bool isPty = stat(port.c_str(), &node) == 0 && isPseudoTerminal(node.st_rdev);
    return isPty ? "a pseudo-terminal, such as the simulator's port, keeps 8 data bits without parity: leave --bits and "
                   "--parity out"
                 : "try other line settings, such as --bits 8";
}

void applyLineSettings(const LineSettings &settings, ORB_ServiceRecord &record) {
    record.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    record.ORB_baudRate = settings.baud;
    record.ORB_dataBits = codeOf(kBits, settings.bits);
    record.ORB_stopBits = codeOf(kStopBits, settings.stopBits);
    record.ORB_parity = codeOf(kParities, settings.parity);
    record.ORB_flowControl = codeOf(kHandshakes, settings.handshake);
}

} // namespace host
