/// @file
/// Runs the benchmarks and prints a row for each: time, throughput, share of the speed of a copy that moves as many
/// bytes, and the ratio to the opponent. `--json FILE` writes the same; other options are Google Benchmark's.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>

#include "bench.h"
#include "images.h"

namespace {

using bench::Benchmark;
using bench::Work;

/// Calls between two waits for the device, so that a GPU's launches overlap as they do in use.
int callsPerWait()
{
    VexaDeviceProperties properties;
    (void)vexa::device::getDeviceProperties(0, properties);
    return properties.computeCapability > 0 ? 20 : 1;
}

/// Keeps the medians by name and prints nothing.
class Medians : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.aggregate_name == "median")
                _milliseconds[run.run_name.function_name] =
                    run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e3;
    }

    /// 0 for a benchmark that was not run.
    double milliseconds(const std::string& name) const
    {
        const auto found = _milliseconds.find(name);
        return found == _milliseconds.end() ? 0.0 : found->second;
    }

private:
    std::map<std::string, double> _milliseconds;
};

std::string nameOf(const Benchmark& row)
{
    return row.operation + "/" + bench::nameOf(row.type) + "/" + bench::nameOf(row.size);
}

/// The copy that reads and writes as many bytes as the benchmark does.
std::string copyName(const Benchmark& row)
{
    return "copy/" + std::to_string(static_cast<long long>(row.bytes)) + "/" + bench::nameOf(row.size);
}

void addRun(const std::string& name, const Work& work, int calls)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [work, calls](benchmark::State& state) {
                                     const VexaStream stream(false);
                                     // Once beforehand: memory that lay idle may have been taken back.
                                     work();
                                     stream.sync();
                                     for (auto _ : state) {
                                         for (int i = 0; i < calls; ++i) work();
                                         stream.sync();
                                     }
                                 })
        ->UseRealTime()
        ->MeasureProcessCPUTime();
}

Work copyOf(const Benchmark& row)
{
    const VexaSize size(static_cast<int>(row.bytes / 2 / row.size.height), row.size.height);
    const bench::Shared from = bench::noise(VEXA_8UC1, size, 1);
    const bench::Shared to = bench::blank(VEXA_8UC1, size, 1);
    return [=] { (void)from->copyTo(*to, {0, 0}, {0, 0, size.width, size.height}); };
}

/// What is told of a benchmark.
struct Result {
    std::string operation;
    std::string type;
    std::string size;
    double vexaMs;
    double gbPerSecond;
    double copyShare;
    std::string peer;
    double peerMs;
    double ratio;
};

Result resultOf(const Benchmark& row, const Medians& medians, int calls)
{
    const double ms = medians.milliseconds(nameOf(row)) / calls;
    const double copyMs = medians.milliseconds(copyName(row)) / calls;
    const double peerMs = medians.milliseconds(nameOf(row) + "/peer") / calls;
    const double speed = row.bytes / ms / 1e6;
    return {
        row.operation, bench::nameOf(row.type), bench::nameOf(row.size), ms, speed, copyMs / ms, row.peerName, peerMs,
        peerMs / ms};
}

void print(const std::vector<Result>& results)
{
    std::printf("%-30s %-6s %-10s %10s %8s %6s %10s %6s\n", "operation", "type", "size", "ms", "GB/s", "copy",
                "peer ms", "ratio");
    double logarithms = 0;
    int pairs = 0;
    for (const Result& r : results) {
        std::printf("%-30s %-6s %-10s %10.4f %8.1f", r.operation.c_str(), r.type.c_str(), r.size.c_str(), r.vexaMs,
                    r.gbPerSecond);
        if (r.copyShare > 0)
            std::printf(" %5.0f%%", 100 * r.copyShare);
        else
            std::printf(" %6s", "-");
        if (r.peerMs > 0) {
            std::printf(" %10.4f %6.2f", r.peerMs, r.ratio);
            logarithms += std::log(r.ratio);
            ++pairs;
        }
        std::printf("\n");
    }
    if (pairs > 0) std::printf("geometric mean of %d ratios: %.2f\n", pairs, std::exp(logarithms / pairs));
}

bool writeJson(const std::vector<Result>& results, const char* file)
{
    std::FILE* const out = std::fopen(file, "w");
    if (out == nullptr) return false;
    std::fprintf(out, "[");
    const char* separator = "\n";
    for (const Result& r : results) {
        std::fprintf(out,
                     "%s  {\"op\": \"%s\", \"type\": \"%s\", \"size\": \"%s\", \"vexa_ms\": %.6f, \"gb_per_s\": %.3f, "
                     "\"copy_share\": %.4f",
                     separator, r.operation.c_str(), r.type.c_str(), r.size.c_str(), r.vexaMs, r.gbPerSecond,
                     r.copyShare);
        if (r.peerMs > 0)
            std::fprintf(out, ", \"peer\": \"%s\", \"peer_ms\": %.6f, \"ratio\": %.4f}", r.peer.c_str(), r.peerMs,
                         r.ratio);
        else
            std::fprintf(out, ", \"peer\": null, \"peer_ms\": null, \"ratio\": null}");
        separator = ",\n";
    }
    std::fprintf(out, "\n]\n");
    return std::fclose(out) == 0;
}

/// Takes `--json FILE` out of the arguments.
const char* takeJsonFile(int& argc, char** argv)
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--json") != 0) continue;
        const char* const file = argv[i + 1];
        std::copy(argv + i + 2, argv + argc + 1, argv + i);
        argc -= 2;
        return file;
    }
    return nullptr;
}

std::vector<Benchmark> allBenchmarks()
{
    std::vector<Benchmark> rows;
    for (const VexaSize& size : {VexaSize(640, 480), VexaSize(1920, 1080), VexaSize(3840, 2160)})
        for (const auto family :
             {bench::arithmeticBenchmarks, bench::logicBenchmarks, bench::mathBenchmarks, bench::conversionBenchmarks,
              bench::fillBenchmarks, bench::statisticsBenchmarks, bench::colorBenchmarks, bench::demosaicBenchmarks,
              bench::filterBenchmarks, bench::geometryBenchmarks, bench::photometricBenchmarks,
              bench::alignmentBenchmarks, bench::transformBenchmarks, bench::flowBenchmarks, bench::visionBenchmarks})
            for (Benchmark& row : family(size)) rows.push_back(std::move(row));
    for (const auto family : {bench::matrixBenchmarks, bench::fourierBenchmarks})
        for (Benchmark& row : family()) rows.push_back(std::move(row));
    return rows;
}

}  // namespace

int main(int argc, char** argv)
{
    const char* const jsonFile = takeJsonFile(argc, argv);
    std::vector<char*> arguments(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=7";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char minTime[] = "--benchmark_min_time=0.02";
    // In front, so that options on the command line win.
    arguments.insert(arguments.begin() + 1, {repetitions, interleaving, minTime});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

    const int calls = callsPerWait();
    const std::vector<Benchmark> rows = allBenchmarks();
    std::map<std::string, Work> copies;
    for (const Benchmark& row : rows) {
        addRun(nameOf(row), row.vexa, calls);
        if (row.peer) addRun(nameOf(row) + "/peer", row.peer, calls);
        if (copies.count(copyName(row)) == 0) copies[copyName(row)] = copyOf(row);
    }
    for (const auto& [name, work] : copies) addRun(name, work, calls);

    Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);

    std::vector<Result> results;
    for (const Benchmark& row : rows)
        if (medians.milliseconds(nameOf(row)) > 0) results.push_back(resultOf(row, medians, calls));
    print(results);
    if (jsonFile != nullptr && !writeJson(results, jsonFile)) {
        std::fprintf(stderr, "can't write %s\n", jsonFile);
        return 1;
    }
    return 0;
}
