/// @file
/// Benchmarks of logic and shifts.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace al = vexa::arithmeticLogical;
using Images = std::vector<Shared>;

/// The operations by their number of sources and their parameter.
std::vector<Case> cases(VexaType type)
{
    constexpr int mask = 0x5A;
    constexpr int bits = 2;
    const auto constant = static_cast<double>(mask);
    const auto factor = static_cast<double>(1 << bits);
    return {
        {"AND",
         "AND",
         {type, type},
         type,
         [](const Images& src, VexaImage& dst) { return al::AND(*src[0], *src[1], dst); }},
        {"XOR",
         "XOR",
         {type, type},
         type,
         [](const Images& src, VexaImage& dst) { return al::XOR(*src[0], *src[1], dst); }},
        {"OR constant",
         "OR constant",
         {type},
         type,
         [](const Images& src, VexaImage& dst) { return al::OR(*src[0], mask, dst); },
         {constant}},
        {"NOT", "NOT", {type}, type, [](const Images& src, VexaImage& dst) { return al::NOT(*src[0], dst); }},
        {"SHL",
         "convertScale",
         {type},
         type,
         [](const Images& src, VexaImage& dst) { return al::SHL(*src[0], bits, dst); },
         {factor, 0}},
        // The opponent rounds.
        {"SHR",
         "convertScale",
         {type},
         type,
         [](const Images& src, VexaImage& dst) { return al::SHR(*src[0], bits, dst); },
         {1 / factor, 0},
         1},
    };
}

}  // namespace

std::vector<Benchmark> logicBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3})
        for (const Case& operation : cases(type)) benchmarks.push_back(pair(operation, size));
    return benchmarks;
}

}  // namespace bench
