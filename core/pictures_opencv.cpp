/// @file
/// Pictures by OpenCV's codecs and highgui. No exception of OpenCV leaves this file.

#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>
#include <opencv2/imgcodecs.hpp>

#include <fstream>

#include "display.h"
#include "jpeg.h"
#include "pictures.h"

namespace vexa {
namespace {

/// Pixels stay where the file has them: no load type turns a picture by its EXIF tag.
int imreadFlags(VexaLoadType load)
{
    switch (load) {
        case VEXA_LOAD_IMAGE_GRAYSCALE:
            return cv::IMREAD_GRAYSCALE | cv::IMREAD_IGNORE_ORIENTATION;
        case VEXA_LOAD_IMAGE_COLOR:
            return cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION;
        case VEXA_LOAD_IMAGE_GRAYSCALE_KEEP_DEPTH:
            return cv::IMREAD_ANYDEPTH | cv::IMREAD_IGNORE_ORIENTATION;
        case VEXA_LOAD_IMAGE_COLOR_KEEP_DEPTH:
            return cv::IMREAD_ANYDEPTH | cv::IMREAD_ANYCOLOR | cv::IMREAD_IGNORE_ORIENTATION;
        default:
            return cv::IMREAD_UNCHANGED;
    }
}

struct DepthName {
    int bits;  ///< negative for signed integers
    int cvDepth;
};
constexpr DepthName depthNames[] = {{8, CV_8U},   {-8, CV_8S},   {16, CV_16U}, {-16, CV_16S},
                                    {32, CV_32F}, {-32, CV_32S}, {64, CV_64F}};

/// The depth in bits, 0 for one that the library does not know.
int bitsOf(int cvDepth)
{
    for (const DepthName& name : depthNames)
        if (name.cvDepth == cvDepth) return name.bits;
    return 0;
}

/// A header for the pixels of a picture, empty for a depth that OpenCV does not know.
cv::Mat headerOf(const Picture& picture)
{
    for (const DepthName& name : depthNames)
        if (name.bits == picture.depth)
            return cv::Mat(picture.height, picture.width, CV_MAKETYPE(name.cvDepth, picture.channels), picture.pixels,
                           picture.pitch);
    return {};
}

/// Whether a file is worth handing to a decoder, which would print warnings for one that can't be opened and fill up
/// the rest of a JPEG that was cut off.
bool isWhole(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (stream.peek() == std::ifstream::traits_type::eof()) return false;
    return !isJpeg(stream) || endsAsJpeg(stream);
}

}  // namespace

bool decode(const std::string& file, VexaLoadType load, Picture& picture)
try {
    if (!isWhole(file)) return false;
    const auto pixels = std::make_shared<cv::Mat>(cv::imread(file, imreadFlags(load)));
    if (pixels->empty()) return false;
    picture = {pixels->cols, pixels->rows, bitsOf(pixels->depth()), pixels->channels(), pixels->step.p[0],
               pixels->data, pixels};
    return true;
} catch (...) {
    return false;
}

bool encode(const std::string& file, const Picture& picture)
try {
    const cv::Mat pixels = headerOf(picture);
    return !pixels.empty() && cv::imwrite(file, pixels);
} catch (...) {
    return false;
}

void openWindow(const std::string& name, bool resizable)
try {
    if (hasDisplay()) cv::namedWindow(name, resizable ? cv::WINDOW_NORMAL : cv::WINDOW_AUTOSIZE);
} catch (...) {
    // Opening a window reports nothing; showPicture tells whether there is one.
}

bool showPicture(const std::string& name, const Picture& picture)
try {
    const cv::Mat pixels = headerOf(picture);
    if (pixels.empty() || !hasDisplay()) return false;
    cv::imshow(name, pixels);
    return true;
} catch (...) {
    return false;
}

int waitKey(int delay)
try {
    return hasDisplay() ? cv::waitKey(delay) : -1;
} catch (...) {
    return -1;
}

}  // namespace vexa
