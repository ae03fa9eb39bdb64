#include "printer_app/jobs/job_record.h"

#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace printer_app {

using nlohmann::json;

namespace {

constexpr size_t kLongestText = 200; // bytes

/// Calls f(name, member) for each member that is kept as it is.
template <class Record, class F> void eachMember(Record &record, F f) {
    f("queue", record.queue);
    f("id", record.id);
    f("name", record.name);
    f("user", record.user);
    f("format", record.format);
    f("file", record.file);
    f("created", record.created);
    f("ended", record.ended);
    f("copies", record.options.copies);
    f("media", record.options.media);
    f("scaling", record.options.scaling);
    f("scalingIsTyped", record.options.scalingIsTyped);
    f("turn", record.options.turn);
    f("firstPage", record.options.firstPage);
    f("lastPage", record.options.lastPage);
    f("phase", record.phase);
    f("message", record.message);
    f("isHeld", record.isHeld);
    f("asksFirst", record.asksFirst);
    f("isExamined", record.isExamined);
    f("words", record.words);
    f("pages", record.pages);
    f("hasPicture", record.hasPicture);
    f("notes", record.notes);
    f("sheetsDone", record.sheetsDone);
    f("isInterrupted", record.isInterrupted);
    f("place", record.place);
    f("bytes", record.bytes);
    f("totalBytes", record.totalBytes);
}

json jsonOf(const Figures &figures) {
    json pens = json::array();
    for (const PenFigures &pen : figures.pens)
        pens.push_back(
            {{"number", pen.number}, {"strokes", pen.strokes}, {"millimetres", pen.millimetres}, {"colour", pen.colour}});
    return {{"width", figures.width},
            {"height", figures.height},
            {"sheet", figures.sheet},
            {"seconds", figures.seconds},
            {"pens", pens}};
}

Figures figuresFrom(const json &value) {
    Figures figures{value.at("width"), value.at("height"), value.at("sheet"), value.at("seconds"), {}};
    for (const json &pen : value.at("pens"))
        figures.pens.push_back({pen.at("number"), pen.at("strokes"), pen.at("millimetres"), pen.value("colour", "")});
    return figures;
}

} // namespace

json jsonOf(const JobRecord &record) {
    json value;
    eachMember(record, [&](const char *name, const auto &member) { value[name] = member; });
    if (record.figures) value["figures"] = jsonOf(*record.figures);
    return value;
}

JobRecord recordFrom(const json &value) {
    JobRecord record;
    eachMember(record, [&](const char *name, auto &member) {
        if (value.contains(name)) value.at(name).get_to(member);
    });
    if (value.contains("figures")) record.figures = figuresFrom(value.at("figures"));
    return record;
}

std::string forPeople(std::string_view message) {
    std::string said;
    while (!message.empty()) {
        const std::string_view part = message.substr(0, std::min(message.find("; ", 1), message.find(", or ", 1)));
        message.remove_prefix(part.size());
        const bool isForTypists = part.find(" --") != part.npos && part.find("sudo ") == part.npos;
        if (said.empty() || !isForTypists) said += part;
    }
    return said;
}

std::string interruptedText(int64_t place, std::string_view why) {
    return fmt::format("Interrupted at place {}: {}. Put in new paper and plot again, or go on from here on the same sheet.",
                       place, why);
}

std::string tidied(std::string_view text) {
    std::string result(text.substr(0, kLongestText));
    for (char &c : result)
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) c = ' ';
    // A character that was cut in two, at the end.
    for (int i = 0; i < 4 && !result.empty() && !host::isUtf8(result); ++i)
        result.pop_back();
    return host::isUtf8(result) ? result : host::shown(text.substr(0, kLongestText / 4));
}

} // namespace printer_app
