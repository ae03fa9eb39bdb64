#include "support/usb_plotter.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <linux/usbdevice_fs.h>
#include <optional>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>
#include <utility>

namespace bed {

namespace {

constexpr uint8_t kIn = 0x80;
constexpr char kProgram[] = "usbfs"; // what the kernel calls a program that has claimed an interface

std::string hex(unsigned number) {
    char text[12];
    snprintf(text, sizeof text, "%02x", number);
    return text;
}

uint8_t low(size_t value) { return static_cast<uint8_t>(value); }
uint8_t high(size_t value) { return static_cast<uint8_t>(value >> 8); }

std::vector<uint8_t> descriptorsOf(const PlotterShape &shape) {
    std::vector<uint8_t> settings;
    for (size_t i = 0; i < shape.settings.size(); ++i) {
        settings.insert(settings.end(), {9, 4, 0, low(i), low(shape.settings[i].size()), 7, 1, 2, 0});
        for (const PlotterEndpoint &endpoint : shape.settings[i])
            settings.insert(settings.end(), {7, 5, endpoint.address, endpoint.type, low(endpoint.maxPacketSize),
                                             high(endpoint.maxPacketSize), endpoint.interval});
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

} // namespace

/// A piece of the caller's memory, which may be another process's.
struct UsbPlotter::Memory {
    Memory(UMockdevIoctlData *parent, size_t offset, size_t size)
        : data(umockdev_ioctl_data_resolve(parent, offset, size, nullptr)) {}
    ~Memory() {
        if (data != nullptr) umockdev_ioctl_data_unref(data);
    }
    Memory(const Memory &) = delete;
    Memory &operator=(const Memory &) = delete;

    void put(size_t offset, const void *bytes, size_t size) {
        const auto *first = static_cast<const guint8 *>(bytes);
        std::vector<guint8> copy(first, first + size);
        if (size != 0) umockdev_ioctl_data_update(data, offset, copy.data(), static_cast<gint>(size));
    }

    UMockdevIoctlData *const data;
};

namespace {

/// What the caller's argument points to.
template <typename T> T argumentOf(UMockdevIoctlClient *client) {
    T value;
    UMockdevIoctlData *data = umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, sizeof value, nullptr);
    memcpy(&value, data->data, sizeof value);
    umockdev_ioctl_data_unref(data);
    return value;
}

} // namespace

struct UsbPlotter::Urb {
    explicit Urb(UMockdevIoctlClient *client) : caller(umockdev_ioctl_client_get_arg(client), 0, sizeof(usbdevfs_urb)) {
        const auto head = argumentOf<usbdevfs_urb>(client);
        type = head.type;
        endpoint = head.endpoint;
        buffer.emplace(caller.data, offsetof(usbdevfs_urb, buffer), static_cast<size_t>(head.buffer_length));
    }
    // A transfer of no bytes has no buffer.
    size_t size() const { return buffer->data == nullptr ? 0 : static_cast<size_t>(buffer->data->data_len); }
    const char *text() const { return size() == 0 ? "" : reinterpret_cast<const char *>(buffer->data->data); }

    Memory caller; ///< the head
    uint8_t type, endpoint;
    std::optional<Memory> buffer;
    size_t moved = 0;
};

UsbPlotter::UsbPlotter(DeviceBed &bed, PlotterShape shape)
    : bed_(bed), shape_(std::move(shape)),
      node_(bed.addUsb(shape_.place, descriptorsOf(shape_), shape_.activeConfiguration)),
      interfacePath_(DeviceBed::usbPath(shape_.place + ":" + std::to_string(shape_.activeConfiguration) + ".0")),
      base_(umockdev_ioctl_base_new()) {
    bed_.add("P: " + interfacePath_ + "\nE: DEVTYPE=usb_interface\nE: SUBSYSTEM=usb\nA: bInterfaceNumber=00\\n\n\n");
    bindDriver(shape_.driver);
    g_signal_connect(base_, "handle-ioctl", G_CALLBACK(handle), this);
    umockdev_testbed_attach_ioctl(bed_.get(), node_.c_str(), base_, nullptr);
}

UsbPlotter::~UsbPlotter() {
    umockdev_testbed_detach_ioctl(bed_.get(), node_.c_str(), nullptr);
    g_signal_handlers_disconnect_by_data(base_, this);
    g_object_unref(base_);
    setClaimer(nullptr);
}

void UsbPlotter::reply(std::string text) {
    const std::scoped_lock lock(mutex_);
    replies_.push_back(std::move(text));
    for (auto urb = waiting_.begin(); urb != waiting_.end();) {
        if (((*urb)->endpoint & kIn) == 0 || !fillReply(**urb)) {
            ++urb;
            continue;
        }
        finish(std::move(*urb), 0);
        urb = waiting_.erase(urb);
    }
}

void UsbPlotter::takeOnly(size_t bytes) {
    const std::scoped_lock lock(mutex_);
    room_ = bytes;
}

void UsbPlotter::halt(uint8_t endpoint) {
    const std::scoped_lock lock(mutex_);
    halted_.insert(endpoint);
}

void UsbPlotter::disturbNext() {
    const std::scoped_lock lock(mutex_);
    disturbed_ = true;
}

void UsbPlotter::unplug() {
    const std::scoped_lock lock(mutex_);
    unplugged_ = true;
    failuresLeft_ = waiting_.empty() ? 2 : 1;
    for (auto &urb : waiting_)
        finish(std::move(urb), -EPROTO);
    waiting_.clear();
}

void UsbPlotter::holdByAnother() {
    const std::scoped_lock lock(mutex_);
    bindDriver(kProgram);
}

void UsbPlotter::loseDriver() {
    const std::scoped_lock lock(mutex_);
    bindDriver("");
}

void UsbPlotter::refuseStatusRequests() {
    const std::scoped_lock lock(mutex_);
    refusesStatus_ = true;
}

std::string UsbPlotter::written() const {
    const std::scoped_lock lock(mutex_);
    return written_;
}

std::vector<std::string> UsbPlotter::log() const {
    const std::scoped_lock lock(mutex_);
    return log_;
}

std::string UsbPlotter::driver() {
    const std::scoped_lock lock(mutex_);
    forgetTheDead();
    return driver_;
}

void UsbPlotter::bindDriver(const std::string &name) {
    driver_ = name;
    const std::string link = bed_.fileOf("/sys" + interfacePath_ + "/driver");
    ::unlink(link.c_str());
    if (!name.empty() && ::symlink(("../../bus/usb/drivers/" + name).c_str(), link.c_str()) != 0) perror(link.c_str());
}

void UsbPlotter::setClaimer(UMockdevIoctlClient *client) {
    if (claimer_ != nullptr) g_object_unref(claimer_);
    claimer_ = client;
    if (claimer_ != nullptr) g_object_ref(claimer_);
}

/// Drops the claim and the transfers of a program that has closed the node or has ended.
void UsbPlotter::forgetTheDead() {
    if (claimer_ == nullptr || umockdev_ioctl_client_get_connected(claimer_)) return;
    waiting_.clear();
    finished_.clear();
    release(claimer_);
}

const PlotterEndpoint *UsbPlotter::endpointOf(uint8_t address) const {
    const PlotterSetting &setting = shape_.settings[setting_];
    const auto found = std::find_if(setting.begin(), setting.end(),
                                    [&](const PlotterEndpoint &endpoint) { return endpoint.address == address; });
    return found == setting.end() ? nullptr : &*found;
}

int UsbPlotter::handle(UMockdevIoctlBase *, UMockdevIoctlClient *client, void *self) {
    const int result = static_cast<UsbPlotter *>(self)->answer(client);
    umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? -result : 0);
    return TRUE;
}

int UsbPlotter::answer(UMockdevIoctlClient *client) {
    struct Row {
        unsigned long request;
        int (UsbPlotter::*call)(UMockdevIoctlClient *client);
    };
    static constexpr Row kCalls[] = {
        {USBDEVFS_GET_CAPABILITIES, &UsbPlotter::capabilities},
        {USBDEVFS_CLAIMINTERFACE, &UsbPlotter::claim},
        {USBDEVFS_RELEASEINTERFACE, &UsbPlotter::release},
        {USBDEVFS_SETINTERFACE, &UsbPlotter::chooseSetting},
        {USBDEVFS_SETCONFIGURATION, &UsbPlotter::chooseConfiguration},
        {USBDEVFS_CLEAR_HALT, &UsbPlotter::clearHalt},
        {USBDEVFS_GETDRIVER, &UsbPlotter::getDriver},
        {USBDEVFS_IOCTL, &UsbPlotter::moveDriver},
        {USBDEVFS_SUBMITURB, &UsbPlotter::submit},
        {USBDEVFS_REAPURB, &UsbPlotter::reap},
        {USBDEVFS_REAPURBNDELAY, &UsbPlotter::reap},
        {USBDEVFS_DISCARDURB, &UsbPlotter::discard},
    };
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    const std::scoped_lock lock(mutex_);
    for (const Row &row : kCalls) {
        if (row.request == request) return (this->*row.call)(client);
    }
    return -ENOTTY;
}

int UsbPlotter::capabilities(UMockdevIoctlClient *client) {
    const uint32_t all = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_CONTINUATION | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                         USBDEVFS_CAP_BULK_SCATTER_GATHER | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
    Memory(umockdev_ioctl_client_get_arg(client), 0, sizeof all).put(0, &all, sizeof all);
    return 0;
}

int UsbPlotter::claim(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    if (argumentOf<unsigned>(client) != 0) return -ENOENT;
    forgetTheDead();
    if (!driver_.empty()) return -EBUSY;
    bindDriver(kProgram);
    setClaimer(client);
    log_.push_back("claim");
    return 0;
}

int UsbPlotter::release(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    if (claimer_ != client) return -EINVAL;
    bindDriver("");
    setClaimer(nullptr);
    setting_ = 0;
    log_.push_back("release");
    return 0;
}

int UsbPlotter::chooseSetting(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    const auto wanted = argumentOf<usbdevfs_setinterface>(client);
    if (claimer_ != client || wanted.interface != 0 || wanted.altsetting >= shape_.settings.size()) return -EINVAL;
    setting_ = wanted.altsetting;
    log_.push_back("setting " + std::to_string(setting_));
    return 0;
}

int UsbPlotter::chooseConfiguration(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    const auto wanted = argumentOf<unsigned>(client);
    log_.push_back("configuration " + std::to_string(wanted));
    if (!driver_.empty()) return -EBUSY;
    if (wanted > shape_.configurations) return -EINVAL;
    umockdev_testbed_set_attribute_int(bed_.get(), ("/sys" + DeviceBed::usbPath(shape_.place)).c_str(),
                                       "bConfigurationValue", static_cast<gint>(wanted));
    return 0;
}

int UsbPlotter::clearHalt(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    const auto address = static_cast<uint8_t>(argumentOf<unsigned>(client));
    if (claimer_ != client || endpointOf(address) == nullptr) return -ENOENT;
    if (unplugged_) return -EPROTO;
    log_.push_back("clear " + hex(address));
    halted_.erase(address);
    return 0;
}

int UsbPlotter::getDriver(UMockdevIoctlClient *client) {
    forgetTheDead();
    if (driver_.empty()) return -ENODATA;
    Memory(umockdev_ioctl_client_get_arg(client), 0, sizeof(usbdevfs_getdriver))
        .put(offsetof(usbdevfs_getdriver, driver), driver_.c_str(), driver_.size() + 1);
    return 0;
}

int UsbPlotter::moveDriver(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    const auto command = argumentOf<usbdevfs_ioctl>(client);
    if (static_cast<unsigned>(command.ioctl_code) == USBDEVFS_DISCONNECT) {
        if (driver_.empty()) return -ENODATA;
        log_.push_back("detach " + driver_);
        bindDriver("");
        return 0;
    }
    if (!driver_.empty()) return -EBUSY;
    log_.push_back("attach " + shape_.driver);
    bindDriver(shape_.driver);
    return driver_.empty() ? 0 : 1;
}

int UsbPlotter::submit(UMockdevIoctlClient *client) {
    if (isGone()) return -ENODEV;
    auto urb = std::make_unique<Urb>(client);
    const bool isControl = urb->type == USBDEVFS_URB_TYPE_CONTROL;
    if (!isControl) {
        const PlotterEndpoint *endpoint = endpointOf(urb->endpoint);
        if (claimer_ != client || endpoint == nullptr) return -ENOENT;
        if ((endpoint->type == 3) != (urb->type == USBDEVFS_URB_TYPE_INTERRUPT)) return -EINVAL;
    }
    if (unplugged_ || std::exchange(disturbed_, false)) {
        if (unplugged_) --failuresLeft_;
        finish(std::move(urb), -EPROTO);
        return 0;
    }
    if (halted_.count(urb->endpoint) != 0) {
        finish(std::move(urb), -EPIPE);
        return 0;
    }
    const bool isIn = (urb->endpoint & kIn) != 0;
    const bool answered = !isControl || control(*urb);
    const bool done = isControl || (isIn ? fillReply(*urb) : takeText(*urb));
    if (done) {
        finish(std::move(urb), answered ? 0 : -EPIPE);
    } else {
        waiting_.push_back(std::move(urb));
        if (onWait) onWait();
    }
    return 0;
}

/// Answers status requests, and no others. The buffer begins with the 8 bytes of the request.
bool UsbPlotter::control(Urb &urb) {
    const auto *request = urb.buffer->data->data;
    if (refusesStatus_ || request[0] < kIn || request[1] != 0 || urb.size() < 10) return false;
    const bool ofEndpoint = (request[0] & 0x1F) == 2;
    const uint8_t status[2] = {ofEndpoint && halted_.count(request[4]) != 0, 0};
    urb.buffer->put(8, status, sizeof status);
    urb.moved = sizeof status;
    return true;
}

bool UsbPlotter::takeText(Urb &urb) {
    urb.moved = std::min(urb.size(), room_);
    const std::string_view text(urb.text(), urb.moved);
    if (room_ != SIZE_MAX) room_ -= urb.moved;
    written_ += text;
    if (onText && (!text.empty() || urb.size() == 0)) onText(text);
    return urb.moved == urb.size();
}

/// A transfer ends with a packet that is not full, or when its buffer is.
bool UsbPlotter::fillReply(Urb &urb) {
    const size_t packet = endpointOf(urb.endpoint)->maxPacketSize;
    while (!replies_.empty() && urb.moved < urb.size()) {
        std::string &reply = replies_.front();
        const size_t count = std::min({reply.size(), packet, urb.size() - urb.moved});
        urb.buffer->put(urb.moved, reply.data(), count);
        urb.moved += count;
        const bool isShort = count < packet;
        reply.erase(0, count);
        if (reply.empty()) replies_.pop_front();
        if (isShort) return true;
    }
    return urb.moved == urb.size();
}

void UsbPlotter::finish(std::unique_ptr<Urb> urb, int status) {
    const int moved = static_cast<int>(urb->moved);
    urb->caller.put(offsetof(usbdevfs_urb, status), &status, sizeof status);
    urb->caller.put(offsetof(usbdevfs_urb, actual_length), &moved, sizeof moved);
    finished_.push_back(std::move(urb));
}

int UsbPlotter::reap(UMockdevIoctlClient *client) {
    if (finished_.empty()) return isGone() && waiting_.empty() ? -ENODEV : -EAGAIN;
    Memory answer(umockdev_ioctl_client_get_arg(client), 0, sizeof(void *));
    umockdev_ioctl_data_set_ptr(answer.data, 0, finished_.front()->caller.data);
    finished_.pop_front();
    return 0;
}

int UsbPlotter::discard(UMockdevIoctlClient *client) {
    gulong address;
    memcpy(&address, umockdev_ioctl_client_get_arg(client)->data, sizeof address);
    const auto urb = std::find_if(waiting_.begin(), waiting_.end(),
                                  [&](const auto &waiting) { return waiting->caller.data->client_addr == address; });
    if (urb == waiting_.end()) return -EINVAL;
    log_.push_back("cancel " + hex((*urb)->endpoint));
    finish(std::move(*urb), -ENOENT);
    waiting_.erase(urb);
    return 0;
}

} // namespace bed
