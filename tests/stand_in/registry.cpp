#include "stand_in/registry.h"

#include "platform/corefoundation/corefoundation.h"
#include "stand_in/usb_objects.h"

namespace stand_in {

namespace {

constexpr mach_port_t kMasterPort = 77;

} // namespace

IOReturn Registry::masterPort(mach_port_t *port) {
    const Step step(fate, Seam::registry, "IOMasterPort");
    if (step.fails()) return step.code<IOReturn>();
    *port = kMasterPort;
    ++outstanding;
    return step.result<IOReturn>();
}

IOReturn Registry::deallocatePort(mach_port_t port) {
    const Step step(fate, Seam::registry, "mach_port_deallocate");
    if (port != kMasterPort) fate.misuse("a port was given back that is none");
    --outstanding;
    return step.result<IOReturn>();
}

bool Registry::matching(const char *className, MatchingDictionary *dictionary) {
    const Step step(fate, Seam::registry, "IOServiceMatching");
    if (step.fails()) return false;
    (*dictionary)["class"] = className;
    return true;
}

IOReturn Registry::matchingServices(mach_port_t, const MatchingDictionary &dictionary, io_object_t *iterator) {
    const Step step(fate, Seam::registry, "IOServiceGetMatchingServices");
    if (step.fails()) return step.code<IOReturn>();
    const std::string &className = dictionary.at("class");
    std::vector<Service> found;
    if (className == "IOSerialBSDClient") {
        if (dictionary.at("IOSerialBSDClientType") != "IORS232SerialStream") fate.misuse("a search for other clients");
        for (const auto &port : serialPorts)
            found.push_back({nullptr, &port});
    } else {
        for (const UsbDevice &device : devices)
            found.insert(found.end(), static_cast<size_t>(className == "IOUSBDevice" ? 1 : device.interfaces), {&device});
    }
    *iterator = nextObject_++;
    iterators_[*iterator] = std::move(found);
    ++outstanding;
    return step.result<IOReturn>();
}

io_object_t Registry::next(io_object_t iterator) {
    const Step step(fate, Seam::registry, "IOIteratorNext");
    auto &left = iterators_.at(iterator);
    if (step.fails() || left.empty()) return 0;
    services_[nextObject_] = left.front();
    left.erase(left.begin());
    ++outstanding;
    return nextObject_++;
}

IOReturn Registry::release(io_object_t object) {
    const Step step(fate, Seam::registry, "IOObjectRelease");
    if (iterators_.erase(object) + services_.erase(object) == 0)
        fate.misuse("object " + std::to_string(object) + " released twice");
    --outstanding;
    return step.result<IOReturn>();
}

CFTypeRef Registry::createProperty(io_object_t service, const char *key) {
    const Step step(fate, Seam::registry, "IORegistryEntryCreateCFProperty");
    if (step.fails()) return 0;
    if (step.gives()) { // a text of that length, or for 0 a number instead of a text
        const auto length = step.code<size_t>();
        return length == 0 ? CFNumberCreateInt64(0) : CFStringCreateWithUTF8(std::string(length, 'x'));
    }
    const Service &found = services_.at(service);
    if (found.device) return found.device->hasProperties ? CFStringCreateWithUTF8("present") : 0;
    const auto property = found.port->find(key);
    return property == found.port->end() ? 0 : CFStringCreateWithUTF8(property->second);
}

IOReturn Registry::createPlugIn(io_object_t service, const UUIDBytes &, IOCFPlugInInterface **plugIn) {
    const Step step(fate, Seam::registry, "IOCreatePlugIn");
    if (step.fails()) return step.code<IOReturn>();
    if (step.gives()) return kIOReturnSuccess; // but hands out no plug-in
    *plugIn = new PlugIn(*this, *services_.at(service).device);
    ++outstanding;
    return step.result<IOReturn>();
}

IOReturn Registry::destroyPlugIn(IOCFPlugInInterface *plugIn) {
    const Step step(fate, Seam::registry, "IODestroyPlugIn");
    delete plugIn;
    --outstanding;
    return step.result<IOReturn>();
}

} // namespace stand_in
