// What the page shows, out of queues and journal; and the jobs that it sends.
#pragma once

#include "printer_app/server/service.h"

namespace printer_app {

PageView pageView(const Service &service, const std::string &token, const std::string &notice);

inline constexpr const char *kPageUser = "page"; // of jobs that are sent from it: nobody has a name there

struct Submission {
    std::string name, user, format, file; ///< file: in the spool, from now on the job's
    JobOptions options;
};

/// Gives the print system a job. Its number; 0 when it takes none.
int submit(Service &service, Queue &queue, const Submission &submission);

} // namespace printer_app
