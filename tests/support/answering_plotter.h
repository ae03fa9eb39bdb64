// A plotter of an emulation on the bus: a USB device that answers as the plotter in software does. Queries are
// tested over libusb with the replies that it computes, instead of replies written into the test.
#pragma once

#include "language/recording_sink.h"
#include "support/usb_plotter.h"
#include "virtual_plotter/face/plotter.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace bed {

class AnsweringPlotter {
public:
    AnsweringPlotter(DeviceBed &bed, const PlotterShape &shape, int32_t emulation)
        : face_(optionsOf(emulation), sink_, language::kTestSheet), usb_(bed, shape) {
        usb_.onText = [this](std::string_view text) {
            EXPECT_EQ(face_.hear(text, {}), text.size());
            if (std::string said = face_.takeSaid(); !said.empty()) usb_.reply(said);
        };
    }
    const UsbPlotter &usb() const { return usb_; }

private:
    static virtual_plotter::PlotterOptions optionsOf(int32_t emulation) {
        virtual_plotter::PlotterOptions options;
        setEmulation(options, emulation);
        return options;
    }

    language::RecordingSink sink_;
    virtual_plotter::VirtualPlotter face_;
    UsbPlotter usb_;
};

} // namespace bed
