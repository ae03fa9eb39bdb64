// The rows of the port list, from what udev tells of made-up terminals.
#include "host/devices/serial_ports.h"

#include <gtest/gtest.h>
#include <optional>

namespace {

using host::PortParent;
using host::TerminalFacts;

const PortParent kPnp{"pnp", "serial", "", "", "", ""};
const PortParent kHub{"usb", "usb", "1d6b", "0002", "Linux", "xHCI Host Controller"};
const PortParent kAdapter{"usb", "usb", "0403", "6001", "FTDI", "FT232R USB UART"};
const PortParent kInterface{"usb", "ftdi_sio", "", "", "", ""};

TerminalFacts terminal(const std::string &name, std::vector<PortParent> parents) {
    return {name, "/dev/" + name, "", {}, std::move(parents), {}};
}

TEST(Ports, RowsOfMadeUpTerminals) {
    TerminalFacts linked = terminal("ttyUSB0", {{"usb-serial", "ftdi_sio", "", "", "", ""}, kInterface, kAdapter, kHub});
    linked.links = "/dev/serial/by-path/pci-0-usb /dev/serial/by-id/usb-FTDI_A1-if00-port0 /dev/plotter";
    TerminalFacts onBoard =
        terminal("ttyS0", {{"serial-base", "port", "", "", "", ""}, {"serial-base", "ctrl", "", "", "", ""}, kPnp});
    onBoard.type = "4";
    PortParent nameless = kAdapter, hostile = kAdapter;
    nameless.text = nameless.manufacturer = "";
    hostile.text = "Plot\x1B[2J\xFF";
    const struct {
        const char *what;
        TerminalFacts facts;
        const char *stableName, *bus, *hardware, *driver;
    } kRows[] = {
        {"an adapter", linked, "/dev/serial/by-id/usb-FTDI_A1-if00-port0", "usb", "0403:6001 FT232R USB UART", "ftdi_sio"},
        {"a modem without a serial bus", terminal("ttyACM0", {{"usb", "cdc_acm", "", "", "", ""}, kAdapter}), "", "usb",
         "0403:6001 FT232R USB UART", "cdc_acm"},
        {"an adapter without texts", terminal("ttyUSB1", {kInterface, nameless}), "", "usb", "0403:6001", "ftdi_sio"},
        {"an adapter that says escape sequences", terminal("ttyUSB2", {kInterface, hostile}), "", "usb",
         "0403:6001 Plot\\e[2J\\xFF", "ftdi_sio"},
        {"a port on the board", onBoard, "", "pnp", "pnp", "serial"},
        {"a port of a kernel without layers", terminal("ttyS1", {kPnp}), "", "pnp", "pnp", "serial"},
        {"a port whose driver is one further out",
         terminal("ttyS2", {{"platform", "", "", "", "", ""}, {"pci", "serial_pci", "", "", "", ""}}), "", "platform",
         "platform", "serial_pci"},
        {"a radio link", terminal("rfcomm0", {{"bluetooth", "", "", "", "", ""}}), "", "bluetooth", "bluetooth", ""},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        auto port = host::portOf(row.facts);
        ASSERT_TRUE(port);
        EXPECT_EQ(port->name, row.facts.name);
        EXPECT_EQ(port->path, row.facts.node);
        EXPECT_EQ(port->stableName, row.stableName);
        EXPECT_EQ(port->bus, row.bus);
        EXPECT_EQ(port->hardware(), row.hardware);
        EXPECT_EQ(port->driver, row.driver);
    }
}

TEST(Ports, TerminalsThatAreNone) {
    TerminalFacts spare = terminal("ttyS3", {kPnp});
    spare.type = "0";
    TerminalFacts nodeless = terminal("ttyUSB0", {kInterface, kAdapter});
    nodeless.node = "";
    EXPECT_FALSE(host::portOf(terminal("tty1", {}))) << "a console";
    EXPECT_FALSE(host::portOf(spare)) << "no chip was found for it";
    EXPECT_FALSE(host::portOf(nodeless));
}

} // namespace
