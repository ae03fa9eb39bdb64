// What is known of a job beside what the print system keeps of it: how it is to lie on its sheet, what it comes to, and how
// far its plot has come. It is what is left of a job when the program ends, and all that a person is told of it.
#pragma once

#include "printer_app/page/page.h"

#include <cstdint>
#include <ctime>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace printer_app {

using Phase = JobView::Phase;

enum class Scaling { Auto, Fit, None }; ///< Auto: as large as it is, and fitted where the pen would not reach all of it

/// As the client asked for it. What is not said is the queue's to choose.
struct JobOptions {
    int copies = 1;
    std::string media; ///< IPP's name of the sheet; empty: the queue's usual one
    Scaling scaling = Scaling::Auto;
    bool scalingIsTyped = false;     ///< a plot file is left as it is unless it was asked for
    int turn = 0;                    ///< degrees to the left, beside what fits the sheet better: 0, 90, 180, 270
    int firstPage = 1, lastPage = 0; ///< of a document; 0: to its end
    int64_t from = 0;                ///< where a job goes on that another one ended early: place in the plot,
    int fromSheet = 0;               ///< and sheets ahead of it
};

struct JobRecord {
    std::string queue;
    int id = 0;
    std::string name, user, format, file; ///< file: the document, in the spool
    time_t created = 0, ended = 0;
    JobOptions options;

    Phase phase = Phase::Preparing;
    std::string message;
    bool isHeld = false;     ///< a client holds it
    bool asksFirst = false;  ///< it was to be held until a time: a person decides, also where nobody is asked else
    bool isExamined = false; ///< the following five are known
    std::optional<Figures> figures;
    std::vector<std::string> words; ///< of the command, for all sheets
    std::vector<int> pages;         ///< each a sheet; {0}: no document of pages
    bool hasPicture = false;
    std::vector<std::string> notes; ///< what was left out of the drawing, or done otherwise

    int sheetsDone = 0;         ///< of copies x pages
    bool isInterrupted = false; ///< the sheet under way was begun, and a person has to say how it goes on
    int64_t place = 0;          ///< in the plot of that sheet, up to which it was sent
    int64_t bytes = 0, totalBytes = 0;
    std::optional<double> secondsLeft;

    int sheets() const { return options.copies * static_cast<int>(pages.size()); }
    bool hasEnded() const { return phase == Phase::Done || phase == Phase::Stopped || phase == Phase::Failed; }
};

nlohmann::json jsonOf(const JobRecord &record);
/// Throws std::exception for what is no record.
JobRecord recordFrom(const nlohmann::json &value);

/// What the command says, without the advice that is of use only to those who type it.
std::string forPeople(std::string_view message);

/// What a person is told of a job whose plot was cut off.
std::string interruptedText(int64_t place, std::string_view why);

/// A client's text as it may stand in a line: without control characters, at most 200 bytes, in UTF-8.
std::string tidied(std::string_view text);

} // namespace printer_app
