// The page on which a person sees the queues and says that paper is in, pauses, goes on, stops and plots again. It is made
// here whole, of plain values: what it shows is decided by those who fill them, and whether somebody may see it, by those
// who serve it. Everything that comes from a client (names, messages) is escaped here and nowhere else.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace printer_app {

/// What a person can say to a job. The name of each in a form: kActions in job_part.cpp.
enum class Action { PaperIsIn, GoOn, Pause, PauseAtOnce, Stop, PlotAgain, FromHere };

/// For the form's field "action"; none for anything else.
std::optional<Action> actionNamed(std::string_view name);

struct PenFigures {
    int number = 0;
    int64_t strokes = 0;
    double millimetres = 0;
    std::string colour; ///< that it draws, "#rrggbb"; empty for a pen of a plot file
};

/// What a job comes to, as "vectorix preview" says it.
struct Figures {
    double width = 0, height = 0; ///< of all that is drawn, in mm
    std::string sheet;            ///< "a3"; empty when none was named
    double seconds = 0;           ///< that it takes
    std::vector<PenFigures> pens;
};

struct JobView {
    enum class Phase { Preparing, Queued, Waiting, Plotting, Paused, Troubled, Done, Stopped, Failed, Stopping };

    int id = 0;
    std::string name, user; ///< as the client says
    Phase phase = Phase::Queued;
    std::string message; ///< what is the matter, or to be done; empty for nothing
    bool hasPicture = false;
    std::vector<std::string> notes; ///< on the drawing
    std::optional<Figures> figures;
    int64_t bytes = 0, totalBytes = 0; ///< of this sheet; 0 of 0 before it begins
    std::optional<double> secondsLeft;
    int sheet = 0, sheets = 0; ///< copies and pages; 0 before it begins
    time_t created = 0, ended = 0;
    std::vector<Action> actions; ///< that are possible now; the first is what is wanted
};

struct FindingView {
    std::string text;
    std::string command, then; ///< the remedy, and what it does; may be empty
    bool isInTheWay = false;
};

struct QueueView {
    std::string name;
    std::string device; ///< "/dev/ttyUSB0", "USB"
    std::string uri;    ///< for clients
    bool isThere = false;
    bool confirms = true;            ///< each sheet waits for a person
    std::vector<std::string> sheets; ///< that an upload may ask for, the usual one first
    std::vector<FindingView> findings;
    std::vector<JobView> jobs;    ///< that are not at their end, the next one first
    std::vector<JobView> history; ///< the last one first
};

struct PageView {
    std::vector<QueueView> queues;
    std::string token;       ///< for the forms' field "session"
    std::string notice;      ///< what became of a form; empty for none
    int64_t uploadLimit = 0; ///< bytes
};

/// "A4" for "a4".
std::string sheetName(std::string name);

/// The whole page, in UTF-8. Its style and script are at /page.css and /page.js.
std::string pageHtml(const PageView &view);

/// What the script puts in place of the page's <main> once a second (at /?part=main).
std::string pageMain(const PageView &view);

/// The contents of /page.css, /page.js and /page.svg (the picture that a browser shows beside the title).
std::string_view pageStyle();
std::string_view pageScript();
std::string_view pageIcon();

} // namespace printer_app
