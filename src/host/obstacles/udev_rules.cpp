#include "host/obstacles/udev_rules.h"

#include <algorithm>
#include <cctype>
#include <fnmatch.h>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace host {

namespace fs = std::filesystem;

namespace {

constexpr const char *kFolders[] = {"etc/udev/rules.d", "run/udev/rules.d", "usr/local/lib/udev/rules.d",
                                    "usr/lib/udev/rules.d", "lib/udev/rules.d"};
constexpr char kPlotterRules[] = "orb-vectorix";

std::vector<RuleTerm> parseRule(std::string_view text) {
    std::vector<RuleTerm> terms;
    for (;;) {
        size_t quote = text.find('"');
        size_t end = quote == std::string_view::npos ? quote : text.find('"', quote + 1);
        if (end == std::string_view::npos) return terms;
        std::string_view left = text.substr(0, quote);
        left.remove_prefix(std::min(left.find_first_not_of(", \t"), left.size()));
        size_t op = left.find_first_of("=!+-:");
        if (op != std::string_view::npos) {
            terms.push_back({std::string(left.substr(0, left.find_last_not_of(" \t", op - 1) + 1)),
                             std::string(left.substr(op, left.find_first_of(" \t", op) - op)),
                             std::string(text.substr(quote + 1, end - quote - 1))});
        }
        text.remove_prefix(end + 1);
    }
}

/// A value may hold patterns with | between them.
bool matches(const std::string &patterns, const std::string &text) {
    std::istringstream all(patterns);
    for (std::string pattern; std::getline(all, pattern, '|');) {
        if (fnmatch(pattern.c_str(), text.c_str(), 0) == 0) return true;
    }
    return false;
}

std::string withoutZeros(const std::string &digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.empty() ? 0 : digits.size() - 1));
}

/// True when the rule names the device's maker or model, and none of its terms on numbers and texts says otherwise. Other
/// terms are not looked at.
bool meansDevice(const std::vector<RuleTerm> &rule, const RuleDevice &device) {
    bool isNamed = false;
    for (const RuleTerm &term : rule) {
        if (term.op != "==") continue;
        std::string key = term.key.rfind("ATTRS{", 0) == 0 ? "ATTR" + term.key.substr(5) : term.key;
        const std::map<std::string, std::string> kFacts = {
            // As the kernel writes it; the release number at its end is not known here, and rules leave it open.
            {"ENV{PRODUCT}", withoutZeros(device.vendor) + "/" + withoutZeros(device.product) + "/0"},
            {"ATTR{idVendor}", device.vendor},
            {"ATTR{idProduct}", device.product},
            {"ATTR{manufacturer}", device.manufacturer},
            {"ATTR{product}", device.text},
        };
        auto fact = kFacts.find(key);
        if (fact == kFacts.end()) continue;
        if (!matches(term.value, fact->second)) return false;
        if (key == "ENV{PRODUCT}" || key == "ATTR{idVendor}") isNamed = true;
    }
    return isNamed;
}

bool isPlotterRules(const RulesFile &file) { return file.path.filename().string().find(kPlotterRules) != std::string::npos; }

} // namespace

std::vector<std::vector<RuleTerm>> parseRules(const std::string &text) {
    std::vector<std::vector<RuleTerm>> rules;
    std::istringstream lines(text);
    for (std::string line, whole; std::getline(lines, line);) {
        size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') continue;
        if (line.back() == '\\') {
            whole += line.substr(0, line.size() - 1);
            continue;
        }
        rules.push_back(parseRule(whole + line));
        whole.clear();
    }
    return rules;
}

std::vector<RulesFile> rulesFiles(const fs::path &root) {
    std::map<std::string, RulesFile> files;
    for (const char *folder : kFolders) {
        std::error_code ignored;
        for (fs::directory_iterator entry(root / folder, ignored), end; entry != end; entry.increment(ignored)) {
            if (entry->path().extension() != ".rules") continue;
            auto [at, isFirst] = files.emplace(entry->path().filename(), RulesFile{});
            if (!isFirst || !fs::is_regular_file(entry->path(), ignored)) continue; // a link to /dev/null masks the name
            std::ifstream file(entry->path(), std::ios::binary);
            at->second = {entry->path(), parseRules({std::istreambuf_iterator<char>(file), {}})};
        }
    }
    std::vector<RulesFile> found;
    for (auto &[name, file] : files) {
        if (!file.rules.empty()) found.push_back(std::move(file));
    }
    return found;
}

std::string brlttyRulesFor(const std::vector<RulesFile> &files, const RuleDevice &device) {
    auto takes = [&](const std::vector<RuleTerm> &rule) {
        bool isBraille = std::any_of(rule.begin(), rule.end(), [](const RuleTerm &term) {
            return term.key == "ENV{BRLTTY_BRAILLE_DRIVER}" && term.op == "=" && !term.value.empty();
        });
        return isBraille && meansDevice(rule, device);
    };
    for (const RulesFile &file : files) {
        if (std::any_of(file.rules.begin(), file.rules.end(), takes)) return file.path.filename();
    }
    return {};
}

fs::path rulesGiving(const std::vector<RulesFile> &files, const RuleDevice &device) {
    auto gives = [](const std::vector<RuleTerm> &rule) {
        return std::any_of(rule.begin(), rule.end(), [](const RuleTerm &term) {
            return term.key == "MODE" || term.key == "GROUP" || term.key == "TAG";
        });
    };
    for (const RulesFile &file : files) {
        for (const auto &rule : file.rules) {
            // In our own file a rule that names a maker jumps to the one that gives.
            if ((isPlotterRules(file) || gives(rule)) && meansDevice(rule, device)) return file.path;
        }
    }
    return {};
}

bool hasPlotterRules(const std::vector<RulesFile> &files) { return std::any_of(files.begin(), files.end(), isPlotterRules); }

} // namespace host
