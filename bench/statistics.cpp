/// @file
/// Benchmarks of statistics, histograms and matrix products.

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace al = vexa::arithmeticLogical;
namespace st = vexa::imageStatistics;

/// Numbers that an operation gives, in the order in which the opponent stores them.
using Numbers = std::vector<double>;

struct Statistic {
    const char* name;
    bool masked;
    std::vector<VexaType> types;
    Numbers (*call)(const VexaImage& src, const VexaImage& mask);
};

void append(Numbers& numbers, const VexaImage& src, const VexaScalar& scalar)
{
    numbers.insert(numbers.end(), scalar.vals(), scalar.vals() + src.channels());
}

Numbers numbersOf(const VexaImage& src, VexaStatus (*call)(const VexaImage&, VexaScalar&, const VexaStream&))
{
    VexaScalar result;
    (void)call(src, result, VexaStream(false));
    Numbers numbers;
    append(numbers, src, result);
    return numbers;
}

const std::vector<VexaType> oneChannel = {VEXA_8UC1, VEXA_16UC1, VEXA_32FC1};
const std::vector<VexaType> allTypes = {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3, VEXA_32FC1, VEXA_32FC3};

// clang-format off
const Statistic statistics[] = {
    {"minMax", false, oneChannel,
     [](const VexaImage& src, const VexaImage&) {
         VexaScalar min, max;
         (void)st::minMax(src, min, max);
         return Numbers{min[0], max[0]};
     }},
    {"sum", false, allTypes, [](const VexaImage& src, const VexaImage&) { return numbersOf(src, st::sum); }},
    {"mean", false, allTypes, [](const VexaImage& src, const VexaImage&) { return numbersOf(src, st::mean); }},
    {"norm", false, oneChannel, [](const VexaImage& src, const VexaImage&) { return numbersOf(src, st::norm); }},
    {"meanStdDev", false, allTypes,
     [](const VexaImage& src, const VexaImage&) {
         VexaScalar mean, stdDev;
         (void)st::meanStdDev(src, mean, stdDev);
         Numbers numbers;
         append(numbers, src, mean);
         append(numbers, src, stdDev);
         return numbers;
     }},
    {"meanStdDev masked", true, allTypes,
     [](const VexaImage& src, const VexaImage& mask) {
         VexaScalar mean, stdDev;
         (void)st::meanStdDev(src, mean, stdDev, mask);
         Numbers numbers;
         append(numbers, src, mean);
         append(numbers, src, stdDev);
         return numbers;
     }},
    {"countInRange", false, {VEXA_8UC1, VEXA_32FC1},
     [](const VexaImage& src, const VexaImage&) {
         VexaScalar count;
         (void)st::countInRange(src, count, VexaScalar(50), VexaScalar(180));
         return Numbers{count[0]};
     }},
};
// clang-format on

/// Ends the program unless the opponent stored the same numbers.
void compareNumbers(const Numbers& numbers, const Peer& peer, const VexaImage& expected, const std::string& what)
{
    if (!peer.work) return;
    peer.work();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const double other = expected.get(static_cast<int>(i), 0, 0);
        constexpr double tolerance = 1e-9;
        if (std::fabs(numbers[i] - other) <= tolerance * std::fmax(1.0, std::fabs(other))) continue;
        std::fprintf(stderr, "%s: number %zu is %.12g, the opponent has %.12g\n", what.c_str(), i, numbers[i], other);
        std::exit(1);
    }
}

Benchmark make(const Statistic& statistic, VexaType type, VexaSize size)
{
    const Shared src = noise(type, size, 1);
    const Shared selection = noise(VEXA_8UC1, size, 7);
    const Shared mask = blank(VEXA_8UC1, size, 7);
    // Half of the pixels.
    (void)al::inRange(*selection, 0, 127, *mask);
    const Shared expected = blank(VEXA_64FC1, {6, 1}, 1);
    std::vector<Shared> sources = {src};
    if (statistic.masked) sources.push_back(mask);
    const Peer peer = peerOf({statistic.name, sources, expected, {50, 180}});
    compareNumbers(statistic.call(*src, *mask), peer, *expected, statistic.name);
    const double bytes = bytesOf(type, size) + (statistic.masked ? bytesOf(VEXA_8UC1, size) : 0);
    return {statistic.name, type,     size, bytes, [=, call = statistic.call] { (void)call(*src, *mask); },
            peer.work,      peer.name};
}

Benchmark makeInRange(VexaType type, VexaSize size)
{
    const Shared src = noise(type, size, 1);
    const Shared result = blank(VEXA_8UC1, size, 1);
    const Shared expected = blank(VEXA_8UC1, size, 2);
    const Work vexa = [=] { (void)al::inRange(*src, 50, 180, *result); };
    const Peer peer = peerOf({"inRange", {src}, expected, {50, 180}});
    compare(vexa, peer.work, *result, *expected, 0, "inRange");
    return {"inRange", type, size, bytesOf(type, size) + bytesOf(VEXA_8UC1, size), vexa, peer.work, peer.name};
}

Benchmark makeHistogram(const std::string& name, const Shared& src)
{
    const Shared expected = blank(VEXA_32FC1, {256, src->channels()}, 1);
    const auto hist = std::make_shared<VexaHistogram>(src->type(), VEXA_PTR_HOST);
    const Work vexa = [=] { (void)st::calcHist(*src, *hist); };
    const Peer peer = peerOf({"calcHist", {src}, expected});
    vexa();
    compareNumbers(Numbers(hist->hist(), hist->hist() + 256), peer, *expected, name);
    return {name, src->type(), src->size(), bytesOf(src->type(), src->size()), vexa, peer.work, peer.name};
}

Benchmark makeProduct(int side)
{
    const VexaSize size(side, side);
    const Shared a = noise(VEXA_32FC1, size, 1);
    const Shared b = noise(VEXA_32FC1, size, 2);
    const Shared result = blank(VEXA_32FC1, size, 1);
    const Shared expected = blank(VEXA_32FC1, size, 2);
    const Work vexa = [=] { (void)al::matMul(*a, *b, *result); };
    const Peer peer = peerOf({"matMul", {a, b}, expected});
    compare(vexa, peer.work, *result, *expected, 1e-4, "matMul");
    return {"matMul", VEXA_32FC1, size, 3 * bytesOf(VEXA_32FC1, size), vexa, peer.work, peer.name};
}

}  // namespace

std::vector<Benchmark> statisticsBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const Statistic& statistic : statistics)
        for (const VexaType type : statistic.types) benchmarks.push_back(make(statistic, type, size));
    for (const VexaType type : {VEXA_8UC1, VEXA_16UC1, VEXA_32FC1}) benchmarks.push_back(makeInRange(type, size));
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3}) {
        benchmarks.push_back(makeHistogram("calcHist", noise(type, size, 1)));
        // The worst case for counters that are shared.
        const Shared constant = blank(type, size, 8);
        (void)al::absDiff(*constant, *constant, *constant);
        benchmarks.push_back(makeHistogram("calcHist constant", constant));
    }
    return benchmarks;
}

std::vector<Benchmark> matrixBenchmarks()
{
    std::vector<Benchmark> benchmarks;
    for (const int side : {4, 16, 64, 256, 1024}) benchmarks.push_back(makeProduct(side));
    return benchmarks;
}

}  // namespace bench
