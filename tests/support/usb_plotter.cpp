#include "support/usb_plotter.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <linux/usbdevice_fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>
#include <utility>

namespace bed {

namespace {

constexpr uint8_t kIn = 0x80;

std::string hex(uint8_t number) { return {"0123456789abcdef"[number >> 4], "0123456789abcdef"[number & 15]}; }
uint8_t low(size_t value) { return static_cast<uint8_t>(value); }
uint8_t high(size_t value) { return static_cast<uint8_t>(value >> 8); }

std::vector<uint8_t> descriptorsOf(const PlotterShape &shape) {
    std::vector<uint8_t> settings;
    for (size_t i = 0; i < shape.settings.size(); ++i) {
        settings.insert(settings.end(), {9, 4, 0, low(i), low(shape.settings[i].size()), 7, 1, 2, 0});
        for (const auto &[address, type, size, interval] : shape.settings[i])
            settings.insert(settings.end(), {7, 5, address, type, low(size), high(size), interval});
    }
    std::vector<uint8_t> all = {18, 1, 0, 2, 0, 0, 0, 64};
    for (const uint16_t id : {shape.vendor, shape.product})
        all.insert(all.end(), {low(id), high(id)});
    all.insert(all.end(), {0, 1, 0, 0, 0, shape.configurations});
    const size_t total = settings.size() + 9;
    for (uint8_t i = 1; i <= shape.configurations; ++i) {
        all.insert(all.end(), {9, 2, low(total), high(total), 1, i, 0, 0xC0, 1});
        all.insert(all.end(), settings.begin(), settings.end());
    }
    return all;
}

/// A piece of the caller's memory, which may be another process's.
using Memory = std::shared_ptr<UMockdevIoctlData>;

Memory memoryAt(UMockdevIoctlData *pointer, size_t offset, size_t size) {
    return {umockdev_ioctl_data_resolve(pointer, offset, size, nullptr), umockdev_ioctl_data_unref};
}

void put(const Memory &memory, size_t offset, const void *bytes, size_t size) {
    auto *text = static_cast<guint8 *>(const_cast<void *>(bytes)); // it does not write to them
    umockdev_ioctl_data_update(memory.get(), offset, text, static_cast<gint>(size));
}

/// What the caller's argument points to.
template <typename T> T argumentOf(UMockdevIoctlClient *client) {
    T value;
    memcpy(&value, memoryAt(umockdev_ioctl_client_get_arg(client), 0, sizeof value)->data, sizeof value);
    return value;
}

} // namespace

struct UsbPlotter::Urb {
    explicit Urb(UMockdevIoctlClient *client)
        : caller(memoryAt(umockdev_ioctl_client_get_arg(client), 0, sizeof(usbdevfs_urb))) {
        const auto &head = *reinterpret_cast<const usbdevfs_urb *>(caller->data);
        type = head.type;
        endpoint = head.endpoint;
        buffer = memoryAt(caller.get(), offsetof(usbdevfs_urb, buffer), static_cast<size_t>(head.buffer_length));
    }
    size_t size() const { return static_cast<size_t>(buffer->data_len); }

    Memory caller, buffer; ///< the head, and what it points to
    uint8_t type, endpoint;
    size_t moved = 0;
};

UsbPlotter::UsbPlotter(DeviceBed &bed, PlotterShape shape)
    : bed_(bed), shape_(std::move(shape)),
      node_(bed.addUsb(shape_.place, descriptorsOf(shape_), shape_.activeConfiguration)),
      interfacePath_(DeviceBed::usbPath(shape_.place + ":" + std::to_string(shape_.activeConfiguration) + ".0")),
      base_(umockdev_ioctl_base_new()) {
    bed_.add("P: " + interfacePath_ + "\nE: DEVTYPE=usb_interface\nE: SUBSYSTEM=usb\nA: bInterfaceNumber=00\\n\n\n");
    bindDriver(shape_.driver);
    const auto handle = +[](UMockdevIoctlBase *, UMockdevIoctlClient *client, UsbPlotter *self) -> gboolean {
        const int result = self->answer(client);
        umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? -result : 0);
        return TRUE;
    };
    g_signal_connect(base_, "handle-ioctl", G_CALLBACK(handle), this);
    umockdev_testbed_attach_ioctl(bed_.get(), node_.c_str(), base_, nullptr);
}

UsbPlotter::~UsbPlotter() {
    umockdev_testbed_detach_ioctl(bed_.get(), node_.c_str(), nullptr);
    g_object_unref(base_);
}

void UsbPlotter::unplug() {
    failuresLeft_ = waiting_.empty() ? 2 : 1;
    for (const Urb &urb : std::exchange(waiting_, {}))
        finish(urb, -EPROTO);
}

void UsbPlotter::bindDriver(const std::string &driver) {
    driver_ = driver;
    const std::string link = bed_.fileOf("/sys" + interfacePath_ + "/driver");
    ::unlink(link.c_str());
    if (!driver.empty() && ::symlink(("../../bus/usb/drivers/" + driver).c_str(), link.c_str()) != 0) perror(link.c_str());
}

const PlotterEndpoint *UsbPlotter::endpointOf(uint8_t address) const {
    for (const PlotterEndpoint &endpoint : shape_.settings[setting_])
        if (endpoint.address == address) return &endpoint;
    return nullptr;
}

int UsbPlotter::answer(UMockdevIoctlClient *client) {
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    if (request == USBDEVFS_REAPURBNDELAY) return reap(client);
    if (failuresLeft_ == 0) return -ENODEV;
    switch (request) {
    case USBDEVFS_GETDRIVER:
        put(memoryAt(umockdev_ioctl_client_get_arg(client), 0, sizeof(usbdevfs_getdriver)),
            offsetof(usbdevfs_getdriver, driver), driver_.c_str(), driver_.size() + 1);
        return driver_.empty() ? -ENODATA : 0;
    case USBDEVFS_IOCTL: return moveDriver(argumentOf<usbdevfs_ioctl>(client).ioctl_code == int{USBDEVFS_DISCONNECT});
    case USBDEVFS_SETCONFIGURATION: return chooseConfiguration(argumentOf<unsigned>(client));
    case USBDEVFS_CLAIMINTERFACE: return claim(client);
    case USBDEVFS_SUBMITURB: return submit(client);
    case USBDEVFS_DISCARDURB: return discard(client);
    default: break;
    }
    if (claimer_ != client) return -EINVAL;
    switch (request) {
    case USBDEVFS_RELEASEINTERFACE: return claim(nullptr);
    case USBDEVFS_SETINTERFACE: return chooseSetting(argumentOf<usbdevfs_setinterface>(client).altsetting);
    case USBDEVFS_CLEAR_HALT: return clearHalt(low(argumentOf<unsigned>(client)));
    default: return -ENOTTY;
    }
}

int UsbPlotter::claim(const UMockdevIoctlClient *client) {
    if (client != nullptr && !driver_.empty()) return -EBUSY;
    bindDriver(client != nullptr ? "usbfs" : "");
    claimer_ = client;
    setting_ = 0;
    log_.emplace_back(client != nullptr ? "claim" : "release");
    return 0;
}

int UsbPlotter::chooseSetting(size_t setting) {
    if (setting >= shape_.settings.size()) return -EINVAL;
    log_.push_back("setting " + std::to_string(setting_ = setting));
    return 0;
}

int UsbPlotter::chooseConfiguration(unsigned value) {
    log_.push_back("configuration " + std::to_string(value));
    if (!driver_.empty()) return -EBUSY;
    if (value > shape_.configurations) return -EINVAL;
    umockdev_testbed_set_attribute_int(bed_.get(), ("/sys" + DeviceBed::usbPath(shape_.place)).c_str(),
                                       "bConfigurationValue", static_cast<gint>(value));
    return 0;
}

int UsbPlotter::clearHalt(uint8_t address) {
    if (endpointOf(address) == nullptr) return -ENOENT;
    if (failuresLeft_) return -EPROTO;
    log_.push_back("clear " + hex(address));
    halted_.erase(address);
    return 0;
}

int UsbPlotter::moveDriver(bool away) {
    if (away == driver_.empty()) return away ? -ENODATA : -EBUSY;
    log_.push_back(away ? "detach " + driver_ : "attach " + shape_.driver);
    bindDriver(away ? "" : shape_.driver);
    return away || driver_.empty() ? 0 : 1;
}

int UsbPlotter::submit(UMockdevIoctlClient *client) {
    Urb urb(client);
    const bool isControl = urb.type == USBDEVFS_URB_TYPE_CONTROL;
    const PlotterEndpoint *endpoint = endpointOf(urb.endpoint);
    if (!isControl && (claimer_ != client || endpoint == nullptr)) return -ENOENT;
    if (!isControl && (endpoint->type == 3) != (urb.type == USBDEVFS_URB_TYPE_INTERRUPT)) return -EINVAL;
    if (failuresLeft_) --*failuresLeft_;
    if (failuresLeft_ || std::exchange(disturbed_, false)) return finish(urb, -EPROTO);
    if (halted_.contains(urb.endpoint)) return finish(urb, -EPIPE);
    if (isControl) return finish(urb, control(urb) ? 0 : -EPIPE);
    if ((urb.endpoint & kIn) != 0 ? fillReply(urb) : takeText(urb)) return finish(urb, 0);
    waiting_.push_back(std::move(urb));
    if (onWait) onWait();
    return 0;
}

/// Answers status requests, and no others. The buffer begins with the 8 bytes of the request.
bool UsbPlotter::control(Urb &urb) const {
    const guint8 *request = urb.buffer->data;
    if (request[0] < kIn || request[1] != 0) return false;
    const bool ofEndpoint = (request[0] & 0x1F) == 2;
    const uint8_t status[2] = {ofEndpoint && halted_.contains(request[4]), 0};
    put(urb.buffer, 8, status, urb.moved = sizeof status);
    return true;
}

bool UsbPlotter::takeText(Urb &urb) {
    urb.moved = std::min(urb.size(), room_);
    const std::string_view text(reinterpret_cast<const char *>(urb.buffer->data), urb.moved);
    if (room_ != SIZE_MAX) room_ -= urb.moved;
    written_ += text;
    if (onText && !text.empty()) onText(text);
    return urb.moved == urb.size();
}

/// A transfer ends with a packet that is not full, or when its buffer is.
bool UsbPlotter::fillReply(Urb &urb) {
    const size_t packet = endpointOf(urb.endpoint)->maxPacketSize;
    while (!replies_.empty() && urb.moved < urb.size()) {
        std::string &reply = replies_.front();
        const size_t count = std::min({reply.size(), packet, urb.size() - urb.moved});
        put(urb.buffer, urb.moved, reply.data(), count);
        urb.moved += count;
        reply.erase(0, count);
        if (reply.empty()) replies_.pop_front();
        if (count < packet) return true;
    }
    return urb.moved == urb.size();
}

int UsbPlotter::finish(const Urb &urb, int status) {
    const int moved = static_cast<int>(urb.moved);
    put(urb.caller, offsetof(usbdevfs_urb, status), &status, sizeof status);
    put(urb.caller, offsetof(usbdevfs_urb, actual_length), &moved, sizeof moved);
    finished_.push_back(urb);
    return 0;
}

int UsbPlotter::reap(UMockdevIoctlClient *client) {
    if (finished_.empty()) return failuresLeft_ == 0 ? -ENODEV : -EAGAIN;
    const Memory answer = memoryAt(umockdev_ioctl_client_get_arg(client), 0, sizeof(void *));
    umockdev_ioctl_data_set_ptr(answer.get(), 0, finished_.front().caller.get());
    finished_.pop_front();
    return 0;
}

int UsbPlotter::discard(UMockdevIoctlClient *client) {
    gulong address;
    memcpy(&address, umockdev_ioctl_client_get_arg(client)->data, sizeof address);
    const auto urb =
        std::find_if(waiting_.begin(), waiting_.end(), [&](const Urb &each) { return each.caller->client_addr == address; });
    if (urb == waiting_.end()) return -EINVAL;
    log_.push_back("cancel " + hex(urb->endpoint));
    finish(*urb, -ENOENT);
    waiting_.erase(urb);
    return 0;
}

} // namespace bed
