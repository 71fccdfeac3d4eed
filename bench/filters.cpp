/// @file
/// Benchmarks of linear filters, gradients and rank filters.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace fi = vexa::imageFiltering;
using Images = std::vector<Shared>;

/// Left and right of an image with three channels the opponent repeats pixels, and the library elements of the row.
double toleranceOf(VexaType type, double ofOneChannel)
{
    constexpr double differs = -1;
    const bool hasOneChannel = type == VEXA_8UC1 || type == VEXA_16UC1 || type == VEXA_32FC1;
    return hasOneChannel ? ofOneChannel : differs;
}

std::string nameOf(const char* operation, int side)
{
    return operation + (" " + std::to_string(side));
}

/// The window of the opponents: a square image of weights.
template <typename T>
Shared window(VexaType type, int side, const T* weights)
{
    const auto image = std::make_shared<VexaImage>(side, side, type);
    (void)image->upload(weights, side * static_cast<int>(sizeof(T)));
    return image;
}

/// A filter that is its own transpose, as the library transposes. The opponent rounds where the library truncates.
Benchmark linear(VexaType type, int side, VexaSize size)
{
    const VexaFilter filter = VexaSpecialFilters::gaussian({side, side}, static_cast<float>(side) / 4);
    const auto call = [=](const Images& src, VexaImage& dst) { return fi::imageFilter(*src[0], dst, filter); };
    const double tolerance = toleranceOf(type, type == VEXA_32FC1 ? 1e-4 : 1);
    return pair({nameOf("imageFilter", side), "imageFilter", {type}, type, call, {}, tolerance}, size,
                {noise(type, size, 1), window(VEXA_32FC1, side, filter.coeffs())});
}

/// Both derivatives. The opponent's along x is compared; its other one goes to the last of its sources.
Benchmark gradients(const char* name, VexaGradientKernelType stencil, VexaType type, VexaSize size)
{
    const VexaType result = type == VEXA_8UC3 ? VEXA_32FC3 : VEXA_32FC1;
    const Shared other = blank(result, size, 3);
    const auto call = [=](const Images& src, VexaImage& dst) {
        return fi::imageGradients(*src[0], *other, dst, stencil);
    };
    Benchmark row = pair({name, name, {type}, result, call, {}, toleranceOf(type, 1e-4)}, size,
                         {noise(type, size, 1), blank(result, size, 4)});
    row.bytes += bytesOf(result, size);
    return row;
}

using RankFilter = VexaStatus (*)(const VexaImage&, VexaImage&, const VexaRect&, const VexaSize&, const VexaStream&);

Benchmark rank(const char* name, RankFilter filter, VexaType type, int side, VexaSize size)
{
    const auto call = [=](const Images& src, VexaImage& dst) {
        return filter(*src[0], dst, {0, 0, size.width, size.height}, {side, side}, VexaStream(false));
    };
    const std::vector<unsigned char> weights(static_cast<std::size_t>(side * side), 1);
    return pair({nameOf(name, side), name, {type}, type, call, {}, toleranceOf(type, 0)}, size,
                {noise(type, size, 1), window(VEXA_8UC1, side, weights.data())});
}

}  // namespace

std::vector<Benchmark> filterBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_32FC1}) {
        for (const int side : {3, 5, 7, 11, 19}) benchmarks.push_back(linear(type, side, size));
        if (type == VEXA_16UC1) continue;
        benchmarks.push_back(gradients("Sobel gradients", VEXA_GRADIENT_SOBEL_3x3, type, size));
        benchmarks.push_back(gradients("Scharr gradients", VEXA_GRADIENT_SCHARR_3x3, type, size));
    }
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3}) {
        for (const int side : {3, 7, 15, 31}) {
            benchmarks.push_back(rank("minFilter", fi::minFilter, type, side, size));
            benchmarks.push_back(rank("maxFilter", fi::maxFilter, type, side, size));
        }
        for (const int side : {3, 5, 7, 9}) {
            benchmarks.push_back(rank("modeFilter", fi::modeFilter, type, side, size));
            benchmarks.push_back(rank("medianFilter", fi::medianFilter, type, side, size));
        }
    }
    return benchmarks;
}

}  // namespace bench
