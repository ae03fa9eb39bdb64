#include "platform/iokit/linux/return_codes.h"

#include <cerrno>

namespace platform {

namespace {

struct Row {
    int foreign;
    IOReturn code;
};

constexpr Row kUsbErrors[] = {
    {LIBUSB_ERROR_IO, kIOReturnIOError},
    {LIBUSB_ERROR_INVALID_PARAM, kIOReturnBadArgument},
    {LIBUSB_ERROR_ACCESS, kIOReturnNotPermitted},
    {LIBUSB_ERROR_NO_DEVICE, kIOReturnNoDevice},
    {LIBUSB_ERROR_NOT_FOUND, kIOReturnNotFound},
    {LIBUSB_ERROR_BUSY, kIOReturnExclusiveAccess},
    {LIBUSB_ERROR_TIMEOUT, kIOReturnNotResponding},
    {LIBUSB_ERROR_OVERFLOW, kIOReturnOverrun},
    {LIBUSB_ERROR_PIPE, kIOUSBPipeStalled},
    {LIBUSB_ERROR_INTERRUPTED, kIOReturnAborted},
    {LIBUSB_ERROR_NO_MEM, kIOReturnNoMemory},
    {LIBUSB_ERROR_NOT_SUPPORTED, kIOReturnUnsupported},
};

constexpr Row kTransferStatuses[] = {
    {LIBUSB_TRANSFER_COMPLETED, kIOReturnSuccess},       {LIBUSB_TRANSFER_ERROR, kIOReturnIOError},
    {LIBUSB_TRANSFER_TIMED_OUT, kIOReturnNotResponding}, {LIBUSB_TRANSFER_CANCELLED, kIOReturnAborted},
    {LIBUSB_TRANSFER_STALL, kIOUSBPipeStalled},          {LIBUSB_TRANSFER_NO_DEVICE, kIOReturnNoDevice},
    {LIBUSB_TRANSFER_OVERFLOW, kIOReturnOverrun},
};

constexpr Row kErrnos[] = {
    {EACCES, kIOReturnNotPermitted}, {EPERM, kIOReturnNotPermitted},      {EBUSY, kIOReturnExclusiveAccess},
    {ENODEV, kIOReturnNoDevice},     {ENXIO, kIOReturnNoDevice},          {ENOENT, kIOReturnNotFound},
    {ENOMEM, kIOReturnNoMemory},     {EMFILE, kIOReturnNoResources},      {ENFILE, kIOReturnNoResources},
    {EIO, kIOReturnIOError},         {ETIMEDOUT, kIOReturnNotResponding},
};

template <size_t N> IOReturn translate(const Row (&rows)[N], int foreign) noexcept {
    for (const Row &row : rows) {
        if (row.foreign == foreign) return row.code;
    }
    return kIOReturnError;
}

} // namespace

IOReturn codeOfUsb(int result) noexcept { return result >= 0 ? kIOReturnSuccess : translate(kUsbErrors, result); }

IOReturn codeOfTransfer(libusb_transfer_status status) noexcept { return translate(kTransferStatuses, status); }

IOReturn codeOfErrno(int error) noexcept { return translate(kErrnos, error); }

} // namespace platform
