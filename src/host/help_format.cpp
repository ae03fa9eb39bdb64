#include "host/help_format.h"

#include <CLI/CLI.hpp>

namespace host {

namespace {

class HelpFormat : public CLI::Formatter {
public:
    HelpFormat() { column_width(34); }

    std::string make_option_opts(const CLI::Option *option) const override {
        std::string type = option->get_type_name();
        return type.empty() ? type : " " + type;
    }
};

} // namespace

std::shared_ptr<CLI::FormatterBase> helpFormat() { return std::make_shared<HelpFormat>(); }

} // namespace host
