/// @file
/// How good pictures are, in figures: prints the tables of docs/quality.md and writes its pictures.
/// Usage: quality PHOTOGRAPHS PICTURES, two folders. One function a section.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "../raw.h"
#include "vexaCore.h"

namespace {

namespace co = vexa::colorOperations;

/// The pixels of an 8-bit image in blue, green, red, without gaps.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;

    Picture(int width, int height)
        : width(width), height(height), pixels(static_cast<std::size_t>(3 * width) * static_cast<std::size_t>(height))
    {}
    unsigned char* at(int x, int y) { return &pixels[(static_cast<std::size_t>(y * width) + x) * 3]; }
    const unsigned char* at(int x, int y) const { return &pixels[(static_cast<std::size_t>(y * width) + x) * 3]; }
};

void require(VexaStatus status, const std::string& step)
{
    if (status == VEXA_SUCCESS) return;
    std::fprintf(stderr, "quality: %s failed: %s (%d)\n", step.c_str(), vexaStatusString(status), status);
    std::exit(1);
}

Picture pictureOf(const VexaImage& image)
{
    Picture picture(image.width(), image.height());
    require(image.download(picture.pixels.data(), 3 * image.width()), "download");
    return picture;
}

void save(const Picture& picture, const std::string& file)
{
    VexaImage image(picture.width, picture.height, VEXA_8UC3);
    require(image.upload(picture.pixels.data(), 3 * picture.width), "upload");
    require(vexa::io::saveImage(image, file), file);
}

/// The ratio of the peak to the error in dB.
double psnr(double meanSquare)
{
    return 10 * std::log10(255.0 * 255.0 / meanSquare);
}

/// The mean square of the error of one channel, away from the border.
double meanSquareError(const Picture& result, const Picture& truth, int channel)
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

/// A part of a picture, each pixel as a square, from column `left` of the sheet on.
void magnify(const Picture& picture, int x, int y, int size, int scale, Picture& sheet, int left)
{
    for (int row = 0; row < size * scale; ++row)
        for (int column = 0; column < size * scale; ++column)
            std::copy_n(picture.at(x + column / scale, y + row / scale), 3, sheet.at(left + column, row));
}

/// The photographs, and the corner of a part with fine structure, to be shown; none is shown of a negative one.
struct Photograph {
    const char* name;
    const char* file;
    int x;
    int y;
};
const Photograph photographs[] = {
    {"coffee", "coffee.png", 150, 60},
    {"chelsea", "chelsea.png", 130, 90},
    {"hubble_deep_field", "hubble_deep_field.jpg", -1, -1},
};

struct Method {
    const char* name;
    VexaStatus (*demosaic)(const VexaImage& raw, VexaImage& picture);
};
const Method methods[] = {
    {"`demosaic`, RGGB",
     [](const VexaImage& raw, VexaImage& picture) { return co::demosaic(raw, picture, VEXA_BAYER_RGGB); }},
    {"`demosaic`, RGGB_HQ",
     [](const VexaImage& raw, VexaImage& picture) { return co::demosaic(raw, picture, VEXA_BAYER_RGGB_HQ); }},
    {"`demosaicDFPD`, RGGB",
     [](const VexaImage& raw, VexaImage& picture) { return co::demosaicDFPD(raw, picture, VEXA_BAYER_RGGB, false); }},
};

/// The same part of pictures, side by side and magnified.
Picture partsOf(const std::vector<Picture>& pictures, const Photograph& photograph)
{
    constexpr int size = 56;
    constexpr int scale = 4;
    constexpr int gap = 4;
    const int count = static_cast<int>(pictures.size());
    Picture sheet(count * size * scale + (count - 1) * gap, size * scale);
    for (int i = 0; i < count; ++i)
        magnify(pictures[static_cast<std::size_t>(i)], photograph.x, photograph.y, size, scale, sheet,
                i * (size * scale + gap));
    return sheet;
}

void printRow(const char* photograph, const char* method, const Picture& result, const Picture& truth)
{
    double sum = 0;
    std::printf("| %s | %s |", photograph, method);
    for (int channel = 0; channel < 3; ++channel) {
        const double error = meanSquareError(result, truth, channel);
        std::printf(" %.2f |", psnr(error));
        sum += error;
    }
    std::printf(" %.2f |\n", psnr(sum / 3));
}

/// Photographs made into raw frames and back. All these methods give blue, green, red.
void demosaicing(const std::string& from, const std::string& to)
{
    std::printf("| photograph | method | blue | green | red | all |\n|---|---|---:|---:|---:|---:|\n");
    for (const Photograph& photograph : photographs) {
        const VexaImage photo = vexa::io::loadImage(from + photograph.file, VEXA_LOAD_IMAGE_COLOR);
        VexaImage raw;
        require(mosaic(photo, VEXA_BAYER_RGGB, raw), "mosaic");
        std::vector<Picture> pictures{pictureOf(photo)};
        for (const Method& method : methods) {
            VexaImage developed;
            require(method.demosaic(raw, developed), method.name);
            pictures.push_back(pictureOf(developed));
            printRow(photograph.name, method.name, pictures.back(), pictures.front());
        }
        if (photograph.x >= 0) save(partsOf(pictures, photograph), to + "demosaic_" + photograph.name + ".jpg");
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: quality PHOTOGRAPHS PICTURES\n", stderr);
        return 2;
    }
    try {
        demosaicing(std::string(argv[1]) + "/", std::string(argv[2]) + "/");
    } catch (const char* complaint) {
        std::fprintf(stderr, "quality: %s\n", complaint);
        return 2;
    }
    return 0;
}
