// Service 1: a call of the entry that does nothing, beside the bare copies of its record.
#include "floors.h"
#include "rows.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <map>
#include <stdexcept>

namespace bench {

namespace {

template <ORB_ServiceRecord (*function)(ORB_ServiceRecord)> void call(benchmark::State &state) {
    ORB_ServiceRecord record{};
    record.ORB_serviceNumber = kORB_ServiceNothing;
    for (auto step : state) {
        (void)step;
        record = function(record);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(call<ORB_getVectorixCS2>)->Name("plugin");
BENCHMARK(call<bench_copyRecord>)->Name("floor");

/// Keeps each repetition's time instead of showing it.
class Keeper final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration)
                seconds[run.run_name.function_name].push_back(run.GetAdjustedCPUTime() * 1e-9);
    }
    std::map<std::string, std::vector<double>> seconds;
};

} // namespace

Row entryCopies(const Settings &settings) {
    ORB_ServiceRecord record;
    memset(&record, 0x5A, sizeof record);
    record.ORB_serviceNumber = kORB_ServiceNothing;
    const ORB_ServiceRecord answer = ORB_getVectorixCS2(record);
    record.ORB_errorID = kORB_NoError;
    const ORB_ServiceRecord floor = bench_copyRecord(record);
    const auto *came = reinterpret_cast<const unsigned char *>(&answer);
    if (!std::equal(came, came + sizeof answer, reinterpret_cast<const unsigned char *>(&floor)))
        throw std::runtime_error("the record came back otherwise than copied");

    // In a random order of the repetitions of both, so that neither has the quieter moments.
    std::string arguments[] = {"orb_bench", "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.05",
                               settings.quick ? "--benchmark_repetitions=9" : "--benchmark_repetitions=31"};
    char *words[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data(), nullptr};
    int count = 4;
    benchmark::Initialize(&count, words);
    Keeper keeper;
    benchmark::RunSpecifiedBenchmarks(&keeper);
    const double plugin = median(keeper.seconds["plugin"]), bare = median(keeper.seconds["floor"]);
    return {text("%.0f ns", plugin * 1e9), text("%.0f ns", bare * 1e9), plugin / bare, "", 1.15};
}

} // namespace bench
