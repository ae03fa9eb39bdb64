// A USB plotter in software: the system's side of a device node. It keeps the rules of the kernel that a caller could break:
// an interface is claimed by one, and not while a driver is bound to it; no configuration is set meanwhile; transfers need
// the claim and an endpoint of the current alternate setting. A call that breaks one fails, and is in the log.
#pragma once

#include "support/device_bed.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
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

class UsbPlotter {
public:
    explicit UsbPlotter(DeviceBed &bed, PlotterShape shape = {});
    ~UsbPlotter();
    UsbPlotter(const UsbPlotter &) = delete;
    UsbPlotter &operator=(const UsbPlotter &) = delete;

    /// Called, on a thread of the test bed, with the text that came in one transfer, and when a transfer has to wait because
    /// the plotter does not take or has nothing to say.
    std::function<void(std::string_view text)> onText;
    std::function<void()> onWait;

    void reply(std::string text); ///< what comes next from the in endpoint; "" is the empty packet that ends a transfer
    void takeOnly(size_t bytes);  ///< from now on the out endpoint takes so many bytes in all, then it lets transfers wait
    void halt(uint8_t endpoint);  ///< until it is cleared
    void disturbNext();           ///< the next transfer meets a disturbed line
    void unplug();                ///< as the kernel shows it: two transfers fail, then there is no device
    void holdByAnother();         ///< another program has claimed the interface
    void loseDriver();            ///< nothing is bound to the interface any more
    void refuseStatusRequests();  ///< as devices do that do not know the request

    std::string written() const;          ///< all that came
    std::vector<std::string> log() const; ///< "claim", "setting 1", "clear 01", "detach usblp", "cancel 01", ...
    std::string driver();                 ///< bound to the interface: usbfs for a program
    const std::string &node() const { return node_; }

private:
    struct Memory;
    struct Urb;
    using Urbs = std::deque<std::unique_ptr<Urb>>;

    static int handle(UMockdevIoctlBase *base, UMockdevIoctlClient *client, void *self);

    // The kernel's calls: a result, or an errno below 0.
    int answer(UMockdevIoctlClient *client);
    int capabilities(UMockdevIoctlClient *client);
    int claim(UMockdevIoctlClient *client);
    int release(UMockdevIoctlClient *client);
    int chooseSetting(UMockdevIoctlClient *client);
    int chooseConfiguration(UMockdevIoctlClient *client);
    int clearHalt(UMockdevIoctlClient *client);
    int getDriver(UMockdevIoctlClient *client);
    int moveDriver(UMockdevIoctlClient *client);
    int submit(UMockdevIoctlClient *client);
    int reap(UMockdevIoctlClient *client);
    int discard(UMockdevIoctlClient *client);

    // Transfers: true when it is done.
    bool control(Urb &urb);
    bool takeText(Urb &urb);
    bool fillReply(Urb &urb);
    void finish(std::unique_ptr<Urb> urb, int status);
    const PlotterEndpoint *endpointOf(uint8_t address) const;
    void bindDriver(const std::string &name);
    void setClaimer(UMockdevIoctlClient *client);
    void forgetTheDead();
    bool isGone() const { return unplugged_ && failuresLeft_ == 0; }

    DeviceBed &bed_;
    const PlotterShape shape_;
    const std::string node_, interfacePath_;
    UMockdevIoctlBase *const base_;

    mutable std::recursive_mutex mutex_; // of all below; functions of the test are called under it
    std::string driver_, written_;
    UMockdevIoctlClient *claimer_ = nullptr; // who has claimed the interface
    bool disturbed_ = false, refusesStatus_ = false, unplugged_ = false;
    int failuresLeft_ = 0;
    size_t setting_ = 0, room_ = SIZE_MAX;
    std::set<uint8_t> halted_;
    std::deque<std::string> replies_;
    Urbs waiting_, finished_;
    std::vector<std::string> log_;
};

} // namespace bed
