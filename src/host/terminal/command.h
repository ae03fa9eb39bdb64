// The command line as it is declared: commands, their options, and what is told of each.
//
// Help, parsing, manual pages and shell completions all come from these declarations, so that an option is described once.
// The library that parses stands behind this header, in command.cpp alone: it is large, and each source that sees it would
// take seconds longer to compile.
#pragma once

#include "host/terminal/failure.h"
#include "host/terminal/manual.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace host {

class CommandLine;

/// What the command line takes for a number, hexadecimal ones included; none for anything else.
std::optional<double> typedNumber(const std::string &text);
std::optional<int64_t> typedWholeNumber(const std::string &text);

/// An option, or a word that stands without one. A reference into the command line: copies mean the same option.
class Option {
public:
    /// What is wrong with a value, as a sentence; empty when nothing is.
    using Check = std::function<std::string(const std::string &value)>;

    explicit Option(CLI::Option *option) : option_(option) {}

    // What it is. Each returns the option itself.
    Option valueName(const std::string &name) const; ///< in the help: "FILE", "none|even|odd"; "" for none
    Option describe(const std::string &help) const;  ///< replaces the help that it was declared with
    Option group(const std::string &heading) const;  ///< the heading under which the help lists it
    Option required() const;
    Option repeatable(int most = 1 << 29) const; ///< typed up to so many times; of a word, so many of them
    Option mayStandAlone() const;                ///< its value may be left out
    Option excludes(Option other) const;
    Option needs(Option other) const;
    Option check(Check fault) const;
    Option oneOf(const std::vector<std::string> &values) const;
    Option between(int least, int most) const; ///< whole numbers
    Option within(double least, double most) const;
    Option rewrite(std::function<void(std::string &value)> change) const; ///< before it is checked

    // What was typed.
    bool isTyped() const;
    std::vector<std::string> typed() const;
    std::string value() const; ///< the last one typed, or as it was rewritten
    int64_t number() const;    ///< the same of an option that takes a whole number
    /// Gives it values as if they were typed. Throws Failure (usage) for those that do not fit: "--option: why".
    void give(const std::vector<std::string> &words) const;

    // What help and manual page tell of it.
    std::string name() const;               ///< "--port", or "PLOT" of one that stands alone
    std::vector<std::string> names() const; ///< "-v", "--verbose"; of one that stands alone none
    std::string help() const;
    std::string heading() const;
    std::string placeholder() const; ///< what stands for its value; empty when it takes none
    bool takesValue() const;
    bool isRequired() const;
    bool isRepeatable() const;
    bool isValueOptional() const;
    std::vector<Option> excluded() const;
    std::vector<Option> needed() const;

private:
    CLI::Option *option_;
};

/// A command with its options, or one of its sub-commands. A reference: it lives as long as its command line.
class Command {
public:
    Command(CommandLine &line, CLI::App *app) : line_(&line), app_(app) {}

    Command add(const std::string &name, const std::string &help) const;
    void requireSubcommand() const;

    /// names: "-v,--verbose", or "PLOT" for a word without an option. What is typed is written to the variable, which must
    /// outlive the command line, when the command line is parsed.
    Option option(const std::string &names, std::string &value, const std::string &help) const;
    Option option(const std::string &names, std::vector<std::string> &values, const std::string &help) const;
    Option option(const std::string &names, std::optional<std::string> &value, const std::string &help) const;
    Option option(const std::string &names, int32_t &value, const std::string &help) const;
    Option option(const std::string &names, uint32_t &value, const std::string &help) const;
    Option option(const std::string &names, uint64_t &value, const std::string &help) const;
    Option option(const std::string &names, double &value, const std::string &help) const;
    Option option(const std::string &names, std::optional<double> &value, const std::string &help) const;
    /// Writes to no variable: value() and typed() tell what was typed.
    Option option(const std::string &names, const std::string &help) const;
    /// Calls take with the value when the command line is parsed.
    Option option(const std::string &names, void (*take)(std::string_view), const std::string &help) const;
    Option flag(const std::string &names, bool &value, const std::string &help) const;

    /// Gives the command this text: at the end of its help, ahead of the exit codes, and on its manual page.
    void explain(Manual manual) const;
    /// What to run when the command was typed. wantsJson says whether a failure goes to standard output as JSON as well; it
    /// is read when the command line is parsed. nullptr: it does not.
    void whenTyped(std::function<ExitCode()> run, const bool *wantsJson = nullptr) const;

    std::string name() const;
    std::string fullName() const; ///< as it is typed, behind those above it: "vectorix job write"
    std::string help() const;
    std::string version() const; ///< of the whole command line
    bool requiresSubcommand() const;
    std::optional<Command> above() const;
    std::vector<Command> below() const;
    /// In the order of their declaration, with the help option.
    std::vector<Option> options() const;
    /// By its name, such as "--port".
    std::optional<Option> find(const std::string &name) const;
    /// As given to explain(). For a command that was given none: the paragraphs of the command above it, and nothing else.
    Manual manual() const;

    bool operator==(const Command &other) const { return app_ == other.app_; }

private:
    CommandLine *line_;
    CLI::App *app_;
};

/// Owns what was declared. Commands and options refer into it and must not outlive it.
class CommandLine {
public:
    /// version: what --version prints.
    CommandLine(const std::string &name, const std::string &help, const std::string &version);
    CommandLine(const CommandLine &) = delete;
    CommandLine &operator=(const CommandLine &) = delete;
    ~CommandLine();

    Command root();
    /// Reads the words of main(). Prints help or version when they are asked for (Done), or what is wrong with the words
    /// (Usage). After Done, run() is what the typed command is to do, and empty when only help or version was asked for.
    ExitCode parse(int count, const char *const *words);
    const std::function<ExitCode()> &run() const { return run_; }
    bool wantsJson() const { return wantsJson_; }

private:
    friend class Command;

    std::unique_ptr<CLI::App> app_;
    std::map<const CLI::App *, Manual> manuals_;
    std::function<ExitCode()> run_;
    bool wantsJson_ = false;
};

} // namespace host
