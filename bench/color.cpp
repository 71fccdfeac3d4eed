/// @file
/// Benchmarks of colour spaces, channels and packed video.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace co = vexa::colorOperations;
using Images = std::vector<Shared>;

/// The opponent's space is another one: its luma and chroma have other ranges or another order.
constexpr double differs = -1;

using Conversion = VexaStatus (*)(const VexaImage&, VexaImage&, const VexaStream&);

struct Named {
    const char* name;
    Conversion vexa;
    VexaType src;
    VexaType dst;
    double tolerance;
};
const Named conversions[] = {
    {"rgb2gray", co::rgb2gray, VEXA_8UC3, VEXA_8UC1, 1},
    {"rgb2gray", co::rgb2gray, VEXA_16UC3, VEXA_16UC1, 1},
    {"rgb2gray", co::rgb2gray, VEXA_32FC3, VEXA_32FC1, 1e-5},
    {"rgb2gray", co::rgb2gray, VEXA_8UC4, VEXA_8UC1, 1},
    {"gray2rgb", co::gray2rgb, VEXA_8UC1, VEXA_8UC3, 0},
    {"gray2rgb", co::gray2rgb, VEXA_16UC1, VEXA_16UC3, 0},
    {"gray2rgb", co::gray2rgb, VEXA_32FC1, VEXA_32FC3, 0},
    {"rgb2yuv", co::rgb2yuv, VEXA_8UC3, VEXA_8UC3, differs},
    {"yuv2rgb", co::yuv2rgb, VEXA_8UC3, VEXA_8UC3, differs},
    {"rgb2ycbcr", co::rgb2ycbcr, VEXA_8UC3, VEXA_8UC3, differs},
    {"rgb2ycbcr", co::rgb2ycbcr, VEXA_16UC3, VEXA_16UC3, differs},
    {"rgb2ycbcr", co::rgb2ycbcr, VEXA_32FC3, VEXA_32FC3, differs},
    {"ycbcr2rgb", co::ycbcr2rgb, VEXA_8UC3, VEXA_8UC3, differs},
    {"ycbcr2rgb", co::ycbcr2rgb, VEXA_16UC3, VEXA_16UC3, differs},
    {"ycbcr2rgb", co::ycbcr2rgb, VEXA_32FC3, VEXA_32FC3, differs},
    {"rgb2hsv", co::rgb2hsv, VEXA_8UC3, VEXA_8UC3, differs},
    {"rgb2hsv", co::rgb2hsv, VEXA_32FC3, VEXA_32FC3, differs},
    {"hsv2rgb", co::hsv2rgb, VEXA_8UC3, VEXA_8UC3, differs},
    {"hsv2rgb", co::hsv2rgb, VEXA_32FC3, VEXA_32FC3, differs},
    {"rgb2Lab", co::rgb2Lab, VEXA_8UC3, VEXA_8UC3, differs},
    {"rgb2Lab", co::rgb2Lab, VEXA_32FC3, VEXA_32FC3, differs},
    {"Lab2rgb", co::Lab2rgb, VEXA_8UC3, VEXA_8UC3, differs},
    {"Lab2rgb", co::Lab2rgb, VEXA_32FC3, VEXA_32FC3, differs},
    {"rgb2yuv422", co::rgb2yuv422, VEXA_8UC3, VEXA_8UC2, differs},
};

/// Images of their own number, as some conversions mark theirs with another sequence.
Shared colors(VexaType type, VexaSize size)
{
    constexpr int number = 60;
    Shared image = noise(type, size, number);
    image->setChannelSequence(image->channels() == 4 ? VEXA_CHANNEL_SEQ_BGRA : VEXA_CHANNEL_SEQ_BGR);
    if (image->depth() == 32) *image *= 1 / 255.0;
    return image;
}

Benchmark convert(const Named& conversion, VexaSize size)
{
    const auto call = [vexa = conversion.vexa](const Images& src, VexaImage& dst) {
        dst.setChannelSequence(VEXA_CHANNEL_SEQ_BGR);
        return vexa(*src[0], dst, VexaStream(false));
    };
    return pair({conversion.name, conversion.name, {conversion.src}, conversion.dst, call, {}, conversion.tolerance},
                size, {colors(conversion.src, size)});
}

/// Three planes; the opponent's are the last of its sources.
Images planes(VexaType type, VexaSize size, int number)
{
    return {blank(type, size, number), blank(type, size, number + 1), blank(type, size, number + 2)};
}

Benchmark split(VexaType color, VexaType plane, VexaSize size)
{
    const Shared src = colors(color, size);
    const Images result = planes(plane, size, 10);
    const Images expected = planes(plane, size, 20);
    const Work vexa = [=] { (void)co::channelSplit(*src, *result[2], *result[1], *result[0]); };
    const Peer peer = peerOf({"channelSplit", {src, expected[0], expected[1], expected[2]}, expected[0]});
    for (std::size_t c = 0; c < result.size(); ++c)
        compare(vexa, peer.work, *result[c], *expected[c], 0, "channelSplit");
    return {"channelSplit", color, size, 2 * bytesOf(color, size), vexa, peer.work, peer.name};
}

Case merge(VexaType plane, VexaType color)
{
    const auto call = [](const Images& src, VexaImage& dst) {
        dst.setChannelSequence(VEXA_CHANNEL_SEQ_BGR);
        return co::channelMerge(*src[2], *src[1], *src[0], dst);
    };
    return {"channelMerge", "channelMerge", {plane, plane, plane}, color, call};
}

Benchmark v210(bool pack, VexaSize size)
{
    constexpr int number = 70;
    const Shared samples = blank(VEXA_16UC3, size, number);
    const auto packed = std::make_shared<VexaImage>(size.width * 8 / 3, size.height, size.width * 8 / 3, 8, 1);
    (void)co::V210TOYUV444(*packed, *samples);
    const double bytes = bytesOf(VEXA_16UC3, size) + size.width * 8.0 / 3 * size.height;
    const Work work = pack ? Work([=] { (void)co::YUV444TOV210(*samples, *packed); })
                           : Work([=] { (void)co::V210TOYUV444(*packed, *samples); });
    return {pack ? "YUV444TOV210" : "V210TOYUV444", VEXA_16UC3, size, bytes, work, {}, {}};
}

}  // namespace

std::vector<Benchmark> colorBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const Named& conversion : conversions) benchmarks.push_back(convert(conversion, size));
    const VexaType types[][2] = {{VEXA_8UC3, VEXA_8UC1}, {VEXA_16UC3, VEXA_16UC1}, {VEXA_32FC3, VEXA_32FC1}};
    for (const auto& [color, plane] : types) {
        benchmarks.push_back(split(color, plane, size));
        benchmarks.push_back(pair(merge(plane, color), size));
    }
    for (const bool pack : {false, true})
        if (size.width % 6 == 0) benchmarks.push_back(v210(pack, size));
    return benchmarks;
}

}  // namespace bench
