#include "serial_print.h"

#include "figures.h"

#include <stdexcept>

namespace bench {

SerialPrint::SerialPrint(int64_t bytes) : plot_(bytes), farEnd_(plot_), job_(plot_.path(), farEnd_.port()) {
    heard([&] { sizes_ = piecesOf(job_); });
    known_ = known(plot_, sizes_);
}

template <class Run> SerialPrint::Times SerialPrint::heard(Run run) {
    const double began = wallSeconds();
    farEnd_.listen();
    const double processor = cpuOf(run);
    farEnd_.finish();
    return {wallSeconds() - began, processor};
}

SerialPrint::Times SerialPrint::plugin() {
    return heard([&] { job_.run(); });
}

SerialPrint::Times SerialPrint::floor() {
    return heard([&] {
        if (bench_writePieces(farEnd_.port().c_str(), &known_) != 0) throw std::runtime_error("floor: no write");
    });
}

} // namespace bench
