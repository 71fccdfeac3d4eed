/// @file
/// Benchmarks of fills, borders, thresholds, single channels and random images.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace de = vexa::dataExchange;
using Images = std::vector<Shared>;

Case set(VexaType type)
{
    const auto values = std::make_shared<VexaScalar>(10.0, 20.0, 30.0);
    return {"set", "set", {}, type, [=](const Images&, VexaImage& dst) { return dst.set(*values); }, {10, 20, 30}};
}

Case threshold(VexaType type)
{
    const auto lowest = std::make_shared<VexaScalar>(50.0, 60.0, 70.0);
    const auto highest = std::make_shared<VexaScalar>(200.0, 190.0, 180.0);
    const auto call = [=](const Images& src, VexaImage& dst) { return de::threshold(*src[0], dst, *lowest, *highest); };
    return {"threshold", "threshold", {type}, type, call, {50, 60, 70, 200, 190, 180}};
}

Case getChannel(VexaType type, VexaType dst)
{
    const auto call = [](const Images& src, VexaImage& result) { return de::getChannel(*src[0], result, 1); };
    return {"getChannel", "getChannel", {type}, dst, call, {1}};
}

/// With margins of 16 pixels, into the size of all the other results.
Benchmark padImage(VexaType type, VexaSize size)
{
    constexpr int margin = 16;
    const VexaSize inner(size.width - 2 * margin, size.height - 2 * margin);
    const auto call = [=](const Images& src, VexaImage& dst) {
        const float values[] = {10, 20, 30};
        return de::padImage(*src[0], dst, margin, margin, margin, margin, values);
    };
    // One-channel borders are not filled as the opponent's are.
    const double tolerance = type == VEXA_8UC1 || type == VEXA_16UC1 ? -1 : 0;
    return pair({"padImage", "padImage", {type}, type, call, {margin, 10, 20, 30}, tolerance}, size,
                {noise(type, inner, 1)});
}

Case random(VexaType type)
{
    const auto call = [](const Images&, VexaImage& dst) { return de::generateRandomImage(dst); };
    return {"generateRandomImage", "random", {}, type, call, {}, -1};
}

}  // namespace

std::vector<Benchmark> fillBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3, VEXA_32FC1, VEXA_32FC3})
        benchmarks.push_back(pair(set(type), size));
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3}) {
        benchmarks.push_back(pair(threshold(type), size));
        benchmarks.push_back(padImage(type, size));
    }
    benchmarks.push_back(pair(getChannel(VEXA_8UC3, VEXA_8UC1), size));
    benchmarks.push_back(pair(getChannel(VEXA_16UC3, VEXA_16UC1), size));
    benchmarks.push_back(pair(getChannel(VEXA_32FC3, VEXA_32FC1), size));
    benchmarks.push_back(pair(getChannel(VEXA_8UC4, VEXA_8UC1), size));
    benchmarks.push_back(pair(random(VEXA_32FC1), size));
    return benchmarks;
}

}  // namespace bench
