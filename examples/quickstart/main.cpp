/// @file
/// A tour on one photograph: its negative, a blend with a second frame in float, and the difference between the two.
/// Usage: quickstart IMAGE [FOLDER]; the pictures go to FOLDER, by default the current one.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vexaCore.h"

namespace {

namespace al = vexa::arithmeticLogical;
namespace de = vexa::dataExchange;

constexpr int brokenInput = 2;

/// Runs a step that makes a picture and prints what it took. A failed step ends the program.
template <typename Step>
void make(const char* name, const VexaImage& picture, const Step& step)
{
    const VexaStream stream;
    VexaTimer timer;
    timer.Start();
    const VexaStatus status = step();
    stream.sync();
    timer.Stop();
    if (status != VEXA_SUCCESS) {
        std::fprintf(stderr, "quickstart: %s failed: %s (%d)\n", name, vexaStatusString(status), status);
        std::exit(1);
    }
    std::printf("%-12s %5d x %-5d %2d-bit %d channels %9.3f ms\n", name, picture.width(), picture.height(),
                picture.depth(), picture.channels(), 1000 * timer.GetElapsedTime());
}

/// The photograph as if the camera had moved between two frames: shifted over a copy of itself.
VexaStatus moved(const VexaImage& photo, VexaImage& frame)
{
    const int dx = photo.width() / 40;
    const int dy = photo.height() / 40;
    frame = photo;
    return photo.copyTo(frame, {dx, dy}, {0, 0, photo.width() - dx, photo.height() - dy}, VexaStream(false));
}

/// The mean of two 8-bit frames, computed in float from 0 to 1 and rounded back to 8 bits.
VexaStatus blend(VexaImage& a, VexaImage& b, VexaImage& result)
{
    VexaImage x;
    VexaImage y;
    VexaImage sum;
    if (const VexaStatus failed = a.convertTo(x, 32, 1 / 255.0F, 0)) return failed;
    if (const VexaStatus failed = b.convertTo(y, 32, 1 / 255.0F, 0)) return failed;
    if (const VexaStatus failed = al::add(x, y, sum)) return failed;
    return sum.convertTo(result, 8, 255.0F / 2, 0.5F);
}

/// The difference of two frames, four times as bright as it is.
VexaStatus difference(const VexaImage& a, const VexaImage& b, VexaImage& result)
{
    if (const VexaStatus failed = al::absDiff(a, b, result)) return failed;
    return de::convertScale(result, result, 4, 0);
}

/// Four pictures of one size in one.
VexaStatus arrange(const VexaImage* const (&pictures)[4], VexaImage& sheet)
{
    const int width = pictures[0]->width();
    const int height = pictures[0]->height();
    if (const VexaStatus failed = sheet.create(2 * width, 2 * height, pictures[0]->type())) return failed;
    for (int i = 0; i < 4; ++i)
        if (const VexaStatus failed =
                pictures[i]->copyTo(sheet, {i % 2 * width, i / 2 * height}, {0, 0, width, height}, VexaStream(false)))
            return failed;
    return VEXA_SUCCESS;
}

int save(VexaImage& picture, const std::string& file)
{
    if (vexa::io::saveImage(picture, file) != VEXA_SUCCESS) {
        std::fprintf(stderr, "quickstart: can't write %s\n", file.c_str());
        return 1;
    }
    std::printf("wrote %s\n", file.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: quickstart IMAGE [FOLDER]\n");
        return brokenInput;
    }
    const std::string file = argv[1];
    const std::string folder = argc == 3 ? std::string(argv[2]) + "/" : "";

    VexaImage photo;
    if (photo.create(file, VEXA_LOAD_IMAGE_COLOR) != VEXA_SUCCESS) {
        std::fprintf(stderr, "quickstart: %s can't be read as an image\n", file.c_str());
        return brokenInput;
    }
    VexaDeviceProperties device;
    (void)vexa::device::getDeviceProperties(vexa::device::getCurentDevice(), device);
    std::printf("%s on %s\n", file.c_str(), device.name);

    VexaImage frame;
    VexaImage negative;
    VexaImage blended;
    VexaImage changed;
    VexaImage sheet;
    make("frame 2", frame, [&] { return moved(photo, frame); });
    make("negative", negative, [&] { return al::NOT(photo, negative); });
    make("blend", blended, [&] { return blend(photo, frame, blended); });
    make("difference", changed, [&] { return difference(photo, frame, changed); });
    const VexaImage* const pictures[] = {&photo, &negative, &blended, &changed};
    if (arrange(pictures, sheet) != VEXA_SUCCESS) return 1;

    int failed = save(negative, folder + "negative.png");
    failed |= save(blended, folder + "blend.png");
    failed |= save(changed, folder + "difference.png");
    failed |= save(sheet, folder + "all.jpg");
    return failed;
}
