/// @file
/// Pictures in host memory, their errors, and what becomes of them.

#pragma once

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "vexaCore.h"

/// The pixels of an 8-bit image in blue, green, red, without gaps.
struct Picture {
    int width;
    int height;
    std::vector<unsigned char> pixels;

    Picture(int width, int height)
        : width(width), height(height), pixels(static_cast<std::size_t>(3 * width) * static_cast<std::size_t>(height))
    {}
    unsigned char* at(int x, int y) { return &pixels[(static_cast<std::size_t>(y * width) + x) * 3]; }
    const unsigned char* at(int x, int y) const { return &pixels[(static_cast<std::size_t>(y * width) + x) * 3]; }
};

inline void require(VexaStatus status, const std::string& step)
{
    if (status == VEXA_SUCCESS) return;
    std::fprintf(stderr, "quality: %s failed: %s (%d)\n", step.c_str(), vexaStatusString(status), status);
    std::exit(1);
}

inline Picture pictureOf(const VexaImage& image)
{
    Picture picture(image.width(), image.height());
    require(image.download(picture.pixels.data(), 3 * image.width()), "download");
    return picture;
}

inline VexaImage imageOf(const Picture& picture)
{
    VexaImage image(picture.width, picture.height, VEXA_8UC3);
    require(image.upload(picture.pixels.data(), 3 * picture.width), "upload");
    return image;
}

/// The mean square of the error of one channel, away from the border.
inline double meanSquareError(const Picture& result, const Picture& truth, int channel)
{
    constexpr int border = 8;
    double squares = 0;
    for (int y = border; y < truth.height - border; ++y)
        for (int x = border; x < truth.width - border; ++x) {
            const double error = result.at(x, y)[channel] - truth.at(x, y)[channel];
            squares += error * error;
        }
    return squares / (static_cast<double>(truth.width - 2 * border) * (truth.height - 2 * border));
}

/// The ratio of the peak to the error in dB.
inline double psnr(double meanSquare)
{
    return 10 * std::log10(255.0 * 255.0 / meanSquare);
}

/// Of all three channels.
inline double psnr(const Picture& result, const Picture& truth)
{
    double sum = 0;
    for (int channel = 0; channel < 3; ++channel) sum += meanSquareError(result, truth, channel);
    return psnr(sum / 3);
}
