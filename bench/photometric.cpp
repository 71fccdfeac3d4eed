/// @file
/// Benchmarks of haze and low light, colour mixes, tone curves, sensor correction and masks.

#include <array>
#include <cmath>

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace co = vexa::colorOperations;
using Images = std::vector<Shared>;

/// The opponent rounds where the library truncates.
constexpr double rounded = 1;
/// The opponent's result is another one: its weights differ, or it leaves the first value of a histogram out.
constexpr double differs = -1;
constexpr const char* noOpponent = "";

float mix[] = {0.9F, 0.2F, -0.1F, 4, 0.1F, 0.8F, 0.1F, -3, -0.2F, 0.3F, 0.9F, 2};
const std::vector<double> mixParameters(std::begin(mix), std::end(mix));

constexpr float gamma = 2.2F;
constexpr float logScale = 45.9F;

Case haze(VexaType type)
{
    const auto call = [](const Images& src, VexaImage& dst) {
        const int light = src[0]->depth() == 8 ? 230 : 59000;
        return co::dehaze(*src[0], dst, light, light, light);
    };
    return {"dehaze", noOpponent, {type}, type, call};
}

using Unary = VexaStatus (*)(const VexaImage&, VexaImage&, const VexaStream&);

Case unary(const char* name, Unary operation, VexaType type, const char* opponent)
{
    const auto call = [=](const Images& src, VexaImage& dst) { return operation(*src[0], dst, VexaStream(false)); };
    return {name, opponent, {type}, type, call, {}, differs};
}

Case mixed(VexaType type)
{
    const auto call = [](const Images& src, VexaImage& dst) { return co::channelMix(*src[0], dst, mix); };
    const double tolerance = type == VEXA_32FC3 ? 1e-4 : rounded;
    return {"channelMix", "channelMix", {type}, type, call, mixParameters, tolerance};
}

Case gammaCorrected(VexaType type)
{
    const auto call = [](const Images& src, VexaImage& dst) { return co::gammaCorrect(*src[0], dst, gamma); };
    const bool isByte = type == VEXA_8UC1 || type == VEXA_8UC3;
    return {"gammaCorrect", isByte ? "gammaCorrect" : noOpponent, {type}, type, call, {gamma}, rounded};
}

Case logarithm(VexaType type, const char* opponent)
{
    const auto call = [](const Images& src, VexaImage& dst) { return co::logTransform(*src[0], dst, logScale); };
    return {"logTransform", opponent, {type}, VEXA_32FC1, call, {logScale}, 1e-5};
}

/// In place: from the second call on the image has the range that it is stretched to.
Benchmark adjusted(VexaType type, const char* opponent, VexaSize size)
{
    constexpr int number = 70;
    const auto call = [](const Images& src, VexaImage&) {
        return co::adjust(*src[0], VexaScalar(0.0), VexaScalar(1.0), VexaScalar(0.1), VexaScalar(0.9));
    };
    return pair({"adjust", opponent, {type}, type, call, {0.1, 0.9}, differs}, size, {noise(type, size, number)});
}

Case byTable(VexaType type, VexaType table, const char* opponent)
{
    const auto call = [](const Images& src, VexaImage& dst) { return co::LUT(*src[0], *src[1], dst); };
    return {"LUT", opponent, {type, table}, type, call};
}

Benchmark lookUp(VexaType type, VexaSize size)
{
    const bool isByte = type != VEXA_16UC1;
    const VexaSize entries(isByte ? (type == VEXA_8UC1 ? 256 : 768) : 65536, 1);
    Benchmark benchmark =
        pair(byTable(type, type, isByte ? "LUT" : noOpponent), size, {noise(type, size, 1), noise(type, entries, 71)});
    benchmark.bytes = 2 * bytesOf(type, size);
    return benchmark;
}

Case blackGamma(VexaType type)
{
    const auto table = std::make_shared<std::vector<Vexa16u>>(65536);
    for (std::size_t i = 0; i < table->size(); ++i) (*table)[i] = static_cast<Vexa16u>(i - i / 8);
    const auto call = [=](const Images& src, VexaImage& dst) {
        return co::blackGammaLUT(*src[0], dst, table->data(), table->data(), table->data());
    };
    return {"blackGammaLUT", noOpponent, {type}, type, call};
}

Case flatField(VexaType type)
{
    const auto call = [](const Images& src, VexaImage& dst) {
        return co::FPNCorrection(*src[0], dst, *src[1], *src[2], 200.0F);
    };
    return {"FPNCorrection", noOpponent, {type, type, type}, type, call};
}

Case blackOffset()
{
    const auto call = [](const Images& src, VexaImage& dst) { return co::fpn(dst, *src[0], *src[1]); };
    return {"fpn", noOpponent, {VEXA_8UC1, VEXA_8UC1}, VEXA_8UC1, call};
}

Case masked(VexaType type)
{
    const auto call = [](const Images& src, VexaImage& dst) {
        static const float color[] = {10, 20, 30};
        return co::borderMask(*src[0], dst, 40, 40, 40, 40, color);
    };
    return {"borderMask", "borderMask", {type}, type, call, {40, 10, 20, 30}};
}

Case picked()
{
    const auto call = [](const Images& src, VexaImage& dst) {
        return co::colorPick(*src[0], dst, VEXA_COLOR_GREEN, 20.0F);
    };
    return {"colorPick", noOpponent, {VEXA_8UC3}, VEXA_8UC3, call};
}

Case binary(VexaType type)
{
    const auto call = [](const Images& src, VexaImage& dst) { return co::imageBinary(*src[0], dst, 0.5F); };
    return {"imageBinary", "imageBinary", {type}, VEXA_8UC1, call, {127}, type == VEXA_8UC1 ? 0 : differs};
}

Case underwater()
{
    const auto call = [](const Images& src, VexaImage& dst) {
        return vexa::imageFiltering::underwaterFilter(*src[0], dst, VexaEnhancementParams(true, 0, 0));
    };
    return {"underwaterFilter", noOpponent, {VEXA_8UC3}, VEXA_8UC3, call};
}

}  // namespace

std::vector<Benchmark> photometricBenchmarks(VexaSize size)
{
    const Case cases[] = {haze(VEXA_8UC3),
                          haze(VEXA_16UC3),
                          unary("lowlight", co::lowlight, VEXA_8UC3, noOpponent),
                          unary("lowlight", co::lowlight, VEXA_16UC3, noOpponent),
                          mixed(VEXA_8UC3),
                          mixed(VEXA_16UC3),
                          mixed(VEXA_32FC3),
                          unary("autoColor", co::autoColor, VEXA_8UC3, "autoColor"),
                          gammaCorrected(VEXA_8UC1),
                          gammaCorrected(VEXA_8UC3),
                          gammaCorrected(VEXA_16UC1),
                          logarithm(VEXA_8UC1, "logTransform bytes"),
                          logarithm(VEXA_16UC1, noOpponent),
                          logarithm(VEXA_32FC1, "logTransform"),
                          blackGamma(VEXA_8UC3),
                          blackGamma(VEXA_16UC3),
                          unary("histEq", co::histEq, VEXA_8UC1, "histEq"),
                          flatField(VEXA_8UC1),
                          flatField(VEXA_16UC1),
                          flatField(VEXA_16UC3),
                          blackOffset(),
                          masked(VEXA_8UC1),
                          masked(VEXA_8UC3),
                          masked(VEXA_16UC3),
                          picked(),
                          binary(VEXA_8UC1),
                          binary(VEXA_8UC3),
                          underwater()};
    std::vector<Benchmark> benchmarks;
    for (const Case& pairing : cases) benchmarks.push_back(pair(pairing, size));
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1}) benchmarks.push_back(lookUp(type, size));
    benchmarks.push_back(adjusted(VEXA_8UC1, "adjust", size));
    benchmarks.push_back(adjusted(VEXA_8UC3, noOpponent, size));
    return benchmarks;
}

}  // namespace bench
