/// @file
/// Aligns two photographs of one scene: finds the affine map between them to a fraction of a pixel. See `usage`.

#include <algorithm>
#include <cmath>

#include "../program.h"

namespace {

namespace gt = vexa::geometryTransforms;

constexpr char usage[] =
    "align TEMPLATE INPUT PICTURE DIFFERENCE [--steps STEPS]\n"
    "align --move PHOTO MOVED\n"
    "\n"
    "Finds the affine map from the pixels of TEMPLATE to those of INPUT, two photographs of one scene, and makes\n"
    "PICTURE, which is INPUT as TEMPLATE saw it. DIFFERENCE is that of the two, four times as bright as it is. The\n"
    "search starts with the middles of both on each other. With --move it makes a second photograph of the middle of\n"
    "a first one instead, a little turned and stretched.\n"
    "\n"
    "  STEPS  at most so many steps at each of the scales 1/4, 1/2 and 1; by default 50\n";

const Program program("align");

/// What the command line asks for.
struct Request {
    std::vector<std::string> files;
    int steps = 50;
    bool move = false;
};

Request requestOf(int argc, char** argv)
{
    Request request;
    request.files = program.files(
        argc, argv, usage,
        [&](const std::string& option) {
            if (option == "--move") request.move = true;
            return option == "--move";
        },
        [&](const std::string& option, const char* value) {
            if (option == "--steps") request.steps = program.number(option, value, 0, 1000000);
            return option == "--steps";
        });
    const std::size_t wanted = request.move ? 2 : 4;
    if (request.files.size() != wanted)
        program.refuse("name " + std::string(request.move ? "two" : "four") + " files; --help tells more");
    return request;
}

struct Map {
    Vexa64f row[2][3];
};

void print(const char* what, const Map& map)
{
    std::printf("%s", what);
    for (const auto& row : map.row) std::printf("  [%.5f %.5f %8.3f]", row[0], row[1], row[2]);
    std::printf("\n");
}

/// The map that takes the middle of one image to that of the other, with this linear part.
Map fromMiddleToMiddle(const VexaSize& from, const VexaSize& to, const double (&linear)[2][2])
{
    const double x = (from.width - 1) / 2.0;
    const double y = (from.height - 1) / 2.0;
    const double middle[2] = {(to.width - 1) / 2.0, (to.height - 1) / 2.0};
    Map map;
    for (int i = 0; i < 2; ++i) {
        map.row[i][0] = linear[i][0];
        map.row[i][1] = linear[i][1];
        map.row[i][2] = middle[i] - linear[i][0] * x - linear[i][1] * y;
    }
    return map;
}

/// The image at 1/scale of its size.
VexaImage scaled(const VexaImage& image, int scale)
{
    VexaImage smaller(image.width() / scale, image.height() / scale, image.type());
    program.require(gt::resize(image, smaller, VEXA_INTER_LINEAR), "resize");
    return smaller;
}

VexaImage grayOf(const VexaImage& photo)
{
    VexaImage gray;
    program.require(vexa::colorOperations::rgb2gray(photo, gray), "rgb2gray");
    return gray;
}

/// From coarse to fine: a step finds its way from no farther than an edge is wide.
void align(const VexaImage& templ, const VexaImage& input, int steps, Map& map)
{
    constexpr int leastSide = 64;
    constexpr double epsilon = 1e-6;
    for (int scale = 4; scale >= 1; scale /= 2) {
        const int side = std::min({templ.width(), templ.height(), input.width(), input.height()});
        if (scale > 1 && side / scale < leastSide) continue;
        VexaImage smallTemplate = scaled(templ, scale);
        VexaImage smallInput = scaled(input, scale);
        for (auto& row : map.row) row[2] /= scale;
        if (vexa::computerVision::findTransformECC(smallTemplate, smallInput, map.row, steps, epsilon) != VEXA_SUCCESS)
            program.refuse("these images can't be aligned");
        for (auto& row : map.row) row[2] *= scale;
    }
}

void alignFiles(const Request& request)
{
    const VexaImage templ = program.load(request.files[0], VEXA_LOAD_IMAGE_COLOR);
    const VexaImage input = program.load(request.files[1], VEXA_LOAD_IMAGE_COLOR);
    Map map = fromMiddleToMiddle(templ.size(), input.size(), {{1, 0}, {0, 1}});
    VexaTimer timer;
    timer.Start();
    align(grayOf(templ), grayOf(input), request.steps, map);
    timer.Stop();
    print("found the map", map);
    std::printf("in %.3f ms\n", 1000 * timer.GetElapsedTime());
    VexaImage picture(templ.size(), templ.type());
    program.require(gt::warpAffineBack(input, picture, map.row, VEXA_INTER_CUBIC), "warpAffineBack");
    program.save(picture, request.files[2]);
    program.saveDifference(templ, picture, request.files[3]);
}

void movePhoto(const Request& request)
{
    const VexaImage photo = program.load(request.files[0], VEXA_LOAD_IMAGE_COLOR);
    constexpr double angle = 0.04;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    VexaImage moved(photo.width() * 7 / 8, photo.height() * 7 / 8, photo.type());
    Map map = fromMiddleToMiddle(moved.size(), photo.size(), {{1.01 * c, -s}, {s, 0.98 * c}});
    map.row[0][2] += 3.3;
    map.row[1][2] -= 2.6;
    print("moved by the map", map);
    program.require(gt::warpAffineBack(photo, moved, map.row, VEXA_INTER_CUBIC), "warpAffineBack");
    program.save(moved, request.files[1]);
}

}  // namespace

int main(int argc, char** argv)
{
    const Request request = requestOf(argc, argv);
    if (request.move)
        movePhoto(request);
    else
        alignFiles(request);
    return 0;
}
