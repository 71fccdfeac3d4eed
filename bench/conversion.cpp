/// @file
/// Benchmarks of conversions between element types.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace de = vexa::dataExchange;

struct Conversion {
    VexaType src;
    VexaType dst;
    float scale;
    float offset;
};
const Conversion conversions[] = {
    {VEXA_8UC1, VEXA_8UC1, 1.5F, 10.0F},        {VEXA_8UC3, VEXA_8UC3, 1.5F, 10.0F},
    {VEXA_16UC1, VEXA_16UC1, 1.5F, 10.0F},      {VEXA_32FC1, VEXA_32FC1, 1.5F, 10.0F},
    {VEXA_8UC1, VEXA_32FC1, 1 / 255.0F, 0.0F},  {VEXA_8UC3, VEXA_32FC3, 1 / 255.0F, 0.0F},
    {VEXA_16UC1, VEXA_32FC1, 1 / 255.0F, 0.0F}, {VEXA_8UC1, VEXA_16UC1, 257.0F, 0.0F},
    {VEXA_32FC1, VEXA_8UC1, 0.5F, 0.0F},        {VEXA_32FC3, VEXA_8UC3, 0.5F, 0.0F},
    {VEXA_32FC1, VEXA_16UC1, 128.0F, 0.0F},     {VEXA_16UC1, VEXA_8UC1, 1 / 257.0F, 0.0F}};

Case convertScale(const Conversion& conversion)
{
    const auto call = [=](const std::vector<Shared>& src, VexaImage& dst) {
        return de::convertScale(*src[0], dst, conversion.scale, conversion.offset);
    };
    // The opponent rounds where the library truncates.
    constexpr double rounding = 1;
    return {"convertScale to " + nameOf(conversion.dst), "convertScale", {conversion.src}, conversion.dst, call,
            {conversion.scale, conversion.offset},       rounding};
}

Benchmark makeBitConversion(VexaType from, int fromBits, VexaType to, int toBits, VexaSize size)
{
    // Images of their own, as data bits are part of an image.
    const Shared src = noise(from, size, fromBits);
    const Shared result = blank(to, size, 100 * fromBits + toBits);
    (void)src->setDataBits(fromBits);
    (void)result->setDataBits(toBits);
    return {"bitConversion " + std::to_string(fromBits) + " to " + std::to_string(toBits),
            from,
            size,
            bytesOf(from, size) + bytesOf(to, size),
            [=] { (void)de::bitConversion(*src, *result); },
            {},
            {}};
}

}  // namespace

std::vector<Benchmark> conversionBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const Conversion& conversion : conversions) benchmarks.push_back(pair(convertScale(conversion), size));
    benchmarks.push_back(makeBitConversion(VEXA_16UC1, 12, VEXA_8UC1, 8, size));
    benchmarks.push_back(makeBitConversion(VEXA_8UC1, 8, VEXA_16UC1, 12, size));
    benchmarks.push_back(makeBitConversion(VEXA_16UC1, 10, VEXA_16UC1, 12, size));
    return benchmarks;
}

}  // namespace bench
