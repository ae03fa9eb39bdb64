#include "platform/iokit/linux/counted_object.h"
#include "platform/iokit/linux/return_codes.h"
#include "platform/iokit/linux/usb_objects.h"
#include "platform/iokit/linux/usb_transfer.h"

#include <algorithm>
#include <climits>
#include <map>
#include <utility>

namespace platform {

namespace {

constexpr unsigned kReadLimit = 1000;      // milliseconds that a silent plotter may hold the caller
constexpr uint32_t kMostAtOnce = 65536;    // bytes of one read
constexpr char kPrinterDriver[] = "usblp"; // the only driver that is moved aside

class InterfaceObject final : public IOUSBInterfaceInterface245, CountedObject {
public:
    explicit InterfaceObject(const UsbInterface &interface) : interface_(interface) { useSetting(0); }
    ~InterfaceObject() override { close(); }

    uint32_t Release() override {
        delete this;
        return 0;
    }

    IOReturn USBInterfaceOpen() override {
        return guarded([&] { return handle_ ? +kIOReturnSuccess : open(); });
    }

    IOReturn USBInterfaceClose() override { return handle_ ? close() : kIOReturnNotOpen; }

    IOReturn GetLocationID(uint32_t *locationID) override {
        *locationID = interface_.device.locationID;
        return kIOReturnSuccess;
    }

    IOReturn SetAlternateInterface(uint8_t alternateSetting) override {
        if (!handle_) return kIOReturnNotOpen;
        const int result = libusb_set_interface_alt_setting(handle_.get(), interface_.number, alternateSetting);
        if (result != 0) return codeOnDevice(handle_.get(), result);
        useSetting(alternateSetting);
        return kIOReturnSuccess;
    }

    IOReturn GetNumEndpoints(uint8_t *count) override {
        if (!handle_) return kIOReturnNotOpen;
        *count = static_cast<uint8_t>(setting_->endpoints.size());
        return kIOReturnSuccess;
    }

    IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *transferType,
                               uint16_t *maxPacketSize, uint8_t *interval) override {
        if (!handle_) return kIOReturnNotOpen;
        const UsbEndpoint *endpoint = endpointOf(pipe);
        if (endpoint == nullptr) return kIOUSBUnknownPipeErr;
        *direction = endpoint->isIn() ? 1 : 0;
        *number = endpoint->number();
        *transferType = endpoint->transferType;
        *maxPacketSize = endpoint->maxPacketSize;
        *interval = endpoint->interval;
        return kIOReturnSuccess;
    }

    IOReturn GetPipeStatus(uint8_t pipe) override {
        if (!handle_) return kIOReturnNotOpen;
        const UsbEndpoint *in = inEndpointOf(pipe), *endpoint = in != nullptr ? in : endpointOf(pipe);
        return endpoint == nullptr ? kIOUSBUnknownPipeErr : statusOf(handle_.get(), *endpoint);
    }

    IOReturn ClearPipeStallBothEnds(uint8_t pipe) override {
        if (!handle_) return kIOReturnNotOpen;
        const UsbEndpoint *named = endpointOf(pipe), *in = inEndpointOf(pipe);
        if (named == nullptr) return in == nullptr ? kIOUSBUnknownPipeErr : clear(*in);
        // An out pipe's reference that is also an in pipe's endpoint number: either may be meant.
        if (in != nullptr && in != named && statusOf(handle_.get(), *in) == kIOUSBPipeStalled) clear(*in);
        return clear(*named);
    }

    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override {
        if (taken != nullptr) *taken = 0;
        if (!handle_) return kIOReturnNotOpen;
        const UsbEndpoint *endpoint = endpointOf(pipe);
        if (endpoint == nullptr) return kIOUSBUnknownPipeErr;
        if (endpoint->isIn() || !endpoint->isBulkOrInterrupt()) return kIOReturnNotWritable;
        if (size == 0) return kIOReturnSuccess; // nothing goes onto the bus
        if (size > INT_MAX) return kIOReturnMessageTooLarge;
        int moved = 0;
        // libusb has one type for both directions; it does not write to what goes out.
        const IOReturn code = transfer(interface_.device, handle_.get(), *endpoint, const_cast<void *>(bytes),
                                       static_cast<int>(size), 0, &moved);
        if (taken != nullptr) *taken = static_cast<uint32_t>(moved);
        return code;
    }

    IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) override {
        const uint32_t room = std::exchange(*size, 0);
        if (!handle_) return kIOReturnNotOpen;
        const UsbEndpoint *endpoint = inEndpointOf(pipe);
        if (endpoint == nullptr) return endpointOf(pipe) == nullptr ? kIOUSBUnknownPipeErr : kIOReturnNotReadable;
        if (!endpoint->isBulkOrInterrupt()) return kIOReturnNotReadable;
        return guarded([&] { return read(*endpoint, static_cast<unsigned char *>(buffer), room, size); });
    }

private:
    using Bytes = std::vector<unsigned char>;

    /// The first one when there is none of that number.
    void useSetting(uint8_t number) noexcept {
        const auto &settings = interface_.settings;
        const auto found = std::find_if(settings.begin(), settings.end(),
                                        [&](const UsbAlternateSetting &setting) { return setting.number == number; });
        setting_ = found != settings.end() ? &*found : &settings.front();
        kept_.clear();
    }

    const UsbEndpoint *endpointOf(uint8_t pipe) const noexcept {
        return pipe == 0 || pipe > setting_->endpoints.size() ? nullptr : &setting_->endpoints[pipe - 1U];
    }

    /// The in pipe of that reference, else the one of that endpoint number: callers that listed the pipes keep the number.
    const UsbEndpoint *inEndpointOf(uint8_t pipe) const noexcept {
        const UsbEndpoint *endpoint = endpointOf(pipe);
        if (endpoint != nullptr && endpoint->isIn()) return endpoint;
        for (const UsbEndpoint &other : setting_->endpoints) {
            if (other.isIn() && other.number() == pipe) return &other;
        }
        return nullptr;
    }

    IOReturn open() {
        UsbHandle handle;
        if (const IOReturn code = openUsbDevice(interface_.device, &handle); code != kIOReturnSuccess) return code;
        const bool moveAside = libusb_kernel_driver_active(handle.get(), interface_.number) == 1;
        if (moveAside) {
            if (kernelDriverOf(interface_) != kPrinterDriver) return kIOReturnExclusiveAccess;
            const int result = libusb_detach_kernel_driver(handle.get(), interface_.number);
            if (result != 0 && result != LIBUSB_ERROR_NOT_FOUND) return codeOnDevice(handle.get(), result);
        }
        if (const int result = libusb_claim_interface(handle.get(), interface_.number); result != 0) {
            if (moveAside) libusb_attach_kernel_driver(handle.get(), interface_.number);
            return codeOnDevice(handle.get(), result);
        }
        handle_ = std::move(handle);
        // Also where no driver was found: a job that was killed may have detached it, and could not put it back.
        givesBack_ = moveAside || (interface_.isPrinter && hasPrinterDriver());
        useSetting(0); // the kernel chooses it whenever an interface changes hands
        return kIOReturnSuccess;
    }

    IOReturn close() noexcept {
        if (!handle_) return kIOReturnSuccess;
        const int result = libusb_release_interface(handle_.get(), interface_.number);
        if (givesBack_) libusb_attach_kernel_driver(handle_.get(), interface_.number);
        handle_.reset();
        kept_.clear();
        return codeOfUsb(result);
    }

    IOReturn clear(const UsbEndpoint &endpoint) noexcept {
        kept_.erase(endpoint.address);
        return codeOnDevice(handle_.get(), libusb_clear_halt(handle_.get(), endpoint.address));
    }

    IOReturn read(const UsbEndpoint &endpoint, unsigned char *buffer, uint32_t room, uint32_t *size) {
        Bytes &kept = kept_[endpoint.address];
        if (kept.empty() && room > 0) {
            // Room for whole packets only: one that does not fit would fail the transfer. What is too much is kept.
            const size_t packet = std::max<size_t>(endpoint.maxPacketSize, 1);
            const size_t packets = (std::min(room, kMostAtOnce) + packet - 1) / packet;
            kept.resize(packets * packet);
            int moved = 0;
            const IOReturn code = transfer(interface_.device, handle_.get(), endpoint, kept.data(),
                                           static_cast<int>(kept.size()), kReadLimit, &moved);
            kept.resize(static_cast<size_t>(moved));
            // Bytes that came before a failure are a reply; a failure that lasts will show in the next read.
            if (kept.empty() || code == kIOReturnAborted) return code;
        }
        *size = std::min(room, static_cast<uint32_t>(kept.size()));
        std::copy_n(kept.begin(), *size, buffer);
        kept.erase(kept.begin(), kept.begin() + *size);
        return kIOReturnSuccess;
    }

    UsbInterface interface_;
    const UsbAlternateSetting *setting_ = nullptr;
    UsbHandle handle_;
    bool givesBack_ = false;        // close() attaches the printer driver again
    std::map<uint8_t, Bytes> kept_; // by endpoint address: what was read and not yet asked for
};

} // namespace

IOUSBInterfaceInterface245 *makeUsbInterfaceObject(const UsbInterface &interface) { return new InterfaceObject(interface); }

} // namespace platform
