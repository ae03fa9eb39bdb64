#include "printer_app/page/parts.h"

#include "printer_app/page/html.h"

#include <cctype>
#include <fmt/format.h>

namespace printer_app {
namespace {

using namespace fmt::literals;

std::string sheetChoice(const QueueView &queue) {
    std::string options;
    for (const std::string &sheet : queue.sheets)
        options += fmt::format("<option value=\"{}\">{}</option>", escaped(sheet), escaped(sheetName(sheet)));
    return options.empty() ? "" : fmt::format("<label>Sheet <select name=\"sheet\">{}</select></label>\n", options);
}

} // namespace

std::string sheetName(std::string name) {
    if (!name.empty()) name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    return name;
}

std::string uploadPart(const QueueView &queue, int64_t limit) {
    constexpr int64_t kMegabyte = 1'000'000;
    return fmt::format(
        "<form class=\"upload\" data-key=\"upload\" data-confirms=\"{confirms}\" data-limit=\"{limit}\">\n<h3>Plot a "
        "file</h3>\n"
        "<label class=\"file\">Drop it here, or choose one <input type=\"file\" name=\"file\" required multiple></label>\n"
        "<p class=\"soft\">A plot file, SVG or PDF of at most {megabytes} MB. {then}</p>\n"
        "<div class=\"choices\">{sheet}<label>Copies <input type=\"number\" name=\"copies\" value=\"1\" min=\"1\" "
        "max=\"99\" "
        "required></label>\n<label>Scale <select name=\"scale\"><option value=\"actual\">Actual size</option>"
        "<option value=\"fit\">Fit to the sheet</option></select></label></div>\n"
        "<button class=\"plain\">{verb}<span class=\"unseen\"> on {name}</span></button>\n"
        "<progress max=\"100\" aria-label=\"Sent of the file\" data-own hidden></progress><output "
        "data-own></output>\n</form>\n",
        "confirms"_a = queue.confirms, "limit"_a = limit, "megabytes"_a = limit / kMegabyte,
        "then"_a = queue.confirms ? "You see it here before it is plotted." : "<strong>It is plotted at once.</strong>",
        "sheet"_a = sheetChoice(queue), "verb"_a = queue.confirms ? "Preview" : "Plot at once",
        "name"_a = escaped(queue.name));
}

} // namespace printer_app
