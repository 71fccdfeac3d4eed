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
#include "flow.h"
#include "photometric.h"
#include "stacking.h"
#include "vexaCore.h"

namespace {

namespace co = vexa::colorOperations;

void save(const Picture& picture, const std::string& file)
{
    VexaImage image = imageOf(picture);
    require(vexa::io::saveImage(image, file), file);
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
    std::printf("| %s | %s |", photograph, method);
    for (int channel = 0; channel < 3; ++channel) std::printf(" %.2f |", psnr(meanSquareError(result, truth, channel)));
    std::printf(" %.2f |\n", psnr(result, truth));
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

/// Small, at a place of the sheet.
void paste(const Picture& picture, int width, int height, Picture& sheet, int left, int top)
{
    VexaImage small(width, height, VEXA_8UC3);
    require(vexa::geometryTransforms::resize(imageOf(picture), small, VEXA_INTER_LINEAR), "resize");
    const Picture pixels = pictureOf(small);
    for (int y = 0; y < height; ++y)
        std::copy_n(pixels.at(0, y), static_cast<std::size_t>(3 * width), sheet.at(left, top + y));
}

/// Photographs spoilt by models and brought back.
void restoring(const std::string& from, const std::string& to)
{
    std::printf("\n| photograph | operation | spoilt by | before | after |\n|---|---|---|---:|---:|\n");
    for (const Photograph& photograph : photographs) {
        const VexaImage photo = vexa::io::loadImage(from + photograph.file, VEXA_LOAD_IMAGE_COLOR);
        const std::vector<Figure> figures = photometricFigures(photo);
        constexpr int width = 150;
        constexpr int height = 100;
        Picture sheet(width * static_cast<int>(figures.size()), 2 * height);
        int left = 0;
        for (const Figure& figure : figures) {
            std::printf("| %s | `%s` | %s | %.1f | %.1f |\n", photograph.name, figure.operation.c_str(),
                        figure.model.c_str(), figure.psnrBefore, figure.psnrAfter);
            paste(figure.before, width, height, sheet, left, 0);
            paste(figure.after, width, height, sheet, left, height);
            left += width;
        }
        if (photograph.x >= 0) save(sheet, to + "restored_" + photograph.name + ".jpg");
    }
}

/// Two flows side by side, the first pair of a photograph.
void saveFlows(const std::vector<FlowFigure>& figures, const std::string& file)
{
    const FlowField& first = figures.front().flow;
    Picture sheet(2 * first.width, first.height);
    constexpr float longest = 8;
    for (int i = 0; i < 2; ++i) {
        const FlowField& flow = figures[static_cast<std::size_t>(i)].flow;
        const std::vector<Color> colors = flowPicture(flow, longest);
        for (int y = 0; y < flow.height; ++y)
            for (int x = 0; x < flow.width; ++x) {
                const Color color = colors[static_cast<std::size_t>(y) * static_cast<std::size_t>(flow.width) +
                                           static_cast<std::size_t>(x)];
                unsigned char* const to = sheet.at(i * flow.width + x, y);
                to[0] = color.blue;
                to[1] = color.green;
                to[2] = color.red;
            }
    }
    Picture small(600, 600 * sheet.height / sheet.width);
    paste(sheet, small.width, small.height, small, 0, 0);
    save(small, file);
}

/// Photographs in motion.
void flowing(const std::string& from, const std::string& to)
{
    std::printf("\n| photograph | method | mean | median | above 1 | undefined |\n|---|---|---:|---:|---:|---:|\n");
    for (const Photograph& photograph : photographs) {
        const VexaImage photo = vexa::io::loadImage(from + photograph.file, VEXA_LOAD_IMAGE_GRAYSCALE);
        const std::vector<FlowFigure> figures = flowFigures(photo);
        for (const FlowFigure& figure : figures)
            std::printf("| %s | %s | %.3f | %.3f | %.1f %% | %.1f %% |\n", photograph.name, figure.method.c_str(),
                        figure.mean, figure.median, 100 * figure.above1, 100 * figure.undefined);
        if (photograph.x >= 0) saveFlows(figures, to + "flow_" + photograph.name + ".jpg");
    }
}

/// Photographs stacked of two frames. These tell their progress above the table.
void stacking(const std::string& from)
{
    std::vector<StackFigure> figures;
    for (const Photograph& photograph : photographs)
        figures.push_back(stackFigure(vexa::io::loadImage(from + photograph.file, VEXA_LOAD_IMAGE_COLOR)));
    std::printf("\n\n| photograph | equal | within 4 levels | a frame | the stack |\n|---|---:|---:|---:|---:|\n");
    const Photograph* photograph = photographs;
    for (const StackFigure& figure : figures)
        std::printf("| %s | %.1f %% | %.1f %% | %.1f | %.1f |\n", (photograph++)->name, 100 * figure.equal,
                    100 * figure.alike, figure.psnrFrame, figure.psnrStack);
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
        restoring(std::string(argv[1]) + "/", std::string(argv[2]) + "/");
        flowing(std::string(argv[1]) + "/", std::string(argv[2]) + "/");
        stacking(std::string(argv[1]) + "/");
    } catch (const char* complaint) {
        std::fprintf(stderr, "quality: %s\n", complaint);
        return 2;
    }
    return 0;
}
