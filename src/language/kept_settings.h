// What a plot has set and a plotter must be told again before it can go on from a place in the plot. It is kept as text:
// that needs no understanding (of character sets, say, or acceleration), and means on the plotter what the plot meant by it,
// whatever is assumed here about the sheet.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace language {

/// Settings in the order in which they were last made, each once. Many are made for a part at a time, a pen or a line type:
/// making one as a whole replaces what was set for its parts.
class KeptSettings {
public:
    static constexpr double kWhole = -1;
    static constexpr size_t kMost = 400; ///< all widths of 256 pens, and more than there are other instructions

    void clear() { *this = KeptSettings(); }
    /// The name must be of a table: it is not copied.
    void keep(std::string_view name, double part, std::string text);
    /// Forgets the setting for the part or, as a whole, with all parts.
    void drop(std::string_view name, double part);
    /// There was room for all.
    bool complete() const noexcept { return complete_; }
    void append(std::string &text) const;

private:
    struct Setting {
        std::string_view name;
        double part;
        uint64_t order;
        std::string text;
    };

    std::vector<Setting> settings_;
    uint64_t made_ = 0;
    bool complete_ = true;
};

} // namespace language
