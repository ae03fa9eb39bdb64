#include "plots.h"

#include "figures.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace bench {

namespace {

constexpr size_t kLargestPiece = 256;

std::string makeBlock() {
    std::minstd_rand random(1);
    auto below = [&](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
    std::string block = "IN;SP1;";
    constexpr size_t kRoom = 400; // more than one round adds
    while (block.size() < Plot::kBlock - kRoom) {
        block += text("PU%u,%u;", below(10900), below(7650));
        for (unsigned lines = 1 + below(20); lines > 0; --lines)
            block += text("PD%u,%u;", below(10900), below(7650));
    }
    block.resize(Plot::kBlock - 1, '\n');
    block += ';';
    return block + block.substr(0, kLargestPiece);
}

} // namespace

TemporaryFile::TemporaryFile(const char *ending) : path_("/tmp/orb-bench-XXXXXX") {
    path_ += ending;
    fd_ = mkstemps(path_.data(), static_cast<int>(strlen(ending)));
    if (fd_ < 0) throw std::system_error(errno, std::generic_category(), path_);
}

TemporaryFile::~TemporaryFile() {
    close(fd_);
    unlink(path_.c_str());
}

void TemporaryFile::append(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t taken = write(fd_, bytes.data(), bytes.size());
        if (taken < 0) throw std::system_error(errno, std::generic_category(), path_);
        bytes.remove_prefix(static_cast<size_t>(taken));
    }
}

Plot::Plot(int64_t bytes) : block_(makeBlock()), size_(bytes), file_(".plt") {
    if (const auto rest = static_cast<size_t>(bytes % kMB); rest != 0)
        size_ += static_cast<int64_t>(block_.rfind(';', rest - 1) + 1) - static_cast<int64_t>(rest);
    for (int64_t left = size_; left > 0; left -= kMB)
        file_.append(std::string_view(block_).substr(0, static_cast<size_t>(std::min(left, kMB))));
}

bool Plot::has(int64_t offset, std::string_view bytes) const {
    if (offset + static_cast<int64_t>(bytes.size()) > size_) return false;
    while (!bytes.empty()) {
        const size_t at = static_cast<size_t>(offset) % kBlock;
        const size_t count = std::min(bytes.size(), kBlock - at);
        if (memcmp(block_.data() + at, bytes.data(), count) != 0) return false;
        offset += static_cast<int64_t>(count);
        bytes.remove_prefix(count);
    }
    return true;
}

std::string outlines(size_t bytes) {
    std::minstd_rand random(1);
    auto between = [&](unsigned low, unsigned high) { return low + static_cast<unsigned>(random()) % (high - low); };
    std::string plot = "IN;SP1;";
    while (plot.size() < bytes) {
        const double x = between(500, 10400), y = between(500, 7100), radius = between(40, 340);
        constexpr int kCorners = 60;
        for (int i = 0; i <= kCorners; ++i) {
            const double turn = 2 * M_PI * i / kCorners, r = radius * (1 + 0.2 * std::sin(5 * turn));
            plot += text("%s%.0f,%.0f;", i == 0 ? "PU" : "PD", x + r * std::cos(turn), y + r * std::sin(turn));
        }
    }
    return plot + "PU;SP0;";
}

std::string longLines(size_t bytes) {
    std::minstd_rand random(1);
    auto below = [&](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
    std::string plot = "IN;SP1;";
    while (plot.size() < bytes) {
        const unsigned x = below(10900), y = below(7650), toX = below(10900), toY = below(7650);
        plot += text("PU%u,%u;PD%u,%u;\n", x, y, toX, toY);
    }
    return plot;
}

} // namespace bench
