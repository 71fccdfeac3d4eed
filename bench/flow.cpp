/// @file
/// Benchmarks of dense optical flow, on a picture that turns, grows and shifts a little.

#include <cmath>
#include <vector>

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace vision = vexa::computerVision;

/// Waves of many lengths and directions around (x, y), in gray levels: structure at every scale.
double picture(double x, double y)
{
    constexpr int waves = 8;
    double sum = 0;
    for (int i = 0; i < waves; ++i) {
        const double frequency = 0.02 * std::pow(1.6, i);
        const double angle = 2.4 * i;
        sum += std::cos(frequency * (x * std::cos(angle) + y * std::sin(angle)) + i) / std::sqrt(1 + i);
    }
    return 128 + 24 * sum;
}

/// The picture after so many steps of motion about its middle, with rows side by side.
Shared frame(VexaSize size, int number)
{
    constexpr int apartFromOthers = 500;
    const Shared image = blank(VEXA_8UC1, size, apartFromOthers + number);
    std::vector<unsigned char> pixels;
    // Corners move alike whatever the size: otherwise those of large pictures leave what all methods reach.
    const double part = 6.4 / size.width * number;
    const double c = (1 - part) * std::cos(part);
    const double s = (1 - part) * std::sin(part);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const double fromX = x - size.width / 2.0 - 2 * number;
            const double fromY = y - size.height / 2.0 + number;
            const double value = picture(c * fromX + s * fromY, c * fromY - s * fromX);
            pixels.push_back(static_cast<unsigned char>(std::fmin(std::fmax(value, 0), 255)));
        }
    (void)image->upload(pixels.data(), size.width);
    return image;
}

constexpr int radius = 7;
constexpr int iterations = 3;
constexpr int levels = 3;

/// Flow in host memory.
struct Arrays {
    explicit Arrays(VexaSize size)
        : x(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height)), y(x.size())
    {}
    std::vector<float> x;
    std::vector<float> y;
};

Benchmark measured(const char* name, const char* opponent, VexaSize size,
                   const std::function<void(const VexaImage& previous, const VexaImage& next, Arrays& flow)>& call)
{
    const Shared previous = frame(size, 0);
    const Shared next = frame(size, 1);
    const auto flow = std::make_shared<Arrays>(size);
    const Peer peer =
        peerOf({opponent, {previous, next}, blank(VEXA_32FC1, size, 1), {levels, 2 * radius + 1, iterations}});
    const double bytes = 2 * (bytesOf(VEXA_8UC1, size) + bytesOf(VEXA_32FC1, size));
    return {name, VEXA_8UC1, size, bytes, [=] { call(*previous, *next, *flow); }, peer.work, peer.name};
}

}  // namespace

std::vector<Benchmark> flowBenchmarks(VexaSize size)
{
    // The opponent takes seconds for larger ones.
    constexpr int widest = 1920;
    if (size.width > widest) return {};
    return {
        measured("opticalFlowPyrLKDense", "dense flow", size,
                 [](const VexaImage& previous, const VexaImage& next, Arrays& flow) {
                     (void)vision::opticalFlowPyrLKDense(
                         previous, next, flow.x.data(), flow.y.data(),
                         VexaTrackingCriteria(levels - 1, VexaSize(radius, radius), iterations, 0.0F, 0.01F));
                 }),
        measured("opticalFlowPyramidLK2", "dense flow", size,
                 [](const VexaImage& previous, const VexaImage& next, Arrays& flow) {
                     (void)vexa_opticalFlowPyramidLK2(previous, next, flow.x.data(), flow.y.data(),
                                                      VexaSize(radius, radius), levels - 1, 0.5F, iterations, 0.01F,
                                                      nullptr);
                 }),
        measured("opticalFlowHS", "", size,
                 [](const VexaImage& previous, const VexaImage& next, Arrays& flow) {
                     constexpr int rounds = 10;
                     (void)vision::opticalFlowHS(previous, next, flow.x.data(), flow.y.data(), false, 10.0F, rounds);
                 }),
    };
}

}  // namespace bench
