// The start of a job on the USB link, and its end: the interface is closed on each of the sender's many ways out. There is
// no such file for the serial link, whose start-up bytes are part of opening the port.
#pragma once

#include <cstdint>

namespace plot {

/// Opens the plotter's interface for the life of a job. Ends with the interface closed and released.
class UsbSession {
public:
    UsbSession() = default;
    UsbSession(const UsbSession &) = delete;
    UsbSession &operator=(const UsbSession &) = delete;
    ~UsbSession();

    /// False when the interface cannot be opened; *status is the job's result then.
    bool open(int32_t *status);

    /// Clears the out pipe, waits two seconds, sends what the emulation wants to hear first. A failed write is reported and
    /// does not end the job; false when a text does not convert.
    bool sendStart(int32_t *status);
};

} // namespace plot
