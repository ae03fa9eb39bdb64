// One plot, its pseudo-terminal, and the two that print it there: the plug-in, and the C loop that is its floor.
#pragma once

#include "far_end.h"
#include "print.h"

namespace bench {

class SerialPrint {
public:
    explicit SerialPrint(int64_t bytes);

    struct Times {
        double wall = 0;      ///< s, until the last byte has arrived
        double processor = 0; ///< s, what of it the print took of a processor
    };
    /// Each throws std::runtime_error when what arrives is not the plot.
    Times plugin();
    Times floor();

    int64_t bytes() const { return plot_.size(); }
    size_t pieces() const { return sizes_.size(); }

private:
    template <class Run> Times heard(Run run);

    Plot plot_;
    FarEnd farEnd_;
    PrintJob job_;
    std::vector<uint8_t> sizes_;
    bench_Pieces known_{};
};

} // namespace bench
