#include "language/kept_settings.h"

#include <algorithm>

namespace language {

void KeptSettings::keep(std::string_view name, double part, std::string text) {
    if (part == kWhole) std::erase_if(settings_, [&](const Setting &s) { return s.part != kWhole && s.name == name; });
    auto found = std::ranges::find_if(settings_, [&](const Setting &s) { return s.part == part && s.name == name; });
    if (found == settings_.end()) {
        complete_ = complete_ && settings_.size() < kMost;
        if (settings_.size() == kMost) return;
        found = settings_.insert(found, {name, part, 0, {}});
    }
    found->order = ++made_;
    found->text = std::move(text);
}

void KeptSettings::drop(std::string_view name, double part) {
    std::erase_if(settings_, [&](const Setting &s) { return s.name == name && (part == kWhole || s.part == part); });
}

void KeptSettings::append(std::string &text) const {
    std::vector<const Setting *> ordered;
    for (const Setting &setting : settings_)
        ordered.push_back(&setting);
    std::ranges::sort(ordered, {}, &Setting::order);
    for (const Setting *setting : ordered)
        text += setting->text;
}

} // namespace language
