#include "host/attendance/awake.h"

#include <cstring>
#include <fcntl.h>
#include <memory>
#include <systemd/sd-bus.h>

namespace host {

namespace {

constexpr uint64_t kPatience = 1'000'000; // microseconds

constexpr const char *kService = "org.freedesktop.login1";
constexpr const char *kPath = "/org/freedesktop/login1";
constexpr const char *kManager = "org.freedesktop.login1.Manager";

struct Unref {
    void operator()(sd_bus *bus) const { sd_bus_flush_close_unref(bus); }
    void operator()(sd_bus_message *message) const { sd_bus_message_unref(message); }
};

} // namespace

Awake::Awake(const std::string &why) {
    sd_bus *opened = nullptr;
    if (const int error = sd_bus_open_system(&opened); error < 0) {
        problem_ = std::string("no system bus: ") + strerror(-error);
        return;
    }
    const std::unique_ptr<sd_bus, Unref> bus(opened);
    sd_bus_set_method_call_timeout(bus.get(), kPatience);
    sd_bus_message *answered = nullptr;
    const int error = sd_bus_call_method(bus.get(), kService, kPath, kManager, "Inhibit", nullptr, &answered, "ssss",
                                         "sleep:idle", "vectorix", why.c_str(), "block");
    const std::unique_ptr<sd_bus_message, Unref> answer(answered);
    int fd = -1;
    if (error < 0 || sd_bus_message_read(answer.get(), "h", &fd) < 0) {
        problem_ = std::string("the login manager does not answer: ") + strerror(error < 0 ? -error : EBADMSG);
        return;
    }
    inhibitor_ = UniqueFd(fcntl(fd, F_DUPFD_CLOEXEC, 0)); // the message closes its own
}

} // namespace host
