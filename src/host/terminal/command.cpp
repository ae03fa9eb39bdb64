#include "host/terminal/command.h"

#include "host/terminal/near_miss.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <sstream>

namespace host {

namespace {

constexpr size_t kHelpColumn = 34; // where what an option does begins

/// Lists an option with the name of its value and nothing more. Which options exclude each other is told only to those who
/// type both.
class HelpFormat : public CLI::Formatter {
public:
    HelpFormat() { column_width(kHelpColumn); }

    std::string make_option_opts(const CLI::Option *option) const override {
        std::string type = option->get_type_name();
        return type.empty() ? type : " " + type;
    }
};

/// The innermost known command among the words that were typed; app itself when there is none.
const CLI::App &typedCommand(const CLI::App &app) {
    const CLI::App *at = &app;
    while (!at->get_subcommands().empty())
        at = at->get_subcommands().front();
    return *at;
}

std::string fullNameOf(const CLI::App &app) {
    return app.get_parent() ? fullNameOf(*app.get_parent()) + " " + app.get_name() : app.get_name();
}

std::vector<std::string> optionsOf(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

std::vector<std::string> commandsOf(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *known : app.get_subcommands({}))
        names.push_back(known->get_name());
    return names;
}

/// The message for what is wrong with what was typed. An unknown word is named before all else: other mistakes mostly
/// follow from it.
std::string mistakeText(const CLI::App &app, const CLI::ParseError &mistake) {
    const CLI::App &command = typedCommand(app);
    std::vector<std::string> commands = commandsOf(command);
    for (const std::string &word : app.remaining(true)) {
        bool isOption = word[0] == '-' && word.size() > 1;
        if (!isOption && commands.empty()) continue;
        std::string name = isOption ? word.substr(0, word.find('=')) : word;
        std::string meant = nearMiss(name, isOption ? optionsOf(command) : commands);
        return fmt::format("{}: no such {}{}", shown(name), isOption ? "option" : "command",
                           meant.empty() ? "" : fmt::format("; did you mean '{}'?", meant));
    }
    return shown(lowered(mistake.what()));
}

template <class Value> Option added(CLI::App *app, const std::string &names, Value &value, const std::string &help) {
    return Option(app->add_option(names, value, help));
}

std::vector<Option> asOptions(const std::set<CLI::Option *> &options) { return {options.begin(), options.end()}; }

} // namespace

std::optional<double> typedNumber(const std::string &text) {
    double value = 0;
    return CLI::detail::lexical_cast(text, value) ? std::optional(value) : std::nullopt;
}

std::optional<int64_t> typedWholeNumber(const std::string &text) {
    int64_t value = 0;
    return CLI::detail::lexical_cast(text, value) ? std::optional(value) : std::nullopt;
}

Option Option::valueName(const std::string &name) const {
    option_->type_name(name);
    return *this;
}

Option Option::describe(const std::string &help) const {
    option_->description(help);
    return *this;
}

Option Option::group(const std::string &heading) const {
    option_->group(heading);
    return *this;
}

Option Option::required() const {
    option_->required();
    return *this;
}

Option Option::repeatable(int most) const {
    option_->expected(1, most)->allow_extra_args(option_->get_positional());
    return *this;
}

Option Option::mayStandAlone() const {
    option_->expected(0, 1);
    return *this;
}

Option Option::excludes(Option other) const {
    option_->excludes(other.option_);
    return *this;
}

Option Option::needs(Option other) const {
    option_->needs(other.option_);
    return *this;
}

Option Option::check(Check fault) const {
    option_->check(CLI::Validator([fault = std::move(fault)](std::string &value) { return fault(value); }, ""));
    return *this;
}

Option Option::oneOf(const std::vector<std::string> &values) const {
    option_->check(CLI::IsMember(values).description(""));
    return *this;
}

Option Option::between(int least, int most) const {
    return check([least, most](const std::string &text) {
        const std::optional<int64_t> number = typedWholeNumber(text);
        if (number && *number >= least && *number <= most) return std::string();
        return fmt::format("{} is not a whole number from {} to {}", text, least, most);
    });
}

Option Option::within(double least, double most) const {
    option_->check(CLI::Range(least, most).description(""));
    return *this;
}

Option Option::rewrite(std::function<void(std::string &value)> change) const {
    option_->transform(CLI::Validator(
        [change = std::move(change)](std::string &value) {
            change(value);
            return std::string();
        },
        ""));
    return *this;
}

bool Option::isTyped() const { return option_->count() > 0; }

std::vector<std::string> Option::typed() const { return option_->results(); }

std::string Option::value() const { return option_->as<std::string>(); }

int64_t Option::number() const { return option_->as<int64_t>(); }

void Option::give(const std::vector<std::string> &words) const {
    try {
        option_->add_result(words);
        option_->run_callback();
    } catch (const CLI::ConversionError &) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {} is out of range", name(), words.front()));
    } catch (const CLI::ParseError &mistake) {
        throw Failure(ExitCode::Usage, mistake.what());
    }
}

std::string Option::name() const { return option_->get_name(); }

std::vector<std::string> Option::names() const {
    std::vector<std::string> names;
    for (const std::string &name : option_->get_snames())
        names.push_back("-" + name);
    for (const std::string &name : option_->get_lnames())
        names.push_back("--" + name);
    return names;
}

std::string Option::help() const { return option_->get_description(); }

std::string Option::heading() const { return option_->get_group(); }

std::string Option::placeholder() const {
    if (names().empty()) return option_->get_name(true);
    return takesValue() ? option_->get_type_name() : "";
}

bool Option::takesValue() const { return option_->get_items_expected_max() > 0; }

bool Option::isRequired() const { return option_->get_required(); }

bool Option::isRepeatable() const { return option_->get_items_expected_max() > 1; }

bool Option::isValueOptional() const { return takesValue() && option_->get_items_expected_min() == 0; }

std::vector<Option> Option::excluded() const { return asOptions(option_->get_excludes()); }

std::vector<Option> Option::needed() const { return asOptions(option_->get_needs()); }

Command Command::add(const std::string &name, const std::string &help) const {
    return {*line_, app_->add_subcommand(name, help)};
}

void Command::requireSubcommand() const { app_->require_subcommand(1); }

Option Command::option(const std::string &names, std::string &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, std::vector<std::string> &values, const std::string &help) const {
    return added(app_, names, values, help);
}

Option Command::option(const std::string &names, std::optional<std::string> &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, int32_t &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, uint32_t &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, uint64_t &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, double &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, std::optional<double> &value, const std::string &help) const {
    return added(app_, names, value, help);
}

Option Command::option(const std::string &names, const std::string &help) const {
    return Option(app_->add_option(names, help));
}

Option Command::option(const std::string &names, void (*take)(std::string_view), const std::string &help) const {
    return Option(app_->add_option_function<std::string>(names, take, help));
}

Option Command::flag(const std::string &names, bool &value, const std::string &help) const {
    return Option(app_->add_flag(names, value, help));
}

void Command::explain(Manual manual) const {
    app_->footer(helpText(manual));
    line_->manuals_.insert_or_assign(app_, std::move(manual));
}

void Command::whenTyped(std::function<ExitCode()> run, const bool *wantsJson) const {
    app_->callback([line = line_, run = std::move(run), wantsJson] {
        line->wantsJson_ = wantsJson && *wantsJson;
        line->run_ = run;
    });
}

std::string Command::name() const { return app_->get_name(); }

std::string Command::fullName() const { return fullNameOf(*app_); }

std::string Command::help() const { return app_->get_description(); }

std::string Command::version() const { return line_->app_->version(); }

bool Command::requiresSubcommand() const { return app_->get_require_subcommand_min() > 0; }

std::optional<Command> Command::above() const {
    CLI::App *parent = app_->get_parent();
    return parent ? std::optional(Command(*line_, parent)) : std::nullopt;
}

std::vector<Command> Command::below() const {
    std::vector<Command> commands;
    for (CLI::App *app : app_->get_subcommands([](CLI::App *) { return true; }))
        commands.emplace_back(*line_, app);
    return commands;
}

std::vector<Option> Command::options() const {
    std::vector<Option> options;
    for (CLI::Option *option : app_->get_options())
        options.emplace_back(option);
    return options;
}

std::optional<Option> Command::find(const std::string &name) const {
    CLI::Option *option = app_->get_option_no_throw(name);
    return option ? std::optional(Option(option)) : std::nullopt;
}

Manual Command::manual() const {
    if (auto kept = line_->manuals_.find(app_); kept != line_->manuals_.end()) return kept->second;
    std::optional<Command> parent = above();
    return {parent ? parent->manual().about : "", {}, {}};
}

CommandLine::CommandLine(const std::string &name, const std::string &help, const std::string &version)
    : app_(std::make_unique<CLI::App>(help, name)) {
    app_->set_version_flag("--version", name + " " + version);
    app_->formatter(std::make_shared<HelpFormat>());
}

CommandLine::~CommandLine() = default;

Command CommandLine::root() { return {*this, app_.get()}; }

ExitCode CommandLine::parse(int count, const char *const *words) {
    try {
        app_->parse(count, words);
        return ExitCode::Done;
    } catch (const CLI::Success &request) { // help or version
        std::ostringstream text;
        app_->exit(request, text, text);
        writeOut(text.str());
        return ExitCode::Done;
    } catch (const CLI::ParseError &mistake) {
        printFailure(mistakeText(*app_, mistake));
        printError("Try '{} --help'.\n", fullNameOf(typedCommand(*app_)));
        return ExitCode::Usage;
    }
}

} // namespace host
