// The parts that the page is made of. Each knows what it shows and nothing of what stands beside it; a data-key says to the
// script which one it is, so that what a person has opened or stands on stays when the page is renewed.
#pragma once

#include "printer_app/page/page.h"

namespace printer_app {

/// How a state looks (a class of the style), and what it is called.
struct State {
    std::string_view tone, words;
};

State stateOf(const JobView &job);
std::string stateMark(const State &state);

/// A job as it is now, with its buttons. queue and token go into its forms.
std::string jobPart(const JobView &job, std::string_view queue, std::string_view token);

/// How a job ended, in a few lines.
std::string pastJobPart(const JobView &job, std::string_view queue, std::string_view token);

/// The form by which a file is handed over; without the script there is none.
std::string uploadPart(const QueueView &queue, int64_t limit);

std::string queuePart(const QueueView &queue, const PageView &page);

} // namespace printer_app
