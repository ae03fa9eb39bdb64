#include "printer_app/server/web.h"

#include "host/files/unique_fd.h"
#include "host/files/whole_file.h"
#include "host/files/write_all.h"
#include "host/terminal/output.h"
#include "printer_app/server/driver.h"
#include "printer_app/server/login.h"
#include "printer_app/server/page_view.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fcntl.h>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <sys/random.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace printer_app {

namespace {

using Fields = std::map<std::string, std::string>;

Service *theService = nullptr; // of the only one

constexpr int64_t kLargestPicture = int64_t{64} << 20;
constexpr size_t kLargestForm = 16384;

// Sent with each answer. The print system's library knows few fields of HTTP by name; the value of this one may have lines.
constexpr std::string_view kPolicy =
    "\r\nContent-Security-Policy: default-src 'none'; style-src 'self'; script-src 'self'; img-src 'self'; connect-src "
    "'self'; "
    "form-action 'self'; base-uri 'none'; frame-ancestors 'none'\r\nX-Content-Type-Options: nosniff\r\nReferrer-Policy: "
    "same-origin\r\nX-Frame-Options: DENY\r\nCache-Control: no-store";

std::string randomToken() {
    std::array<unsigned char, 32> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw host::Failure(host::ExitCode::Failed, "the system gives no random numbers");
    std::string text;
    for (unsigned char byte : bytes)
        text += fmt::format("{:02x}", byte);
    return text;
}

const std::string &token() {
    static const std::string value = randomToken();
    return value;
}

bool answer(pappl_client_t *client, http_status_t status, std::string_view type, std::string_view body,
            const char *location = nullptr) {
    http_t *http = papplClientGetHTTP(client);
    httpClearFields(http);
    httpSetField(http, HTTP_FIELD_CONTENT_TYPE, (std::string(type) + std::string(kPolicy)).c_str());
    if (location) httpSetField(http, HTTP_FIELD_LOCATION, location);
    if (status == HTTP_STATUS_UNAUTHORIZED) httpSetField(http, HTTP_FIELD_WWW_AUTHENTICATE, "Basic realm=\"Plotters\"");
    httpSetLength(http, body.size());
    return httpWriteResponse(http, status) == 0 && httpWrite2(http, body.data(), body.size()) >= 0 &&
           httpFlushWrite(http) >= 0;
}

bool refuse(pappl_client_t *client, http_status_t status, std::string_view text) {
    // What else comes is not read: the connection ends.
    answer(client, status, "text/plain; charset=utf-8", std::string(text) + "\n");
    return false;
}

bool refuseJson(pappl_client_t *client, http_status_t status, const std::string &text) {
    answer(client, status, "application/json",
           nlohmann::json({{"error", text}}).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    return false;
}

/// The name under which the client thinks to have reached this computer: one of its own, or the address that it did reach.
/// Others are pages of strangers whose names lead here.
bool isOwnName(pappl_client_t *client, std::string host) {
    if (const size_t colon = host.rfind(':'); colon != std::string::npos && host.find(']', colon) == std::string::npos)
        host.erase(colon);
    http_addr_t address{};
    socklen_t length = sizeof address;
    std::array<char, 256> text{}, own{};
    if (getsockname(httpGetFd(papplClientGetHTTP(client)), &address.addr, &length) == 0)
        httpAddrString(&address, text.data(), text.size());
    papplSystemGetHostName(theService->system, own.data(), own.size());
    const std::string name(own.data()), reached(text.data());
    const auto isOneOf = [&](std::initializer_list<std::string> names) {
        return std::ranges::find(names, host) != names.end();
    };
    return isOneOf({"localhost", "127.0.0.1", "[::1]", reached, name, name.substr(0, name.find('.')) + ".local"});
}

/// Whether the client may use the page at all; answers it when not.
bool isAllowed(pappl_client_t *client) {
    http_t *http = papplClientGetHTTP(client);
    const std::string host = httpGetField(http, HTTP_FIELD_HOST), origin = httpGetField(http, HTTP_FIELD_ORIGIN);
    if (!isOwnName(client, host)) return refuse(client, HTTP_STATUS_BAD_REQUEST, "This is not the computer of that name.");
    const std::string scheme = papplClientIsEncrypted(client) ? "https://" : "http://";
    if (papplClientGetMethod(client) == HTTP_STATE_POST && !origin.empty() && origin != scheme + host)
        return refuse(client, HTTP_STATUS_FORBIDDEN, "This form is of another page.");
    if (httpAddrLocalhost(httpGetAddress(http))) return true;
    if (!theService->options.pageIsShared)
        return refuse(client, HTTP_STATUS_FORBIDDEN,
                      "This page is for the computer with the plotter (--share-page shares it).");
    if (!papplClientIsEncrypted(client)) {
        const std::string there = "https://" + host + "/";
        answer(client, HTTP_STATUS_MOVED_PERMANENTLY, "text/plain", "", there.c_str());
        return false;
    }
    if (isAuthorized(theService->folder, httpGetField(http, HTTP_FIELD_AUTHORIZATION))) return true;
    return refuse(client, HTTP_STATUS_UNAUTHORIZED, "A password is needed.");
}

std::string decoded(std::string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        int value = 0;
        const char *digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            result += static_cast<char>(value);
            i += 2;
        } else {
            result += text[i] == '+' ? ' ' : text[i];
        }
    }
    return result;
}

Fields fieldsOf(std::string_view text) {
    Fields fields;
    while (!text.empty()) {
        const std::string_view pair = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(pair.size() + 1, text.size()));
        const size_t equal = std::min(pair.find('='), pair.size());
        fields[decoded(pair.substr(0, equal))] = decoded(pair.substr(std::min(equal + 1, pair.size())));
    }
    return fields;
}

Fields queryOf(pappl_client_t *client) {
    const char *text = papplClientGetOptions(client);
    return fieldsOf(text ? text : "");
}

int numberIn(Fields &fields, const char *name) {
    const std::string &text = fields[name];
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

bool showPage(pappl_client_t *client, void *) {
    if (!isAllowed(client)) return false;
    if (papplClientGetMethod(client) != HTTP_STATE_GET) return refuse(client, HTTP_STATUS_BAD_REQUEST, "Only GET.");
    Fields query = queryOf(client);
    const PageView view = pageView(*theService, token(), query["notice"]);
    return answer(client, HTTP_STATUS_OK, "text/html; charset=utf-8",
                  query["part"] == "main" ? pageMain(view) : pageHtml(view));
}

bool showStyle(pappl_client_t *client, void *) {
    return isAllowed(client) && answer(client, HTTP_STATUS_OK, "text/css; charset=utf-8", pageStyle());
}

bool showScript(pappl_client_t *client, void *) {
    return isAllowed(client) && answer(client, HTTP_STATUS_OK, "text/javascript; charset=utf-8", pageScript());
}

bool showIcon(pappl_client_t *client, void *) {
    return isAllowed(client) && answer(client, HTTP_STATUS_OK, "image/svg+xml", pageIcon());
}

bool showPicture(pappl_client_t *client, void *) {
    if (!isAllowed(client)) return false;
    Fields query = queryOf(client);
    const auto job = theService->journal.find(query["queue"], numberIn(query, "job"));
    try {
        if (job && job->hasPicture)
            return answer(client, HTTP_STATUS_OK, "image/png",
                          host::readWhole(theService->pictureOf(*job), "picture", kLargestPicture));
    } catch (const host::Failure &) {
    }
    return answer(client, HTTP_STATUS_NOT_FOUND, "text/plain", "There is no picture.\n");
}

/// Plots a job once more, under a number of its own: all of it, or from where it was stopped. Empty when it does, else why
/// not.
std::string plotAgain(Queue &queue, const JobRecord &job, bool isFromHere) {
    std::string copy = theService->spool / "again-XXXXXX";
    const host::UniqueFd fd(mkostemp(copy.data(), O_CLOEXEC));
    std::error_code error;
    if (fd.get() >= 0) fs::copy_file(job.file, copy, fs::copy_options::overwrite_existing, error);
    if (fd.get() < 0 || error) {
        unlink(copy.c_str());
        return "The document is not kept any more: send it again.";
    }
    JobOptions options = job.options;
    options.from = isFromHere ? job.place : 0;
    options.fromSheet = isFromHere ? job.sheetsDone : 0;
    return submit(*theService, queue, {job.name, job.user, job.format, copy, options}) ? "" : "The queue takes no jobs now.";
}

std::string doAction(Fields &form) {
    Queue *queue = theService->find(std::string_view(form["queue"]));
    const auto action = actionNamed(form["action"]);
    const auto job = theService->journal.find(form["queue"], numberIn(form, "job"));
    if (!queue || !action || !job) return "There is no such job.";
    const bool isFromHere = *action == Action::FromHere;
    if (job->hasEnded())
        return isFromHere || *action == Action::PlotAgain ? plotAgain(*queue, *job, isFromHere)
                                                          : "The job has ended already.";
    if (*action != Action::Stop) {
        queue->say(job->id, *action);
        return "";
    }
    std::shared_lock alive(queue->isAlive);
    if (pappl_printer_t *printer = queue->printer) papplJobCancel(papplPrinterFindJob(printer, job->id));
    return "";
}

bool isOurs(Fields &fields) { return fields["session"] == token(); }

bool takeForm(pappl_client_t *client, void *) {
    if (!isAllowed(client)) return false;
    if (papplClientGetMethod(client) != HTTP_STATE_POST) return refuse(client, HTTP_STATUS_BAD_REQUEST, "Only forms.");
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t got; (got = httpRead2(papplClientGetHTTP(client), block.data(), block.size())) > 0;) {
        text.append(block.data(), static_cast<size_t>(got));
        if (text.size() > kLargestForm) return refuse(client, HTTP_STATUS_REQUEST_TOO_LARGE, "This is too much.");
    }
    Fields form = fieldsOf(text);
    if (!isOurs(form))
        return refuse(client, HTTP_STATUS_FORBIDDEN, "This form is too old, or none of this page's: load the page again.");
    const std::string notice = doAction(form);
    std::string encoded;
    for (char c : notice)
        encoded += isalnum(static_cast<unsigned char>(c)) ? std::string(1, c)
                                                          : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return answer(client, HTTP_STATUS_SEE_OTHER, "text/plain", "", notice.empty() ? "/" : ("/?notice=" + encoded).c_str());
}

/// What is sent, in a file of the spool. Empty when it could not be kept, and the client has its answer.
std::string kept(pappl_client_t *client) {
    http_t *http = papplClientGetHTTP(client);
    const int64_t most = int64_t{theService->options.largestUpload} * 1'000'000;
    std::string file = theService->spool / "page-XXXXXX";
    const host::UniqueFd fd(mkostemp(file.data(), O_CLOEXEC));
    const auto giveUp = [&](http_status_t status, const std::string &why) {
        unlink(file.c_str());
        refuseJson(client, status, why);
        return std::string();
    };
    if (fd.get() < 0) return giveUp(HTTP_STATUS_SERVER_ERROR, "There is no room for it.");
    // Without a length, nothing would tell a file that is whole from one whose connection was cut.
    if (httpIsChunked(http)) return giveUp(HTTP_STATUS_LENGTH_REQUIRED, "The length of the file has to be said.");
    if (httpGetLength2(http) > most)
        return giveUp(HTTP_STATUS_REQUEST_TOO_LARGE,
                      fmt::format("The file has more than {} MB.", theService->options.largestUpload));
    std::array<char, 65536> block{};
    int64_t bytes = 0;
    for (ssize_t got; (got = httpRead2(http, block.data(), block.size())) != 0;) {
        if (got < 0) return giveUp(HTTP_STATUS_BAD_REQUEST, "The file did not come whole.");
        if ((bytes += got) > most)
            return giveUp(HTTP_STATUS_REQUEST_TOO_LARGE,
                          fmt::format("The file has more than {} MB.", theService->options.largestUpload));
        if (!host::writeAll(fd.get(), {block.data(), static_cast<size_t>(got)}))
            return giveUp(HTTP_STATUS_SERVER_ERROR, "There is no room for it.");
    }
    // A connection that was cut ends as a file does; only this tells that more was to come.
    if (httpGetState(http) == HTTP_STATE_POST_RECV) return giveUp(HTTP_STATUS_BAD_REQUEST, "The file did not come whole.");
    if (bytes == 0) return giveUp(HTTP_STATUS_BAD_REQUEST, "The file is empty.");
    return file;
}

bool takeUpload(pappl_client_t *client, void *) {
    if (!isAllowed(client)) return false;
    Fields query = queryOf(client);
    Queue *queue = theService->find(std::string_view(query["queue"]));
    if (papplClientGetMethod(client) != HTTP_STATE_POST || !queue || !isOurs(query))
        return refuseJson(client, HTTP_STATUS_FORBIDDEN, "The page is too old: load it again.");
    const std::string file = kept(client);
    if (file.empty()) return false;
    std::string head(8192, '\0');
    const host::UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    head.resize(static_cast<size_t>(std::max(ssize_t{0}, read(fd.get(), head.data(), head.size()))));
    const char *type = typeOf(head);
    if (!type) {
        unlink(file.c_str());
        return refuseJson(client, HTTP_STATUS_UNSUPPORTED_MEDIATYPE,
                          "A plotter draws lines: take PDF, SVG or a plot file (HP-GL, DM/PL).");
    }
    JobOptions options;
    options.copies = std::clamp(numberIn(query, "copies"), 1, 999);
    options.scaling = query["scale"] == "fit" ? Scaling::Fit : Scaling::Auto;
    options.scalingIsTyped = options.scaling == Scaling::Fit;
    const auto media = std::ranges::find(queue->config.media, query["sheet"], &Media::sheet);
    if (media != queue->config.media.end()) options.media = media->name;
    const std::string name = tidied(query["name"]);
    const int job = submit(*theService, *queue, {name.empty() ? "drawing" : name, kPageUser, type, file, options});
    if (job == 0) {
        unlink(file.c_str());
        return refuseJson(client, HTTP_STATUS_SERVER_ERROR, "The queue takes no jobs now.");
    }
    return answer(client, HTTP_STATUS_OK, "application/json", fmt::format("{{\"job\":{}}}", job));
}

/// Nothing may be thrown through the print system, which is written in C.
template <bool (*show)(pappl_client_t *, void *)> bool guarded(pappl_client_t *client, void *data) try {
    return show(client, data);
} catch (const std::exception &error) {
    host::printFailure(error.what());
    return refuse(client, HTTP_STATUS_SERVER_ERROR, "It did not work; the service's log says why.");
}

} // namespace

void addPage(Service &service) {
    theService = &service;
    token(); // before anybody asks
    const auto add = [&](const char *path, const char *type, pappl_resource_cb_t show) {
        papplSystemAddResourceCallback(service.system, path, type, show, nullptr);
    };
    add("/", "text/html", guarded<showPage>);
    add("/page.css", "text/css", guarded<showStyle>);
    add("/page.js", "text/javascript", guarded<showScript>);
    add("/page.svg", "image/svg+xml", guarded<showIcon>);
    add("/picture", "image/png", guarded<showPicture>);
    add("/do", "text/html", guarded<takeForm>);
    add("/upload", "application/json", guarded<takeUpload>);
    for (const auto &queue : service.queues) // where print dialogs lead to
        add(("/" + queue->config.name + "/").c_str(), "text/html", guarded<showPage>);
}

} // namespace printer_app
