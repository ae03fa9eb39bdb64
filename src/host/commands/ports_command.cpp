// vectorix ports: the serial ports there are, and whether they can be printed to.
#include "host/commands/commands.h"
#include "host/devices/holders.h"
#include "host/devices/node_access.h"
#include "host/devices/serial_ports.h"
#include "host/terminal/json.h"
#include "host/terminal/output.h"
#include "host/terminal/table.h"
#include "host/terminal/text.h"

#include <fmt/format.h>
#include <memory>

namespace host {

namespace {

/// A port's node as it is now.
struct PortState {
    NodeAccess access = NodeAccess::NoNode;
    std::string group; ///< that would give access
    std::vector<Holder> holders;
};

PortState stateOf(const SerialPort &port) {
    PortState state;
    state.access = accessTo(port.path);
    struct stat node;
    if (stat(port.path.c_str(), &node) != 0) return state;
    state.group = groupWithAccess(node);
    state.holders = holdersOf(node);
    if (Holder locker = uucpHolder(port.path); state.holders.empty() && locker.pid != 0) state.holders.push_back(locker);
    return state;
}

std::string accessText(const PortState &state) {
    std::string text = accessText(state.access);
    if (state.access == NodeAccess::NoPermission && !state.group.empty()) text += " (group " + state.group + ")";
    return text;
}

std::string holderTexts(const std::vector<Holder> &holders) {
    std::string text;
    for (const Holder &holder : holders)
        text += (text.empty() ? "" : ", ") + holderText(holder);
    return text;
}

Json jsonOf(const SerialPort &port) {
    PortState state = stateOf(port);
    Json holders = Json::array();
    for (const Holder &holder : state.holders)
        holders.push_back({{"process", holder.pid}, {"name", holder.name}});
    return {{"name", port.name},
            {"path", port.path},
            {"stableName", port.stableName},
            {"bus", port.bus},
            {"vendor", port.vendor},
            {"product", port.product},
            {"manufacturer", port.manufacturer},
            {"productName", port.productText},
            {"driver", port.driver},
            {"access", accessText(state.access)},
            {"group", state.group},
            {"holders", holders}};
}

void show(const std::vector<SerialPort> &ports) {
    std::vector<std::vector<std::string>> rows = {{"NAME", "PATH", "STABLE NAME", "HARDWARE", "DRIVER", "ACCESS", "HOLDER"}};
    for (const SerialPort &port : ports) {
        PortState state = stateOf(port);
        rows.push_back({shown(port.name), shown(port.path), shown(port.stableName), port.hardware(), shown(port.driver),
                        accessText(state), holderTexts(state.holders)});
    }
    printTable(std::move(rows), "ACCESS");
}

ExitCode list(bool wantsJson) {
    std::vector<SerialPort> ports = serialPorts();
    if (ports.empty()) {
        throw Failure(ExitCode::Missing,
                      "no serial port found; plug the adapter in, and see with 'sudo dmesg | tail' whether the system knows "
                      "it. A plotter with a USB cable may be one that 'vectorix plotters' lists");
    }
    if (!wantsJson) {
        show(ports);
        return ExitCode::Done;
    }
    Json rows = Json::array();
    for (const SerialPort &port : ports)
        rows.push_back(jsonOf(port));
    printOut("{}\n", Json{{"ports", rows}}.text());
    return ExitCode::Done;
}

} // namespace

void addPortsCommand(const Command &app) {
    auto wantsJson = std::make_shared<bool>(false);
    Command command = app.add("ports", "List the serial ports");
    command.explain(
        {"Opens none of them. A stable name stays with its adapter, whatever it is plugged into; PATH and STABLE NAME\n"
         "both go to --port. Holders that the system hides from you are missing.",
         {{"vectorix ports", "A table for people."}, {"vectorix ports --json", "The same for programs."}},
         {{"ports", "a list of objects with the fields that follow"},
          {"name, path", "such as ttyUSB0 and /dev/ttyUSB0"},
          {"stableName", "below /dev/serial/by-id; empty for none"},
          {"bus, driver", "usb, pnp, …; the kernel's driver"},
          {"vendor, product", "of a USB adapter, hexadecimal"},
          {"manufacturer, productName", "as a USB adapter says them"},
          {"access, group", "ok, no permission or no node; the group that has the right to it"},
          {"holders", "programs that have it open: process, name"}}});
    command.flag("--json", *wantsJson, "As one JSON object");
    command.whenTyped([wantsJson] { return list(*wantsJson); }, wantsJson.get());
}

} // namespace host
