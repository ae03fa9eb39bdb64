#include "host/options/profile.h"

#include "host/files/whole_file.h"
#include "host/terminal/near_miss.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <sstream>
#include <sys/stat.h>
#include <toml++/toml.h>

namespace host {

namespace {

constexpr const char *kFirstLine =
    "# A plotter profile of vectorix; 'vectorix profile --help' tells what may stand here. Comments "
    "last until\n# 'profile add --force' replaces the file.\n";

/// Far more than a profile needs. Each two bytes of a file can be a table within a table, which the library takes apart by
/// calling itself: a larger one could exhaust the stack.
constexpr int64_t kLargest = int64_t{12} * 1024;

[[noreturn]] void refuse(const std::string &path, int line, const std::string &text) {
    throw Failure(ExitCode::Unfit, fmt::format("{}: line {}: {}", shown(path), line, shown(text)));
}

int lineOf(const toml::source_region &source) { return static_cast<int>(source.begin.line); }

/// A value as the words that would be typed behind its option; none for a value that is not of the kind.
using Words = std::optional<std::vector<std::string>>;

Words textWords(const toml::node &node) {
    const auto *text = node.as_string();
    return text ? Words({text->get()}) : std::nullopt;
}

Words textsWords(const toml::node &node) {
    std::vector<std::string> words;
    if (!node.is_array()) return std::nullopt;
    for (const toml::node &item : *node.as_array()) {
        Words word = textWords(item);
        if (!word) return std::nullopt;
        words.push_back(word->front());
    }
    return words;
}

Words numberWords(const toml::node &node) {
    const auto *number = node.as_integer();
    return number ? Words({fmt::format("{}", number->get())}) : std::nullopt;
}

Words textOrTrueWords(const toml::node &node) {
    const auto *truth = node.as_boolean();
    return truth && truth->get() ? Words({""}) : textWords(node);
}

/// Of an option that switches off what is on without it: true says nothing.
Words falseWords(const toml::node &node) {
    const auto *truth = node.as_boolean();
    if (!truth) return std::nullopt;
    return truth->get() ? Words(std::in_place) : Words({"true"});
}

void putText(toml::table &line, const char *key, const std::vector<std::string> &words) { line.insert(key, words.front()); }

void putTexts(toml::table &line, const char *key, const std::vector<std::string> &words) {
    toml::array list;
    for (const std::string &word : words)
        list.push_back(word);
    line.insert(key, list);
}

void putNumber(toml::table &line, const char *key, const std::vector<std::string> &words) {
    line.insert(key, std::stoll(words.front()));
}

void putTextOrTrue(toml::table &line, const char *key, const std::vector<std::string> &words) {
    if (words.front().empty()) {
        line.insert(key, true);
    } else {
        putText(line, key, words);
    }
}

void putFalse(toml::table &line, const char *key, const std::vector<std::string> &) { line.insert(key, false); }

/// For each ProfileKind, in their order: its name in messages, and how a value is read from the file and put into it.
constexpr struct {
    const char *name;
    Words (*read)(const toml::node &node);
    void (*put)(toml::table &line, const char *key, const std::vector<std::string> &words);
} kKinds[] = {{"a text in quotes", textWords, putText},
              {"a list of texts, such as ['P1,', 'P2,']", textsWords, putTexts},
              {"a whole number without quotes", numberWords, putNumber},
              {"true, or a text in quotes", textOrTrueWords, putTextOrTrue},
              {"true or false, without quotes", falseWords, putFalse}};

const auto &kindOf(const ProfileKey &key) { return kKinds[static_cast<size_t>(key.kind)]; }

toml::table parsed(const std::string &path, const std::string &text) {
    try {
        return toml::parse(text);
    } catch (const toml::parse_error &error) {
        refuse(path, lineOf(error.source()), lowered(error.description()));
    }
}

void requireKnown(const std::string &path, const toml::table &table) {
    std::vector<std::string> names;
    for (const ProfileKey &key : kProfileKeys)
        names.emplace_back(key.name);
    for (const auto &[key, node] : table) {
        if (findProfileKey(key.str())) continue;
        std::string word(key.str());
        refuse(path, lineOf(key.source()),
               fmt::format("\"{}\" is nothing that a profile has; {}'vectorix profile add --help' lists what it may have",
                           word, didYouMean(word, names)));
    }
}

ProfileValue valueOf(const std::string &path, const ProfileKey &key, const toml::node &node) {
    int line = lineOf(node.source());
    Words words = kindOf(key).read(node);
    if (!words) refuse(path, line, fmt::format("{} must be {}", key.name, kindOf(key).name));
    for (const std::string &word : *words) {
        if (word.find('\0') != std::string::npos) refuse(path, line, fmt::format("{} holds a NUL; leave it out", key.name));
    }
    return {&key, *words, line};
}

/// Throws an option's complaint ("--baud: …") as one about the file ("baud: …"), with the line of that key, or with the
/// given line when the profile has no such key.
[[noreturn]] void refuseFor(const Profile &profile, int line, std::string text) {
    const size_t end = text.find(':');
    for (const ProfileValue &value : profile.values) {
        if (optionName(*value.key) != text.substr(0, end)) continue;
        refuse(profile.file.path, value.line, value.key->name + text.substr(end));
    }
    if (text.rfind("--", 0) == 0) text.erase(0, 2);
    refuse(profile.file.path, line, text);
}

/// Checks the values by giving them to the options of a command line that is made for this alone. Throws Failure (unfit).
void check(const Profile &profile) {
    CommandLine line("profile", "", "");
    ProfileOptions options;
    addProfileOptions(line.root(), options);
    for (const ProfileValue &value : profile.values) {
        Option option = *line.root().find(optionName(*value.key));
        for (const Option &other : option.excluded()) {
            if (other.isTyped())
                refuseFor(profile, value.line,
                          fmt::format("{} and {} exclude each other", value.key->name, other.name().substr(2)));
        }
        for (const Option &other : option.needed()) {
            if (!other.isTyped())
                refuseFor(profile, value.line, fmt::format("{} needs {}", value.key->name, other.name().substr(2)));
        }
        try {
            option.give(value.words);
        } catch (const Failure &mistake) {
            refuseFor(profile, value.line, mistake.what());
        }
    }
    try {
        requireFitProfile(options);
    } catch (const Failure &failure) {
        refuseFor(profile, profile.values.front().line, failure.what());
    }
}

Profile profileOf(const std::string &name, const ProfileFile &file, const std::string &text) {
    Profile profile{name, file, {}};
    const toml::table table = parsed(file.path, text);
    requireKnown(file.path, table);
    for (const ProfileKey &key : kProfileKeys) {
        const toml::node *node = table.get(key.name);
        if (!node) continue;
        ProfileValue value = valueOf(file.path, key, *node);
        if (!value.words.empty()) profile.values.push_back(value);
    }
    check(profile);
    return profile;
}

/// Where a line begins; the end for one behind the last.
size_t startOf(const std::string &text, size_t line) {
    size_t start = 0;
    while (--line > 0 && start < text.size())
        start = std::min(text.find('\n', start), text.size() - 1) + 1;
    return start;
}

std::string lineFor(const ProfileKey &key, const std::vector<std::string> &words) {
    toml::table line;
    kindOf(key).put(line, key.name, words);
    std::ostringstream text;
    text << line << '\n';
    return text.str();
}

/// It names similar ones. Throws Failure like profileNames().
Failure unknownProfile(const std::string &name) {
    return {ExitCode::Missing, fmt::format("{}: no such profile; {}'vectorix profile list' shows those that there are", name,
                                           didYouMean(name, profileNames()))};
}

/// Calls change, which writes below the scope's folder: that of the system only root may.
void changing(ProfileScope scope, const std::string &path, const std::function<void()> &change) {
    try {
        change();
    } catch (const Failure &failure) {
        if (scope == ProfileScope::User || failure.code() != ExitCode::Permission) throw;
        throw Failure(failure.code(),
                      fmt::format("{}: permission denied; it is for all users: put sudo before the command", shown(path)));
    }
}

/// While it lives, what is made may be read by everybody.
class ForAllToRead {
public:
    ForAllToRead() : before_(umask(S_IWGRP | S_IWOTH)) {}
    ~ForAllToRead() { umask(before_); }
    ForAllToRead(const ForAllToRead &) = delete;
    ForAllToRead &operator=(const ForAllToRead &) = delete;

private:
    mode_t before_;
};

} // namespace

Profile readProfile(const std::string &name) {
    const std::optional<ProfileFile> file = findProfile(name);
    if (!file) throw unknownProfile(name);
    return profileOf(name, *file, readWhole(file->path, "profile", kLargest));
}

void keepInProfile(const std::string &name, std::string_view key, const std::string &word) {
    const Profile profile = readProfile(name);
    const std::string &path = profile.file.path;
    std::string text = readWhole(path, "profile", kLargest);
    const toml::table table = parsed(path, text);
    if (const toml::node *old = table.get(key)) {
        const size_t first = startOf(text, old->source().begin.line);
        text.erase(first, startOf(text, old->source().end.line + 1) - first);
    }
    if (!text.empty() && text.back() != '\n') text += '\n';
    text += lineFor(*findProfileKey(key), {word});
    profileOf(name, profile.file, text); // it will be read again
    changing(profile.file.scope, path, [&] { writeWhole(path, text, true); });
}

void writeProfile(const Profile &profile, bool force) {
    std::string text = kFirstLine;
    for (const ProfileValue &value : profile.values) {
        for (const std::string &word : value.words) {
            if (!isUtf8(word)) {
                throw Failure(ExitCode::Usage, fmt::format("{}: {} is not UTF-8 text; type it in plain letters",
                                                           optionName(*value.key), excerpt(word, 60)));
            }
        }
        text += lineFor(*value.key, value.words);
    }
    if (static_cast<int64_t>(text.size()) > kLargest) {
        throw Failure(ExitCode::Usage, fmt::format("{}: more than the {} bytes that a profile may have; shorten its texts",
                                                   profile.name, grouped(kLargest)));
    }
    const ProfileFile &file = profile.file;
    std::optional<ForAllToRead> forAll;
    if (file.scope == ProfileScope::System) forAll.emplace();
    changing(file.scope, file.path, [&] {
        makeProfileFolder(file.scope);
        writeWhole(file.path, text, force);
    });
}

void removeProfile(const std::string &name, ProfileScope scope) {
    const std::string path = profilePath(name, scope);
    if (unlink(path.c_str()) == 0) return;
    const int errorNumber = errno;
    if (errorNumber != ENOENT) changing(scope, path, [&] { throw fileFailure(path, errorNumber); });
    const std::optional<ProfileFile> other = findProfile(name);
    if (!other) throw unknownProfile(name);
    if (other->scope == scope) throw fileFailure(path, errorNumber); // it is in another folder of the system
    const bool isOfSystem = scope == ProfileScope::User;
    throw Failure(ExitCode::Missing,
                  fmt::format("{}: a profile of {}; {} --system", name, isOfSystem ? "the system" : "yours",
                              isOfSystem ? "remove it with" : "leave out"));
}

} // namespace host
