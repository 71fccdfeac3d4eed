/// @file
/// Benchmarks of arithmetic: of two images, and of an image and a constant.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace al = vexa::arithmeticLogical;
using Images = std::vector<Shared>;

const VexaType elementwiseTypes[] = {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3, VEXA_32FC1, VEXA_32FC3};

/// Results that can't be compared: a quotient over zero is infinite here and zero in the opponent.
constexpr double differs = -1;

using OfTwo = VexaStatus (*)(const VexaImage&, const VexaImage&, VexaImage&, const VexaStream&);

struct Named {
    const char* name;
    OfTwo vexa;
    double tolerance = 0;
};
const Named operations[] = {{"add", al::add},
                            {"subtract", al::subtract},
                            {"multiply", al::multiply},
                            {"divide", al::divide, differs},
                            {"absDiff", al::absDiff}};

Case caseOf(const Named& named, VexaType src1, VexaType src2, VexaType dst)
{
    const auto call = [vexa = named.vexa](const Images& src, VexaImage& result) {
        return vexa(*src[0], *src[1], result, VexaStream(false));
    };
    return {named.name, named.name, {src1, src2}, dst, call, {}, named.tolerance};
}

struct Types {
    VexaType src1;
    VexaType src2;
    VexaType dst;
};
const Types mixedTypes[] = {{VEXA_8UC1, VEXA_8UC1, VEXA_16UC1},
                            {VEXA_8UC1, VEXA_8UC1, VEXA_32FC1},
                            {VEXA_8UC1, VEXA_16UC1, VEXA_16UC1},
                            {VEXA_8UC1, VEXA_32FC1, VEXA_32FC1},
                            {VEXA_16UC1, VEXA_32FC1, VEXA_32FC1}};

/// A whole constant, one with a fraction, and the forms with the constant on the left.
struct OfConstant {
    const char* name;
    const char* opponent;
    double value;
    VexaStatus (*vexa)(const VexaImage&, double, VexaImage&);
    double tolerance;
};
const OfConstant constantOperations[] = {
    {"add 10", "add constant", 10, [](auto& src, double c, auto& dst) { return al::add(src, c, dst); }, 0},
    // The opponent rounds where the library truncates.
    {"add 10.5", "add constant", 10.5, [](auto& src, double c, auto& dst) { return al::add(src, c, dst); }, 1},
    {"100 - image", "constant minus", 100, [](auto& src, double c, auto& dst) { return al::subtract(c, src, dst); }, 0},
    {"multiply by 3", "multiply constant", 3, [](auto& src, double c, auto& dst) { return al::multiply(src, c, dst); },
     0},
    {"multiply by 0.7", "multiply constant", 0.7,
     [](auto& src, double c, auto& dst) { return al::multiply(src, c, dst); }, 1},
    {"100 / image", "constant over", 100, [](auto& src, double c, auto& dst) { return al::divide(c, src, dst); },
     differs},
};

Case caseOf(const OfConstant& operation, VexaType src, VexaType dst)
{
    const auto call = [=](const Images& images, VexaImage& result) {
        return operation.vexa(*images[0], operation.value, result);
    };
    return {operation.name, operation.opponent, {src}, dst, call, {operation.value}, operation.tolerance};
}

struct OfScalar {
    const char* name;
    const char* opponent;
    std::vector<double> values;
    VexaStatus (*vexa)(const VexaImage&, const VexaScalar&, VexaImage&);
    double tolerance;
};
const OfScalar scalarOperations[] = {
    {"add scalar", "add scalar", {10, 20, 30}, [](auto& src, auto& s, auto& dst) { return al::add(src, s, dst); }, 0},
    {"multiply by scalar",
     "multiply scalar",
     {0.5, 0.7, 1.2},
     [](auto& src, auto& s, auto& dst) { return al::multiply(src, s, dst); },
     1},
};

Case caseOf(const OfScalar& operation, VexaType type)
{
    const auto values = std::make_shared<VexaScalar>(operation.values[0], operation.values[1], operation.values[2]);
    const auto call = [=](const Images& images, VexaImage& result) {
        return operation.vexa(*images[0], *values, result);
    };
    return {operation.name, operation.opponent, {type}, type, call, operation.values, operation.tolerance};
}

}  // namespace

std::vector<Benchmark> arithmeticBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const Named& named : operations)
        for (const VexaType type : elementwiseTypes) benchmarks.push_back(pair(caseOf(named, type, type, type), size));
    for (const Types& types : mixedTypes) {
        Case mixed = caseOf(operations[0], types.src1, types.src2, types.dst);
        mixed.name = "add " + nameOf(types.src2) + " to " + nameOf(types.dst);
        benchmarks.push_back(pair(mixed, size));
    }
    for (const OfConstant& operation : constantOperations) {
        for (const VexaType type : elementwiseTypes) benchmarks.push_back(pair(caseOf(operation, type, type), size));
    }
    Case widening = caseOf(constantOperations[0], VEXA_8UC1, VEXA_32FC1);
    widening.name += " to 32FC1";
    benchmarks.push_back(pair(widening, size));
    for (const OfScalar& operation : scalarOperations)
        for (const VexaType type : {VEXA_8UC3, VEXA_16UC3, VEXA_32FC3})
            benchmarks.push_back(pair(caseOf(operation, type), size));
    return benchmarks;
}

}  // namespace bench
