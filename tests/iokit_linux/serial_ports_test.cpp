#include "registry_fixture.h"

namespace {

std::string tty(const std::string &parent, const std::string &name, const std::string &attributes = "") {
    return "P: " + parent + "/tty/" + name + "\nN: " + name + "\nE: DEVNAME=/dev/" + name + "\nE: SUBSYSTEM=tty\n" +
           attributes + "\n";
}

std::string parent(const std::string &path, const std::string &subsystem) {
    return "P: " + path + "\nE: SUBSYSTEM=" + subsystem + "\n\n";
}

TEST_F(RegistryTest, SerialPortsWithHardwareInNaturalOrder) {
    const std::string adapters = bed::DeviceBed::usbPath("1-1") + "/1-1:1.0";
    bed->addUsb("1-1", {18, 1, 0, 2, 0, 0, 0, 64, 3, 4, 1, 0x60, 0, 6, 0, 0, 0, 0}, 1);
    for (const char *name : {"ttyUSB10", "ttyUSB2", "ttyUSB0"}) {
        bed->add(parent(adapters + "/" + name, "usb-serial"));
        bed->add(tty(adapters + "/" + name, name));
    }
    bed->add(parent("/devices/pnp0/00:04", "pnp") + tty("/devices/pnp0/00:04", "ttyS0", "A: type=4\\n\n"));
    bed->add(parent("/devices/platform/serial8250", "platform") +
             tty("/devices/platform/serial8250", "ttyS1", "A: type=0\\n\n"));
    bed->add(parent("/devices/virtual/bluetooth/hci0", "bluetooth") + tty("/devices/virtual/bluetooth/hci0", "rfcomm0"));
    bed->add(tty("/devices/virtual", "tty1") + tty("/devices/virtual", "console") + tty("/devices/virtual", "ptmx"));

    Strings names;
    forEach("IOSerialBSDClient",
            [&](io_object_t service) {
                names.push_back(text(service, "IOTTYDevice"));
                EXPECT_EQ(text(service, "IOCalloutDevice"), "/dev/" + names.back());
                EXPECT_EQ(text(service, "IODialinDevice"), "/dev/" + names.back());
                EXPECT_EQ(registry.createProperty(service, "IOTTYSuffix"), 0U);
            },
            {{"IOSerialBSDClientType", "IORS232SerialStream"}});
    EXPECT_EQ(names, Strings({"rfcomm0", "ttyS0", "ttyUSB0", "ttyUSB2", "ttyUSB10"}));

    forEach("IOSerialBSDClient", [](io_object_t) { ADD_FAILURE() << "a modem stream"; },
            {{"IOSerialBSDClientType", "IOModemSerialStream"}});
}

TEST_F(RegistryTest, NoSerialPort) {
    forEach("IOSerialBSDClient", [](io_object_t) { ADD_FAILURE() << "a port without a device"; });
}

} // namespace
