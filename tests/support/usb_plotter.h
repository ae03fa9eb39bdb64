// A USB plotter in software: the system's side of a device node. It keeps the rules of the kernel that a caller could break:
// an interface is claimed by one, and not while a driver is bound to it; no configuration is set meanwhile; transfers need
// the claim and an endpoint of the current alternate setting. A call that breaks one fails.
#pragma once

#include "support/device_bed.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using UMockdevIoctlBase = struct _UMockdevIoctlBase;
using UMockdevIoctlClient = struct _UMockdevIoctlClient;

namespace bed {

struct PlotterEndpoint {
    uint8_t address;
    uint8_t type = 2; ///< 2 bulk, 3 interrupt
    uint16_t maxPacketSize = 64;
    uint8_t interval = 0;
};
using PlotterSetting = std::vector<PlotterEndpoint>;

struct PlotterShape {
    std::string place = "1-1"; ///< bus and ports
    uint16_t vendor = 0x0B75, product = 0x0402;
    std::vector<PlotterSetting> settings = {{{0x01}, {0x82}}}; ///< alternate settings from 0 up
    uint8_t configurations = 1, activeConfiguration = 1;       ///< all alike, numbered from 1
    std::string driver = {};                                   ///< the kernel's, bound to the interface; "" for none
};

/// Calls are answered on the one thread of the test bed, while their caller waits: a test looks and changes in between.
class UsbPlotter {
public:
    explicit UsbPlotter(DeviceBed &bed, PlotterShape shape = {});
    ~UsbPlotter();
    UsbPlotter(const UsbPlotter &) = delete;

    /// Called, on that thread, with the text that came in one transfer, and when a transfer has to wait because the plotter
    /// does not take or has nothing to say.
    std::function<void(std::string_view text)> onText;
    std::function<void()> onWait;

    void reply(const std::string &text) { replies_.push_back(text); } ///< "" is the empty packet that ends a transfer
    void takeOnly(size_t bytes) { room_ = bytes; }                    ///< in all, then it lets transfers wait
    void halt(uint8_t endpoint) { halted_.insert(endpoint); }         ///< until it is cleared
    void disturbNext() { disturbed_ = true; }                         ///< the next transfer meets a disturbed line
    void unplug();                              ///< as the kernel shows it: two transfers fail, then there is no device
    void bindDriver(const std::string &driver); ///< or a program, which is "usbfs" then; "" for neither

    const std::string &written() const { return written_; }      ///< all that came
    const std::vector<std::string> &log() const { return log_; } ///< "claim", "clear 01", "detach usblp", "cancel 01", ...
    const std::string &driver() const { return driver_; }
    const std::string &node() const { return node_; }

private:
    struct Urb;

    // The kernel's calls: a result, or an errno below 0.
    int answer(UMockdevIoctlClient *client);
    int claim(const UMockdevIoctlClient *client); ///< nullptr: nobody any more
    int chooseSetting(size_t setting);
    int chooseConfiguration(unsigned value);
    int clearHalt(uint8_t address);
    int moveDriver(bool away);
    int submit(UMockdevIoctlClient *client);
    int reap(UMockdevIoctlClient *client);
    int discard(UMockdevIoctlClient *client);

    // Transfers: true when it is done.
    bool control(Urb &urb) const;
    bool takeText(Urb &urb);
    bool fillReply(Urb &urb);
    int finish(const Urb &urb, int status);
    const PlotterEndpoint *endpointOf(uint8_t address) const;

    DeviceBed &bed_;
    const PlotterShape shape_;
    const std::string node_, interfacePath_;
    UMockdevIoctlBase *const base_;

    std::string driver_, written_;
    const UMockdevIoctlClient *claimer_ = nullptr; // who has claimed the interface
    bool disturbed_ = false;
    std::optional<int> failuresLeft_; // once it is unplugged
    size_t setting_ = 0, room_ = SIZE_MAX;
    std::set<uint8_t> halted_;
    std::deque<std::string> replies_;
    std::list<Urb> waiting_, finished_;
    std::vector<std::string> log_;
};

} // namespace bed
