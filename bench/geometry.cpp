/// @file
/// Benchmarks of resize, rotation, warps, flip and transpose.

#include <cmath>

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace gt = vexa::geometryTransforms;

constexpr VexaType types[] = {VEXA_8UC1, VEXA_8UC3, VEXA_32FC1};

struct Mode {
    const char* name;
    VexaInterpolationType type;
};
constexpr Mode modes[] = {
    {" nearest", VEXA_INTER_NEAREST}, {" linear", VEXA_INTER_LINEAR}, {" cubic", VEXA_INTER_CUBIC}};

/// The opponent samples on another grid or with other weights.
constexpr double differs = -1;

/// A call from one image to another that may have another size.
struct SampledCall {
    std::string name;
    std::string opponent;
    VexaType type;
    VexaSize from;
    VexaSize to;
    std::vector<double> parameters;
    double tolerance;
};

template <typename Operation>
Benchmark measured(const SampledCall& call, VexaSize size, const Operation& operation)
{
    const Shared src = noise(call.type, call.from, 1);
    const Shared result = blank(call.type, call.to, 1);
    const Shared expected = blank(call.type, call.to, 2);
    const Work vexa = [=] { (void)operation(*src, *result); };
    const Peer peer = peerOf({call.opponent, {src}, expected, call.parameters});
    if (call.tolerance >= 0) compare(vexa, peer.work, *result, *expected, call.tolerance, call.name);
    const double bytes = bytesOf(call.type, call.from) + bytesOf(call.type, call.to);
    return {call.name, call.type, size, bytes, vexa, peer.work, peer.name};
}

struct Scale {
    const char* name;
    double factor;  ///< of the larger image to the smaller
    bool enlarges;
};
constexpr Scale scales[] = {{"resize x1/2", 2, false}, {"resize x1/1.5", 1.5, false}, {"resize x1/3", 3, false},
                            {"resize x2", 2, true},    {"resize x1.5", 1.5, true},    {"resize x3", 3, true}};

/// The larger image has the size.
Benchmark resize(const Scale& scale, const Mode& mode, VexaType type, VexaSize size)
{
    const VexaSize smaller(static_cast<int>(size.width / scale.factor), static_cast<int>(size.height / scale.factor));
    // By 2 the nearest pixels are the same on both grids.
    const double tolerance = mode.type == VEXA_INTER_NEAREST && scale.factor == 2 ? 0 : differs;
    const SampledCall call{std::string(scale.name) + mode.name,
                           "resize",
                           type,
                           scale.enlarges ? smaller : size,
                           scale.enlarges ? size : smaller,
                           {static_cast<double>(mode.type)},
                           tolerance};
    return measured(call, size,
                    [type = mode.type](const VexaImage& src, VexaImage& dst) { return gt::resize(src, dst, type); });
}

/// A rotation about the middle by degrees, and a little perspective, row by row.
std::vector<double> rotation(double degrees, VexaSize size)
{
    const double radians = degrees * std::acos(-1.0) / 180;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const double x = size.width / 2;
    const double y = size.height / 2;
    return {c, s, (1 - c) * x - s * y, -s, c, s * x + (1 - c) * y, 0.2 / size.width, 0.1 / size.height, 1};
}

using Warp = VexaStatus (*)(const VexaImage&, VexaImage&, Vexa64f (*)[3], VexaInterpolationType, const VexaStream&);

Benchmark warp(const char* name, Warp operation, const Mode& mode, VexaType type, VexaSize size)
{
    constexpr double degrees = 30;
    std::vector<double> parameters = rotation(degrees, size);
    const std::vector<double> matrix = parameters;
    parameters.push_back(mode.type);
    const SampledCall call{std::string(name) + mode.name, name, type, size, size, parameters, differs};
    return measured(call, size, [=, type = mode.type](const VexaImage& src, VexaImage& dst) {
        double coefficients[3][3];
        for (std::size_t i = 0; i < matrix.size(); ++i) coefficients[i / 3][i % 3] = matrix[i];
        return operation(src, dst, coefficients, type, VexaStream(false));
    });
}

Benchmark rotate(int degrees, VexaType type, VexaSize size)
{
    std::vector<double> parameters = rotation(degrees, size);
    parameters.push_back(VEXA_INTER_LINEAR);
    const SampledCall call{"rotate " + std::to_string(degrees), "warpAffine", type, size, size, parameters, differs};
    return measured(call, size, [=](const VexaImage& src, VexaImage& dst) {
        return gt::rotate(src, dst, static_cast<float>(degrees), {size.width / 2, size.height / 2});
    });
}

Benchmark flip(const char* name, VexaFlipType flipType, VexaType type, VexaSize size)
{
    return measured({name, "flip", type, size, size, {static_cast<double>(flipType)}, 0}, size,
                    [=](const VexaImage& src, VexaImage& dst) { return gt::flipImage(src, dst, flipType); });
}

Benchmark transpose(VexaType type, VexaSize size)
{
    return measured({"transpose", "transpose", type, size, VexaSize(size.height, size.width), {}, 0}, size,
                    [](const VexaImage& src, VexaImage& dst) { return gt::transpose(src, dst); });
}

}  // namespace

std::vector<Benchmark> geometryBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const VexaType type : types) {
        for (const Mode& mode : modes) {
            for (const Scale& scale : scales) benchmarks.push_back(resize(scale, mode, type, size));
            benchmarks.push_back(warp("warpAffine", gt::warpAffine, mode, type, size));
            benchmarks.push_back(warp("warpPerspective", gt::warpPerspective, mode, type, size));
        }
        for (const int degrees : {17, 90}) benchmarks.push_back(rotate(degrees, type, size));
        benchmarks.push_back(flip("flip up down", VEXA_FLIP_UP_DOWN, type, size));
        benchmarks.push_back(flip("flip left right", VEXA_FLIP_LEFT_RIGHT, type, size));
        benchmarks.push_back(flip("flip both", VEXA_FLIP_BOTH_DIRECTIONS, type, size));
        benchmarks.push_back(transpose(type, size));
    }
    return benchmarks;
}

}  // namespace bench
