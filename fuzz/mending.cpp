// Plot files as they come from anywhere: what is mended arrives whole, once mended for good, and all else is refused.
#include "host/mending/mending.h"
#include "host/terminal/failure.h"
#include "support/platform.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider input(data, size);
    const host::PlotRules rules{input.PickValueInArray({17002, 17008, 17009, 17022}), ";"};
    const auto plot = host::PlotFile::holding("fuzzed", input.ConsumeRemainingBytesAsString());
    try {
        const auto mended = host::mended(plot, rules);
        const host::PlotFile &printed = mended ? mended->plot : plot;
        fuzz::require(host::examine(printed, rules).isFit(), "what is printed arrives whole");
        fuzz::require(!mended || !host::mended(mended->plot, rules), "what was mended needs no more of it");
    } catch (const host::Failure &failure) {
        fuzz::require(failure.code() == host::ExitCode::Unfit, "a plot is refused for what it is");
    }
    return 0;
}
