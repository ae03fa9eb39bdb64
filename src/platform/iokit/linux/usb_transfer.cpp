#include "platform/iokit/linux/usb_transfer.h"

#include "platform/iokit/linux/return_codes.h"
#include "platform/posix/stop.h"

#include <memory>
#include <poll.h>

namespace platform {

namespace {

constexpr unsigned kRequestLimit = 1000; // milliseconds
constexpr int kSlice = 200;              // milliseconds: for systems that cannot wake the poll for a stop or a limit

struct TransferDeleter {
    void operator()(libusb_transfer *transfer) const noexcept { libusb_free_transfer(transfer); }
};

void LIBUSB_CALL markDone(libusb_transfer *transfer) { *static_cast<int *>(transfer->user_data) = 1; }

/// Sleeps until libusb has something to do, or a stop interrupts it.
void waitForEvents(libusb_context *context) noexcept {
    constexpr nfds_t kMost = 8; // libusb has two of its own and one for the device; any beyond are seen after kSlice
    pollfd watched[kMost];
    nfds_t count = 0;
    const libusb_pollfd **descriptors = libusb_get_pollfds(context);
    for (const libusb_pollfd **next = descriptors; next != nullptr && *next != nullptr && count < kMost; ++next)
        watched[count++] = {(*next)->fd, (*next)->events, 0};
    libusb_free_pollfds(descriptors);
    ::poll(watched, count, kSlice);
}

int requestStatus(libusb_device_handle *handle, uint8_t recipient, uint16_t index, uint16_t *status) noexcept {
    unsigned char bytes[2] = {};
    const int result = libusb_control_transfer(handle, static_cast<uint8_t>(recipient | LIBUSB_ENDPOINT_IN),
                                               LIBUSB_REQUEST_GET_STATUS, 0, index, bytes, sizeof bytes, kRequestLimit);
    *status = static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
    return result;
}

/// An unplugged device at first gives an input/output error, as a disturbed line does; the system learns only later that it
/// is gone. So the device is asked for its status: one that does not answer counts as gone.
bool isGone(libusb_device_handle *handle) noexcept {
    uint16_t status;
    const int result = requestStatus(handle, LIBUSB_RECIPIENT_DEVICE, 0, &status);
    return result == LIBUSB_ERROR_NO_DEVICE || result == LIBUSB_ERROR_IO;
}

IOReturn lookedAt(libusb_device_handle *handle, IOReturn code) noexcept {
    // kIOReturnError as well: libusb reports bus errors of requests that the kernel makes for it as "other error".
    const bool doubtful = code == kIOReturnIOError || code == kIOReturnError;
    return doubtful && isGone(handle) ? kIOReturnNoDevice : code;
}

} // namespace

IOReturn transfer(const UsbDevice &device, libusb_device_handle *handle, const UsbEndpoint &endpoint, void *bytes, int size,
                  unsigned limit, int *moved) noexcept {
    *moved = 0;
    mayBlock();
    if (stopRequested()) return kIOReturnAborted;
    const std::unique_ptr<libusb_transfer, TransferDeleter> made(libusb_alloc_transfer(0));
    if (!made) return kIOReturnNoMemory;
    int done = 0;
    libusb_fill_bulk_transfer(made.get(), handle, endpoint.address, static_cast<unsigned char *>(bytes), size, markDone,
                              &done, limit);
    made->type = endpoint.transferType;
    if (const int result = libusb_submit_transfer(made.get()); result != 0) return codeOnDevice(handle, result);

    // Until it is done, the transfer and the bytes are libusb's: there is no other way out of this loop.
    while (done == 0) {
        if (stopRequested()) libusb_cancel_transfer(made.get());
        waitForEvents(device.context.get());
        timeval now{};
        libusb_handle_events_timeout_completed(device.context.get(), &now, &done);
    }
    *moved = made->actual_length;
    return lookedAt(handle, codeOfTransfer(made->status));
}

IOReturn statusOf(libusb_device_handle *handle, const UsbEndpoint &endpoint) noexcept {
    uint16_t status;
    const int result = requestStatus(handle, LIBUSB_RECIPIENT_ENDPOINT, endpoint.address, &status);
    if (result == LIBUSB_ERROR_PIPE) return kIOReturnUnsupported;
    if (result < 0) return codeOnDevice(handle, result);
    return (status & 1) != 0 ? kIOUSBPipeStalled : kIOReturnSuccess;
}

IOReturn codeOnDevice(libusb_device_handle *handle, int result) noexcept { return lookedAt(handle, codeOfUsb(result)); }

} // namespace platform
