#include "host/plugin/usb_target.h"

#include "host/plugin/record.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace host {

namespace {

bool matches(const UsbDevice &device, const UsbChoice &choice) {
    if (!choice.vendor) return device.isPlotter;
    return device.vendor == choice.vendor && device.product == choice.product &&
           (!choice.location || device.location == choice.location);
}

Failure noDevice(const UsbChoice &choice) {
    if (!choice.vendor) {
        return {ExitCode::Missing, "no USB plotter found; check cable and power, or name yours with --usb V:P ('lsusb' "
                                   "shows V:P)"};
    }
    return {ExitCode::Missing,
            fmt::format("no USB device {:04x}:{:04x}{}; check cable and power, and compare with 'vectorix plotters'",
                        *choice.vendor, *choice.product, choice.location ? fmt::format("@{:08x}", *choice.location) : "")};
}

} // namespace

std::optional<uint32_t> parseHex(std::string_view text, size_t digits) {
    if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") text.remove_prefix(2);
    uint32_t number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && text.size() <= digits ? std::optional(number) : std::nullopt;
}

UsbChoice parseUsbChoice(std::string_view text) {
    if (text.empty()) return {};
    UsbChoice choice;
    size_t at = text.find('@');
    std::string_view model = text.substr(0, at);
    size_t colon = model.find(':');
    auto vendor = parseHex(model.substr(0, colon), 4);
    auto product = colon == std::string_view::npos ? std::nullopt : parseHex(model.substr(colon + 1), 4);
    if (at != std::string_view::npos) choice.location = parseHex(text.substr(at + 1), 8);
    if (!vendor || !product || (at != std::string_view::npos && !choice.location)) {
        throw Failure(ExitCode::Usage,
                      fmt::format("--usb: {}: type V:P or V:P@LOCATION, as 'vectorix plotters' shows them", shown(text)));
    }
    choice.vendor = static_cast<uint16_t>(*vendor);
    choice.product = static_cast<uint16_t>(*product);
    return choice;
}

std::vector<UsbDevice> matchingUsbDevices(const std::vector<UsbDevice> &devices, const UsbChoice &choice) {
    std::vector<UsbDevice> found;
    std::copy_if(devices.begin(), devices.end(), std::back_inserter(found),
                 [&](const UsbDevice &device) { return matches(device, choice); });
    return found;
}

UsbDevice chooseUsbDevice(const std::vector<UsbDevice> &devices, const UsbChoice &choice) {
    std::vector<UsbDevice> found = matchingUsbDevices(devices, choice);
    if (found.empty()) throw noDevice(choice);
    if (found.size() == 1) return found.front();
    std::string list;
    for (const UsbDevice &device : found)
        list += fmt::format("\n  --usb {}  {}", device.id(), device.title());
    throw Failure(ExitCode::Usage, fmt::format("--usb: {} plotters are connected; name one:{}", found.size(), list));
}

ORB_ServiceRecord listPlotters(uint16_t vendor, uint16_t product) {
    ORB_ServiceRecord record = emptyRecord(kORB_ServiceListPlotters);
    record.ORB_USBidVendor = vendor;
    record.ORB_USBidProduct = product;
    record = ORB_getVectorixCS2(record);
    releaseStrings(record);
    record.ORB_CFSTR_message = 0;
    if (record.ORB_errorID == kORB_ErrorNoPlotter) {
        UsbChoice choice;
        choice.vendor = vendor;
        choice.product = product;
        throw noDevice(choice);
    }
    if (record.ORB_errorID != kORB_NoError) throw Failure(ExitCode::Failed, errorText(record.ORB_errorID));
    return record;
}

ORB_ServiceRecord recordFor(const UsbDevice &device) {
    ORB_ServiceRecord record = listPlotters(device.vendor, device.product);
    record.ORB_OutputMethode = kORB_OSX_METHOD_USB;
    for (int32_t index = 1; index <= record.ORB_deviceCount; ++index) {
        if (record.ORB_USBplotterTable[index - 1].locationID != device.location) continue;
        record.ORB_USBplotterIndex = index;
        return record;
    }
    throw Failure(ExitCode::Missing,
                  fmt::format("{}: the plug-in sees {} of this model, not this one; unplug those that are not needed",
                              device.id(), record.ORB_deviceCount));
}

} // namespace host
