// The installed udev rules, read to explain what udev did to a device: why nobody was given the right to a USB plotter (no
// rules, none for its maker, or applied too late), and whether an adapter is taken for a braille display. udev itself tells
// only the outcome. No full interpreter: only terms on a USB device's numbers and texts are weighed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace host {

/// KEY OPERATOR "VALUE", such as ATTR{idVendor}=="0b75".
struct RuleTerm {
    std::string key, op, value;
};

struct RulesFile {
    std::filesystem::path path;
    std::vector<std::vector<RuleTerm>> rules; ///< the terms of each; comments are left out
};

/// The rules in a file's text.
std::vector<std::vector<RuleTerm>> parseRules(const std::string &text);

/// The files that udev reads below a root, in its order: of those with one name only the first folder's, and none that is
/// masked.
std::vector<RulesFile> rulesFiles(const std::filesystem::path &root);

/// A USB device as rules see it: numbers of four hexadecimal digits, texts of any bytes.
struct RuleDevice {
    std::string vendor, product, manufacturer, text;
};

/// The name of the file whose rules take the device for a braille display; empty for none.
std::string brlttyRulesFor(const std::vector<RulesFile> &files, const RuleDevice &device);

/// The file with a rule that gives users the right to the device (sets mode, group or tag); empty for none.
std::filesystem::path rulesGiving(const std::vector<RulesFile> &files, const RuleDevice &device);

/// True when the rules that this package installs are among the files.
bool hasPlotterRules(const std::vector<RulesFile> &files);

} // namespace host
