#include "host/picture/estimate.h"

#include "language/plot_reader.h"

#include <algorithm>

namespace host {

namespace {

constexpr int64_t kSteps = 256; // finer than anybody sees

} // namespace

double Estimate::secondsLeft(int64_t doneBytes) const {
    if (course.empty() || doneBytes < stepBytes) return findings.seconds;
    const auto steps = std::min(static_cast<size_t>(doneBytes / stepBytes), course.size());
    return findings.seconds - course[steps - 1];
}

Estimate estimateOf(const PlotFile &plot, std::optional<language::Language> language, const language::Rectangle &hardClip,
                    double secondsPerByte) {
    language::NoPen noPen;
    language::PlotReader reader(language, noPen, hardClip, language::Clipping::None, secondsPerByte);
    const auto step = static_cast<size_t>(plot.size() / kSteps + 1);
    std::vector<double> course;
    size_t missing = step; // of the step under way
    plot.readBlocks([&](std::string_view block) {
        while (block.size() >= missing) {
            reader.take(block.substr(0, missing));
            course.push_back(reader.reader() ? reader.reader()->findings().seconds : 0);
            block.remove_prefix(missing);
            missing = step;
        }
        reader.take(block);
        missing -= block.size();
        return true;
    });
    reader.finish();
    return {reader.language(), reader.reader()->findings(), static_cast<int64_t>(step), std::move(course)};
}

} // namespace host
