#include "printer_app/page/page.h"

#include "printer_app/page/html.h"
#include "printer_app/page/parts.h"

#include <fmt/format.h>

namespace printer_app {
namespace {

constexpr const char *kFrame = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Plotters</title>
<link rel="icon" href="/page.svg">
<link rel="stylesheet" href="/page.css">
<script src="/page.js" defer></script>
</head>
<body>
<header><img src="/page.svg" alt="" width="32" height="32"><h1>Plotters</h1></header>
<p id="silence" class="notice bad" role="alert" hidden></p>
<noscript><p class="notice">Without its script this page stands still, and takes no files. <a href="/">Look again</a></p></noscript>
<main tabindex="-1">{}</main>
<p id="news" class="unseen" role="status"></p>
</body>
</html>
)";

constexpr std::string_view kNoQueues = R"(<section class="queue"><h2>No plotter yet</h2>
<p>Each plotter profile becomes a queue here. Make the first one on the computer that the plotter is connected to:</p>
<code>vectorix profile add studio --port /dev/ttyUSB0</code>
</section>
)";

} // namespace

std::string pageHtml(const PageView &view) { return fmt::format(kFrame, pageMain(view)); }

std::string pageMain(const PageView &view) {
    std::string main =
        fmt::format("<p class=\"notice\" data-key=\"notice\" data-own role=\"status\">{}</p>\n", escaped(view.notice));
    for (const QueueView &queue : view.queues)
        main += queuePart(queue, view);
    if (view.queues.empty()) main += kNoQueues;
    return main;
}

} // namespace printer_app
