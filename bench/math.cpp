/// @file
/// Benchmarks of mathematical functions.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace al = vexa::arithmeticLogical;
using Images = std::vector<Shared>;

using Function = VexaStatus (*)(const VexaImage&, VexaImage&, const VexaStream&);

struct Named {
    const char* name;
    Function vexa;
};
const Named functions[] = {{"abs", al::abs},     {"exp", al::exp},   {"sqrt", al::sqrt},  {"cbrt", al::cbrt},
                           {"floor", al::floor}, {"ceil", al::ceil}, {"round", al::round}};

/// Floats from -4 to 4, so that no exponential overflows.
Shared aroundZero(VexaSize size)
{
    constexpr int number = 50;
    Shared image = blank(VEXA_32FC1, size, number);
    (void)al::multiply(*noise(VEXA_32FC1, size, 1), 1 / 32.0, *image);
    (void)al::add(*image, -4.0, *image);
    return image;
}

constexpr double approximation = 1e-5;

Case caseOf(const Named& function, VexaType type)
{
    const auto call = [vexa = function.vexa](const Images& src, VexaImage& dst) {
        return vexa(*src[0], dst, VexaStream(false));
    };
    return {function.name, function.name, {type}, VEXA_32FC1, call, {}, approximation};
}

Case power(VexaType type, double exponent)
{
    const auto call = [=](const Images& src, VexaImage& dst) { return al::pow(*src[0], exponent, dst); };
    return {"pow " + std::to_string(exponent).substr(0, 3), "pow", {type}, VEXA_32FC1, call, {exponent}, approximation};
}

}  // namespace

std::vector<Benchmark> mathBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const Named& function : functions) {
        const bool ofPositive = function.vexa == al::sqrt;
        benchmarks.push_back(
            pair(caseOf(function, VEXA_32FC1), size, {ofPositive ? noise(VEXA_32FC1, size, 1) : aroundZero(size)}));
    }
    for (const Function function : {al::exp, al::sqrt, al::cbrt}) {
        const char* const name = function == al::exp ? "exp" : function == al::sqrt ? "sqrt" : "cbrt";
        Case ofBytes = caseOf({name, function}, VEXA_8UC1);
        ofBytes.opponent = "";
        benchmarks.push_back(pair(ofBytes, size));
    }
    for (const double exponent : {2.2, 0.4}) benchmarks.push_back(pair(power(VEXA_32FC1, exponent), size));
    return benchmarks;
}

}  // namespace bench
