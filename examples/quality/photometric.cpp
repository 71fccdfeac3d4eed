/// @file
/// How much of a photograph the photometric operations bring back, once a known model has made it hazy, dark, gray,
/// blue-green or uneven: the peak signal-to-noise ratio against the original before and after.

#include "photometric.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

namespace co = vexa::colorOperations;

/// value(original, channel, x and y from 0 to 1), rounded.
using Model = std::function<double(double original, int channel, double x, double y)>;

Picture degraded(const Picture& original, const Model& model)
{
    Picture picture = original;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int c = 0; c < 3; ++c) {
                unsigned char& value = picture.at(x, y)[c];
                const double made = model(value, c, x / (picture.width - 1.0), y / (picture.height - 1.0));
                value = static_cast<unsigned char>(std::lround(std::clamp(made, 0.0, 255.0)));
            }
    return picture;
}

/// Light that scene and medium share by the transmission.
double through(double transmission, double scene, double medium)
{
    return transmission * scene + (1 - transmission) * medium;
}

constexpr double air[] = {240, 235, 230};

/// Haze that thickens toward the top.
double haze(double scene, int channel, double /*x*/, double y)
{
    return through(0.45 + 0.4 * y, scene, air[channel]);
}

/// An exposure of a third.
double underexposure(double scene, int /*channel*/, double /*x*/, double /*y*/)
{
    return 0.33 * scene;
}

constexpr double displayGamma = 2.2;

double linearLight(double scene, int /*channel*/, double /*x*/, double /*y*/)
{
    return 255 * std::pow(scene / 255, displayGamma);
}

/// The light of a shaded place, with less red and less blue than it should have.
double greenCast(double scene, int channel, double /*x*/, double /*y*/)
{
    constexpr double gain[] = {0.75, 1, 0.6};
    return gain[channel] * scene;
}

/// Two metres of water, which takes red first.
double water(double scene, int channel, double /*x*/, double /*y*/)
{
    constexpr double lossPerMetre[] = {0.10, 0.12, 0.45};
    constexpr double color[] = {110, 95, 15};
    return through(std::exp(-2 * lossPerMetre[channel]), scene, color[channel]);
}

/// What a lens passes toward its corners.
double vignette(double x, double y)
{
    return 1 - 0.9 * ((x - 0.5) * (x - 0.5) + (y - 0.5) * (y - 0.5));
}

constexpr double blackLevel = 12;

double unevenSensor(double scene, int /*channel*/, double x, double y)
{
    return scene * vignette(x, y) * (255 - blackLevel) / 255 + blackLevel;
}

using Restoration = std::function<void(const VexaImage& src, VexaImage& dst)>;

struct Trial {
    const char* operation;
    const char* model;
    Model degrade;
    Restoration restore;
};

/// A field of one value as the model shows it, in 16 bits.
VexaImage field(const VexaImage& like, double value)
{
    const Picture flat(like.width(), like.height());
    VexaImage image =
        imageOf(degraded(flat, [=](double, int c, double x, double y) { return unevenSensor(value, c, x, y); }));
    (void)image.convertTo(image, VEXA_16UC3, 1, 0);
    return image;
}

void correctFlatField(const VexaImage& src, VexaImage& dst)
{
    VexaImage wide(src);
    (void)wide.convertTo(wide, VEXA_16UC3, 1, 0);
    VexaImage corrected;
    (void)co::FPNCorrection(wide, corrected, field(src, 255), field(src, 0), 255.0F);
    (void)corrected.convertTo(dst, VEXA_8UC3, 1, 0);
}

const Trial trials[] = {
    {"dehaze", "haze, transmission 0.85 to 0.45", haze,
     [](const VexaImage& src, VexaImage& dst) { (void)co::dehaze(src, dst, 240, 235, 230); }},
    {"lowlight", "a third of the light", underexposure,
     [](const VexaImage& src, VexaImage& dst) { (void)co::lowlight(src, dst); }},
    {"gammaCorrect", "linear light", linearLight,
     [](const VexaImage& src, VexaImage& dst) { (void)co::gammaCorrect(src, dst, static_cast<float>(displayGamma)); }},
    {"autoColor", "a green cast", greenCast,
     [](const VexaImage& src, VexaImage& dst) { (void)co::autoColor(src, dst); }},
    {"underwaterFilter", "two metres of water", water,
     [](const VexaImage& src, VexaImage& dst) {
         (void)vexa::imageFiltering::underwaterFilter(src, dst, VexaEnhancementParams(true, 0, 0));
     }},
    {"FPNCorrection", "vignette and black level", unevenSensor, correctFlatField},
};

}  // namespace

std::vector<Figure> photometricFigures(const VexaImage& photograph)
{
    const Picture original = pictureOf(photograph);
    std::vector<Figure> figures;
    for (const Trial& trial : trials) {
        const Picture before = degraded(original, trial.degrade);
        VexaImage restored;
        trial.restore(imageOf(before), restored);
        const Picture after = pictureOf(restored);
        figures.push_back({trial.operation, trial.model, psnr(before, original), psnr(after, original), before, after});
    }
    return figures;
}
