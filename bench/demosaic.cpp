/// @file
/// Benchmarks of demosaicing. The opponents interpolate otherwise: bilinearly, or along edges of green.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace co = vexa::colorOperations;
using Images = std::vector<Shared>;

constexpr double differs = -1;

Case stencils(const char* name, VexaBayerSeq layout, VexaType raw, VexaType color)
{
    const auto call = [=](const Images& src, VexaImage& dst) { return co::demosaic(*src[0], dst, layout); };
    return {name, "demosaic", {raw}, color, call, {}, differs};
}

Case directional(VexaType raw, VexaType color)
{
    const auto call = [](const Images& src, VexaImage& dst) {
        return co::demosaicDFPD(*src[0], dst, VEXA_BAYER_RGGB, false);
    };
    return {"demosaicDFPD", "demosaicDFPD", {raw}, color, call, {}, differs};
}

}  // namespace

std::vector<Benchmark> demosaicBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    const VexaType types[][2] = {{VEXA_8UC1, VEXA_8UC3}, {VEXA_16UC1, VEXA_16UC3}};
    for (const auto& [raw, color] : types) {
        benchmarks.push_back(pair(stencils("demosaic", VEXA_BAYER_RGGB, raw, color), size));
        benchmarks.push_back(pair(stencils("demosaic HQ", VEXA_BAYER_RGGB_HQ, raw, color), size));
        benchmarks.push_back(pair(directional(raw, color), size));
    }
    return benchmarks;
}

}  // namespace bench
