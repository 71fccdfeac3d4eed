#include "stacking.h"

#include <algorithm>
#include <cstdlib>

#include "picture.h"

namespace {

/// Takes the columns from the middle on from another picture.
Picture joined(const Picture& left, const Picture& right)
{
    Picture picture = left;
    const int middle = left.width / 2;
    for (int y = 0; y < left.height; ++y)
        std::copy_n(right.at(middle, y), static_cast<std::size_t>(3 * (left.width - middle)), picture.at(middle, y));
    return picture;
}

int difference(const unsigned char* a, const unsigned char* b)
{
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

}  // namespace

StackFigure stackFigure(const VexaImage& photograph)
{
    VexaImage soft;
    require(vexa::imageFiltering::imageFilter(photograph, soft, VexaSpecialFilters::gaussian(VexaSize(15, 15), 3.0F)),
            "imageFilter");
    const Picture truth = pictureOf(photograph);
    const Picture blurred = pictureOf(soft);
    const Picture left = joined(truth, blurred);
    const Picture right = joined(blurred, truth);
    VexaImage frames[] = {imageOf(left), imageOf(right)};
    VexaImage result;
    require(vexa::computerVision::focusStack(frames, 2, result, VexaSpecialFilters::average(VexaSize(21, 21))),
            "focusStack");
    const Picture stacked = pictureOf(result);

    constexpr int seam = 30;
    int pixels = 0;
    int equal = 0;
    int alike = 0;
    for (int y = 0; y < truth.height; ++y)
        for (int x = 0; x < truth.width; ++x) {
            if (std::abs(x - truth.width / 2) < seam) continue;
            const int levels = difference(stacked.at(x, y), truth.at(x, y));
            ++pixels;
            equal += levels == 0 ? 1 : 0;
            alike += levels <= 4 ? 1 : 0;
        }
    return {static_cast<double>(equal) / pixels, static_cast<double>(alike) / pixels,
            std::max(psnr(left, truth), psnr(right, truth)), psnr(stacked, truth)};
}
