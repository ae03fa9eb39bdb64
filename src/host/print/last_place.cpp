#include "host/print/last_place.h"

#include "host/files/user_folder.h"
#include "host/files/whole_file.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <sstream>
#include <toml++/toml.h>
#include <xxhash.h>

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr int64_t kLargest = int64_t{16} * 1024;
constexpr size_t kMostKept = 100;
constexpr const char *kEnding = ".toml";

fs::path folder() {
    const fs::path state = userFolder("XDG_STATE_HOME", ".local/state");
    return state.empty() ? state : state / "prints";
}

/// Empty when there is no folder for it.
fs::path pathOf(const std::string &hash) {
    const fs::path in = folder();
    return in.empty() ? in : in / (hash + kEnding);
}

/// The oldest go first.
void leaveTheLast(const fs::path &in) {
    std::vector<std::pair<fs::file_time_type, fs::path>> kept;
    for (const auto &entry : fs::directory_iterator(in))
        if (entry.path().extension() == kEnding) kept.emplace_back(entry.last_write_time(), entry.path());
    std::ranges::sort(kept, std::greater());
    for (size_t i = kMostKept; i < kept.size(); ++i)
        fs::remove(kept[i].second);
}

} // namespace

std::string hashOf(const PlotFile &plot) {
    const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(), XXH3_freeState);
    if (!state) throw std::bad_alloc();
    XXH3_128bits_reset(state.get());
    plot.readBlocks([&](std::string_view block) {
        XXH3_128bits_update(state.get(), block.data(), block.size());
        return true;
    });
    const XXH128_hash_t hash = XXH3_128bits_digest(state.get());
    return fmt::format("{:016x}{:016x}", hash.high64, hash.low64);
}

std::optional<LastPlace> lastPlaceOf(const std::string &hash) {
    const fs::path path = pathOf(hash);
    std::error_code ignored;
    if (path.empty() || !fs::exists(path, ignored)) return std::nullopt;
    const toml::table table = [&] {
        try {
            return toml::parse(readWhole(path, "report of a print", kLargest));
        } catch (const toml::parse_error &) {
            return toml::table(); // what is missing is told below
        }
    }();
    const auto offset = table["offset"].value<int64_t>(), bytes = table["bytes"].value<int64_t>();
    if (!offset || !bytes || *offset < 0 || *offset > *bytes) {
        throw Failure(ExitCode::Unfit,
                      fmt::format("{}: damaged; remove it, and say with --from where to go on", shown(path.string())));
    }
    return LastPlace{*offset, *bytes, table["plot"].value_or(std::string()), table["when"].value_or(std::string())};
}

bool keepLastPlace(const std::string &hash, const LastPlace &place) {
    const fs::path path = pathOf(hash);
    if (path.empty()) return false;
    std::ostringstream text;
    text << toml::table{{"plot", place.plot}, {"offset", place.offset}, {"bytes", place.bytes}, {"when", place.when}}
         << '\n';
    try {
        fs::create_directories(path.parent_path());
        writeWhole(path, text.str(), true);
        leaveTheLast(path.parent_path());
        return true;
    } catch (const std::exception &) {
        return false;
    }
}

void forgetLastPlace(const std::string &hash) {
    std::error_code ignored;
    if (const fs::path path = pathOf(hash); !path.empty()) fs::remove(path, ignored);
}

} // namespace host
