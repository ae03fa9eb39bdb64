// Owners of libudev's objects.
#pragma once

#include <libudev.h>
#include <memory>

namespace platform {

struct UdevDeleter {
    void operator()(udev *context) const noexcept { udev_unref(context); }
    void operator()(udev_enumerate *enumerate) const noexcept { udev_enumerate_unref(enumerate); }
    void operator()(udev_device *device) const noexcept { udev_device_unref(device); }
};
template <typename Object> using UdevHandle = std::unique_ptr<Object, UdevDeleter>;

} // namespace platform
