#include "host/doctor/print_queues.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

namespace {

// By its socket: a print server elsewhere has nothing to do with this computer's ports.
constexpr char kSocket[] = "run/cups/cups.sock";
constexpr char kAsk[] = "LC_ALL=C timeout 5 lpstat -h /run/cups/cups.sock -v 2>/dev/null";
constexpr int kNoSuchCommand = 127;

std::string decoded(std::string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            sscanf(std::string(text.substr(i + 1, 2)).c_str(), "%2x", &value) == 1) { // NOLINT(cert-err34-c): two digits
            result += static_cast<char>(value);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

/// Letters and digits alone: makers write their names now with blanks and hyphens, now without.
std::string simplified(const std::string &text) {
    std::string result;
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0) result += static_cast<char>(std::tolower(byte));
    }
    return result;
}

std::string valueIn(const std::string &uri, const std::string &key) {
    size_t at = uri.find(key + "=");
    if (at == std::string::npos) return {};
    at += key.size() + 1;
    return decoded(std::string_view(uri).substr(at, uri.find_first_of("&?", at) - at));
}

struct Answer {
    std::string text;
    int code = -1;
};

Answer ask() {
    Answer answer;
    FILE *pipe = popen(kAsk, "re"); // NOLINT(cert-env33-c): a fixed command
    if (!pipe) return answer;
    std::array<char, 4096> bytes;
    for (size_t count; (count = fread(bytes.data(), 1, bytes.size(), pipe)) > 0;)
        answer.text.append(bytes.data(), count);
    int status = pclose(pipe);
    if (WIFEXITED(status)) answer.code = WEXITSTATUS(status);
    return answer;
}

} // namespace

PrintQueues printQueues(const fs::path &root) {
    PrintQueues result;
    std::error_code ignored;
    const fs::path settings = root / "etc/cups/printers.conf";
    if (access(settings.c_str(), R_OK) == 0) {
        std::ifstream file(settings, std::ios::binary);
        result.queues = parsePrinters({std::istreambuf_iterator<char>(file), {}});
        result.source = "/etc/cups/printers.conf";
    } else if (fs::exists(settings, ignored) && fs::exists(root / kSocket, ignored)) {
        Answer answer = ask();
        result.queues = parseLpstat(answer.text);
        result.source = "lpstat -v";
        if (answer.code == kNoSuchCommand)
            result.unseen = "there is no lpstat (Debian package cups-client)";
        else if (answer.code != 0)
            result.unseen = "the print system does not answer";
    } else {
        result.source = "no print system with queues runs here";
    }
    return result;
}

std::vector<PrintQueue> parsePrinters(const std::string &text) {
    std::vector<PrintQueue> queues;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string key, value;
        words >> key >> value;
        if (key == "<Printer" || key == "<DefaultPrinter") queues.push_back({value.substr(0, value.find('>')), ""});
        if (key == "DeviceURI" && !queues.empty()) queues.back().uri = value;
    }
    return queues;
}

std::vector<PrintQueue> parseLpstat(const std::string &text) {
    constexpr std::string_view kStart = "device for ";
    std::vector<PrintQueue> queues;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        size_t colon = line.find(": ");
        if (line.rfind(kStart, 0) != 0 || colon == std::string::npos) continue;
        queues.push_back({line.substr(kStart.size(), colon - kStart.size()), line.substr(colon + 2)});
    }
    return queues;
}

bool sendsTo(const PrintQueue &queue, const std::vector<std::string> &paths) {
    size_t colon = queue.uri.find(':');
    if (colon == std::string::npos) return false;
    std::string path = decoded(std::string_view(queue.uri).substr(colon + 1));
    path.erase(std::min(path.find('?'), path.size()));
    path.erase(0, path.rfind("//", 0) == 0 ? 2 : 0); // file:///dev/…
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

bool sendsTo(const PrintQueue &queue, const UsbDevice &device) {
    constexpr std::string_view kScheme = "usb://";
    if (queue.uri.rfind(kScheme, 0) != 0) return false;
    std::string serial = valueIn(queue.uri, "serial");
    if (!serial.empty() && !device.serialNumber.empty()) return serial == device.serialNumber;
    std::string model = queue.uri.substr(kScheme.size());
    std::string wanted = simplified(decoded(model.substr(0, model.find('?'))));
    std::string full = simplified(device.manufacturer + device.name), name = simplified(device.name);
    return !name.empty() && (wanted == full || wanted == name || wanted.ends_with(name));
}

} // namespace host
