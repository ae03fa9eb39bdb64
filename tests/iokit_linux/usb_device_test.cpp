#include "registry_fixture.h"

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Takes the rights to a file away, and from root the right to do without them.
class WithoutRights {
public:
    explicit WithoutRights(const std::string &path) {
        EXPECT_EQ(::chmod(path.c_str(), 0), 0);
        EXPECT_EQ(::syscall(SYS_capget, &header_, before_), 0);
        __user_cap_data_struct fewer[2] = {before_[0], before_[1]};
        fewer[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        EXPECT_EQ(::syscall(SYS_capset, &header_, fewer), 0);
    }
    ~WithoutRights() { ::syscall(SYS_capset, &header_, before_); }
    WithoutRights(const WithoutRights &) = delete;
    WithoutRights &operator=(const WithoutRights &) = delete;

private:
    __user_cap_header_struct header_ = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before_[2] = {};
};

TEST_F(RegistryTest, ConfigurationsOfADevice) {
    const bed::UsbPlotter plotter(*bed, {.configurations = 2});
    auto device = findDevice();
    ASSERT_TRUE(device);
    IOUSBConfigurationDescriptorPtr first = nullptr, second = nullptr, none = nullptr;
    EXPECT_EQ(device->GetConfigurationDescriptorPtr(0, &first), kIOReturnSuccess);
    EXPECT_EQ(device->GetConfigurationDescriptorPtr(1, &second), kIOReturnSuccess);
    EXPECT_EQ(device->GetConfigurationDescriptorPtr(2, &none), kIOReturnNotFound);
    ASSERT_TRUE(first != nullptr && second != nullptr && none == nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(first), 9), std::string("\x09\x02\x20\0\x01\x01\0\xC0\x01", 9));
    EXPECT_EQ(second->bConfigurationValue, 2);

    EXPECT_EQ(device->SetConfiguration(1), kIOReturnNotOpen);
    EXPECT_EQ(device->USBDeviceClose(), kIOReturnNotOpen);
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(1), kIOReturnSuccess);
    EXPECT_EQ(plotter.log(), Strings()); // it is active
    EXPECT_EQ(device->SetConfiguration(2), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(2), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(3), kIOReturnNotFound);
    EXPECT_EQ(plotter.log(), Strings({"configuration 2", "configuration 3"}));
    EXPECT_EQ(device->USBDeviceClose(), kIOReturnSuccess);
}

TEST_F(RegistryTest, DriversAreLeftAloneByTheDevice) {
    bed::UsbPlotter plotter(*bed, {.configurations = 2, .driver = "usblp"});
    auto device = findDevice();
    ASSERT_TRUE(device);
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(1), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(2), kIOReturnExclusiveAccess);
    EXPECT_EQ(plotter.log(), Strings({"configuration 2"}));
    EXPECT_EQ(plotter.driver(), "usblp");
}

TEST_F(RegistryTest, DevicesThatCannotBeOpened) {
    bed::UsbPlotter plotter(*bed);
    auto device = findDevice();
    auto interface = findInterface();
    ASSERT_TRUE(device && interface);
    {
        const WithoutRights withoutRights(bed->fileOf(plotter.node()));
        EXPECT_EQ(device->USBDeviceOpen(), kIOReturnNotPermitted);
        EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnNotPermitted);
    }
    ASSERT_EQ(::chmod(bed->fileOf(plotter.node()).c_str(), 0600), 0);
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnSuccess);
    EXPECT_EQ(device->USBDeviceClose(), kIOReturnSuccess);

    ASSERT_EQ(::unlink(bed->fileOf(plotter.node()).c_str()), 0);
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnNoDevice);
    EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnNoDevice);
}

} // namespace
