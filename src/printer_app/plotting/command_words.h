// What is typed for the command "vectorix" so that a client's job becomes a plot: which sheet, how it lies there, which of
// its pages. The command decides everything else, and is asked for what it would do; nothing of drawings is known here.
#pragma once

#include "printer_app/jobs/job_record.h"
#include "printer_app/jobs/queue_config.h"

#include <string>
#include <vector>

namespace printer_app {

using Words = std::vector<std::string>;

/// What the command says of a job beforehand.
struct Examination {
    std::string refusal;    ///< empty: it can be plotted
    Words words;            ///< that place it
    Words notes;            ///< what a person should know
    std::vector<int> pages; ///< sheets: pages of a document, or {0}
    std::optional<Figures> figures;
    bool hasPicture = false;
};

/// Has the command look at a document, draw its first sheet into picture, and find how it lies best. Takes as long as the
/// conversion does. Throws std::exception when the command cannot be run.
Examination examine(const std::string &command, const QueueConfig &queue, const JobRecord &job, const std::string &picture);

/// "vectorix print …" of one sheet of a job, from a place in its plot on; it reports to descriptor 3 and is steered at
/// socket.
Words printWords(const std::string &command, const JobRecord &job, int page, int64_t place, const std::string &socket);

} // namespace printer_app
