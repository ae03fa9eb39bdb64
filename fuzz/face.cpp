// The plotter in software behind its line: the first bytes choose its emulation, buffer, pace and fault, the rest is heard
// in pieces as time goes by.
#include "support/input.h"
#include "support/sheet_sink.h"
#include "virtual_plotter/face/plotter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace virtual_plotter;
    constexpr int32_t kEmulations[] = {17002, 17005, 17008, 17009, 0};
    constexpr Fault kFaults[] = {Fault::none, Fault::hang, Fault::hangUp, Fault::rubbish, Fault::xoff};

    fuzz::Input input(data, size);
    PlotterOptions options;
    setEmulation(options, input.pick(kEmulations));
    options.fault = input.pick(kFaults);
    options.faultAfter = input.byte();
    options.bufferBytes = input.byte();
    options.perByte = std::chrono::milliseconds(input.byte() % 4);
    const size_t piece = 1 + input.byte();

    fuzz::SheetSink sink;
    VirtualPlotter plotter(options, sink, fuzz::kSheet);
    VirtualPlotter::Time now{0};
    uint64_t heard = 0;
    bool isHeld = false;
    for (std::string_view text = input.rest(); !text.empty();) {
        const size_t room = plotter.room();
        const size_t taken = plotter.hear(text.substr(0, piece), now);
        fuzz::require(taken <= piece && (room == 0 || taken > 0), "what there is room for is taken");
        heard += taken;
        text.remove_prefix(taken);
        for (char c : plotter.takeSaid()) {
            if (c != VirtualPlotter::kXoff && c != VirtualPlotter::kXon) continue;
            fuzz::require((c == VirtualPlotter::kXoff) != isHeld, "the host is held and let go in turns");
            isHeld = c == VirtualPlotter::kXoff;
        }
        if (taken == 0 && plotter.isIdle()) break; // for good
        now += std::chrono::milliseconds(7);
        plotter.advance(now);
    }
    plotter.finish();
    fuzz::require(plotter.heardBytes() == heard, "every byte is counted");
    return 0;
}
