/// @file
/// Benchmarks of feature detection and tracking, on a scene of smooth noise.

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace cv = vexa::computerVision;

using Features = std::vector<VexaPointValue2D<float, float>>;

/// From 0 to 1, the same for the same place of a grid.
double randomAt(int x, int y)
{
    std::uint32_t hash = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    hash = (hash ^ (hash >> 15)) * 0x2C1B3C6DU;
    return static_cast<double>(hash >> 8) / (1 << 24);
}

/// Noise between the places of a grid of 6 pixels.
double sceneAt(double x, double y)
{
    const double column = std::floor(x / 6);
    const double row = std::floor(y / 6);
    const auto smooth = [](double t) { return t * t * (3 - 2 * t); };
    const double right = smooth(x / 6 - column);
    const double lower = smooth(y / 6 - row);
    const auto at = [=](int i, int j) { return randomAt(static_cast<int>(column) + i, static_cast<int>(row) + j); };
    return (1 - lower) * ((1 - right) * at(0, 0) + right * at(1, 0)) +
           lower * ((1 - right) * at(0, 1) + right * at(1, 1));
}

/// The scene, moved by so much.
Shared scene(VexaSize size, double dx, double dy, int number)
{
    constexpr int apartFromOthers = 2000;
    Shared image = blank(VEXA_8UC1, size, apartFromOthers + number);
    std::vector<unsigned char> pixels;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            pixels.push_back(static_cast<unsigned char>(255 * sceneAt(x - dx, y - dy)));
    (void)image->upload(pixels.data(), size.width);
    return image;
}

/// Standard output goes nowhere while it lives: tracking prints lines of its own.
class Silence {
public:
    Silence() : _output(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence()
    {
        std::fflush(stdout);
        dup2(_output, STDOUT_FILENO);
        close(_output);
    }

private:
    int _output;
};

Benchmark detection(const char* name, VexaFeaturesAlgorithm algorithm, VexaSize size)
{
    const Shared src = scene(size, 0, 0, 1);
    const VexaFeaturesCriteria criteria(algorithm, 0.01F, 10, 3, 0.04F);
    constexpr int wanted = 5000;
    const Work vexa = [=] {
        VexaPointValue2D<float, float>* features = nullptr;
        Vexa32s count = wanted;
        (void)cv::goodFeaturesToTrack(*src, {0, 0, size.width, size.height}, features, count, criteria);
        delete[] features;
    };
    const std::vector<double> parameters = {wanted,
                                            static_cast<double>(criteria.featureQuality),
                                            static_cast<double>(criteria.minimumDistance),
                                            static_cast<double>(criteria.blockSize),
                                            algorithm == VEXA_FEATURES_HARRIS ? 1.0 : 0.0,
                                            static_cast<double>(criteria.k)};
    const Peer peer = peerOf({"goodFeaturesToTrack", {src}, src, parameters});
    return {name, VEXA_8UC1, size, bytesOf(VEXA_8UC1, size), vexa, peer.work, peer.name};
}

/// Evenly spread over the image, some way off its edges.
Features featuresOf(VexaSize size, int count)
{
    Features features;
    for (int i = 0; i < count; ++i)
        features.emplace_back(20 + static_cast<float>(randomAt(i, 0)) * static_cast<float>(size.width - 40),
                              20 + static_cast<float>(randomAt(i, 1)) * static_cast<float>(size.height - 40), 0.0F);
    return features;
}

/// The coordinates as a row of floats.
Shared coordinatesOf(const Features& features, int number)
{
    const VexaSize size(2 * static_cast<int>(features.size()), 1);
    Shared row = blank(VEXA_32FC1, size, number);
    std::vector<float> coordinates;
    for (const auto& feature : features) {
        coordinates.push_back(feature.x);
        coordinates.push_back(feature.y);
    }
    (void)row->upload(coordinates.data(), size.width * static_cast<int>(sizeof(float)));
    return row;
}

Benchmark tracking(int count, VexaSize size)
{
    const Shared previous = scene(size, 0, 0, 1);
    const Shared next = scene(size, 2.3, -1.4, 2);
    const Features features = featuresOf(size, count);
    const VexaTrackingCriteria criteria(3, {21, 21}, 30, 255, 0.01F, 0.5F);
    const Work vexa = [=] {
        const Silence silence;
        Features from = features;
        VexaPointValue2D<float, float>* tracked = nullptr;
        (void)cv::trackFeatures(*previous, *next, from.data(), tracked, count, criteria);
        delete[] tracked;
    };
    const std::vector<double> parameters = {
        static_cast<double>(criteria.windowSize.width), static_cast<double>(criteria.pyramidLevels),
        static_cast<double>(criteria.iterations), static_cast<double>(criteria.errorThreshold)};
    const Shared points = coordinatesOf(features, size.width);
    const Peer peer = peerOf({"trackFeatures", {previous, next, points}, previous, parameters});
    return {"trackFeatures " + std::to_string(count),
            VEXA_8UC1,
            size,
            2 * bytesOf(VEXA_8UC1, size),
            vexa,
            peer.work,
            peer.name};
}

}  // namespace

std::vector<Benchmark> visionBenchmarks(VexaSize size)
{
    return {detection("goodFeaturesToTrack", VEXA_FEATURES_KLT, size),
            detection("goodFeaturesToTrack Harris", VEXA_FEATURES_HARRIS, size), tracking(500, size),
            tracking(5000, size)};
}

}  // namespace bench
