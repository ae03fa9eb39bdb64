#include "printer_app/server/login.h"

#include "host/files/whole_file.h"
#include "host/terminal/output.h"

#include <cerrno>
#include <chrono>
#include <crypt.h>
#include <cstring>
#include <cups/http.h>
#include <fmt/format.h>
#include <iostream>
#include <mutex>
#include <termios.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace printer_app {

using host::ExitCode;
using host::Failure;

namespace {

constexpr size_t kLeast = 8, kMost = 256; // characters
constexpr int64_t kLargest = 4096;        // bytes of the file

std::filesystem::path fileIn(const std::filesystem::path &folder) { return folder / "password"; }

/// Switches off that the terminal shows what is typed.
class Unseen {
public:
    Unseen() {
        isTerminal_ = tcgetattr(STDIN_FILENO, &old_) == 0;
        if (!isTerminal_) return;
        termios quiet = old_;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
        host::printError("Password for the page: ");
    }
    ~Unseen() {
        if (!isTerminal_) return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &old_);
        host::printError("\n");
    }
    Unseen(const Unseen &) = delete;
    Unseen &operator=(const Unseen &) = delete;

private:
    termios old_{};
    bool isTerminal_ = false;
};

std::string hashOf(const std::string &password, const char *setting) {
    crypt_data data{};
    const char *hash = crypt_r(password.c_str(), setting, &data);
    return hash && hash[0] != '*' ? hash : "";
}

bool isSame(const std::string &a, const std::string &b) {
    unsigned char difference = a.size() != b.size();
    for (size_t i = 0; i < a.size() && i < b.size(); ++i)
        difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

/// Behind the colon of what the client sent.
std::string passwordIn(const std::string &field) {
    constexpr std::string_view kBasic = "Basic ";
    if (field.size() < kBasic.size() || strncasecmp(field.c_str(), kBasic.data(), kBasic.size()) != 0) return "";
    std::vector<char> text(field.size() + 1);
    int length = static_cast<int>(text.size());
    httpDecode64_2(text.data(), &length, field.c_str() + kBasic.size());
    const std::string both(text.data(), strnlen(text.data(), text.size()));
    const size_t colon = both.find(':');
    return colon == std::string::npos ? "" : both.substr(colon + 1);
}

} // namespace

ExitCode keepPassword(const std::filesystem::path &folder) {
    std::string password;
    {
        const Unseen unseen;
        std::getline(std::cin, password);
    }
    if (password.size() < kLeast || password.size() > kMost)
        throw Failure(ExitCode::Usage, fmt::format("--set-password: take a password of {} to {} characters", kLeast, kMost));
    const char *setting = crypt_gensalt(nullptr, 0, nullptr, 0);
    const std::string hash = setting ? hashOf(password, setting) : "";
    if (hash.empty()) throw Failure(ExitCode::Failed, fmt::format("the password cannot be hashed: {}", strerror(errno)));
    host::writeWhole(fileIn(folder), hash + "\n", true);
    host::printOut("The password is kept; start the service again with --share --share-page.\n");
    return ExitCode::Done;
}

void requirePassword(const std::filesystem::path &folder) {
    if (!std::filesystem::exists(fileIn(folder)))
        throw Failure(ExitCode::Usage,
                      "--share-page: there is no password yet; vectorix-printer-app --set-password keeps one");
}

bool isAuthorized(const std::filesystem::path &folder, const std::string &field) {
    static std::mutex knowing, trying; // who is known does not wait behind those who guess, one by one
    static std::string accepted, hash; // the last field that had the password, and what it was held against: hashing is slow
    if (field.empty()) return false;
    std::string kept = host::readWhole(fileIn(folder), "password", kLargest);
    kept.erase(kept.find_last_not_of('\n') + 1);
    {
        std::lock_guard lock(knowing);
        if (!accepted.empty() && kept == hash && isSame(field, accepted)) return true;
    }
    std::lock_guard onlyOne(trying);
    const std::string password = passwordIn(field);
    if (!password.empty() && isSame(hashOf(password, kept.c_str()), kept)) {
        std::lock_guard lock(knowing);
        accepted = field;
        hash = kept;
        return true;
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));
    return false;
}

} // namespace printer_app
