// The udev rules installed, read for what they do to a device.
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
    std::vector<std::vector<RuleTerm>> rules; ///< without comments
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

/// The file with a rule that gives the device to people; empty for none.
std::filesystem::path rulesGiving(const std::vector<RulesFile> &files, const RuleDevice &device);

/// True when this system's own rules for plotters are among the files.
bool hasPlotterRules(const std::vector<RulesFile> &files);

} // namespace host
