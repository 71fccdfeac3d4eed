/// @file
/// A photograph rotated, warped, scaled, mirrored and framed. Usage: geometry IMAGE [FOLDER]; the pictures go to
/// FOLDER, by default the current one.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vexaCore.h"

namespace {

namespace gt = vexa::geometryTransforms;

constexpr int brokenInput = 2;

/// Makes a picture by one step and saves it. A failure ends the program.
template <typename Step>
void make(const std::string& file, const Step& step)
{
    VexaImage picture;
    const VexaStatus status = step(picture);
    if (status != VEXA_SUCCESS || vexa::io::saveImage(picture, file) != VEXA_SUCCESS) {
        std::fprintf(stderr, "geometry: no %s: %s (%d)\n", file.c_str(), vexaStatusString(status), status);
        std::exit(1);
    }
    std::printf("wrote %s, %d x %d\n", file.c_str(), picture.width(), picture.height());
}

/// The photograph as if it lay on a table: its upper edge has half the width.
VexaStatus lay(const VexaImage& photo, VexaImage& picture)
{
    const double width = photo.width();
    const double height = photo.height();
    // From the picture to the photograph. Between the upper edge and the lower one the scale goes from 2 to 1.
    Vexa64f matrix[3][3] = {{2, 0.5 * width / height, -0.5 * width}, {0, 2, 0}, {0, 1 / height, 1}};
    return gt::warpPerspectiveBack(photo, picture, matrix, VEXA_INTER_LINEAR);
}

/// The middle of the photograph, four times as large.
VexaStatus magnify(const VexaImage& photo, VexaImage& picture, VexaInterpolationType interpolation)
{
    const int across = photo.width() * 3 / 8;
    const int down = photo.height() * 3 / 8;
    VexaImage middle;
    if (const VexaStatus failed = gt::crop(photo, middle, down, down, across, across)) return failed;
    if (const VexaStatus failed = picture.create(4 * middle.width(), 4 * middle.height(), photo.type())) return failed;
    return gt::resize(middle, picture, interpolation);
}

VexaStatus halve(const VexaImage& photo, VexaImage& picture)
{
    if (const VexaStatus failed = picture.create(photo.width() / 2, photo.height() / 2, photo.type())) return failed;
    return gt::resize(photo, picture, VEXA_INTER_LINEAR);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: geometry IMAGE [FOLDER]\n");
        return brokenInput;
    }
    const std::string folder = argc == 3 ? std::string(argv[2]) + "/" : "";
    VexaImage photo;
    if (photo.create(argv[1], VEXA_LOAD_IMAGE_COLOR) != VEXA_SUCCESS) {
        std::fprintf(stderr, "geometry: %s can't be read as an image\n", argv[1]);
        return brokenInput;
    }

    make(folder + "rotated.png", [&](VexaImage& picture) { return gt::rotateNoCrop(photo, picture, 30); });
    make(folder + "turned_inside.png", [&](VexaImage& picture) {
        const int side = photo.height() / 2;
        const VexaRect middle((photo.width() - side) / 2, (photo.height() - side) / 2, side, side);
        return gt::rotate(photo, picture, 17, {side / 2, side / 2}, middle);
    });
    make(folder + "laid.png", [&](VexaImage& picture) { return lay(photo, picture); });
    make(folder + "half.png", [&](VexaImage& picture) { return halve(photo, picture); });
    make(folder + "magnified.png", [&](VexaImage& picture) { return magnify(photo, picture, VEXA_INTER_CUBIC); });
    make(folder + "mirrored.png",
         [&](VexaImage& picture) { return gt::flipImage(photo, picture, VEXA_FLIP_LEFT_RIGHT); });
    make(folder + "transposed.png", [&](VexaImage& picture) { return gt::transpose(photo, picture); });
    make(folder + "framed.png", [&](VexaImage& picture) { return gt::taper(photo, picture, 40, 40, 40, 40); });
    return 0;
}
