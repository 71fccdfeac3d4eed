/// @file
/// OpenCV as the opponent, on the same pixels: on the host an image's buffer is memory that a cv::Mat can name.

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/video/tracking.hpp>

#include "peer.h"

namespace bench {
namespace {

using Mats = std::vector<cv::Mat>;
using Parameters = std::vector<double>;

struct Opponent {
    const char* operation;
    const char* name;
    void (*call)(const Mats& src, cv::Mat& dst, const Parameters& parameters);
};

cv::Scalar scalar(const Parameters& parameters, std::size_t first = 0)
{
    return {parameters[first], parameters[first + 1], parameters[first + 2]};
}

/// A conversion of cv::cvtColor.
template <int code>
void cvtColor(const Mats& src, cv::Mat& dst, const Parameters& /*parameters*/)
{
    cv::cvtColor(src[0], dst, code);
}

/// By the channels of the source, where the opponent has two codes.
template <int code, int codeOfFour>
void cvtColorByChannels(const Mats& src, cv::Mat& dst, const Parameters& /*parameters*/)
{
    cv::cvtColor(src[0], dst, src[0].channels() == 4 ? codeOfFour : code);
}

/// Numbers of each channel, one after the other in a row of doubles.
void store(const cv::Scalar& numbers, int channels, cv::Mat& dst, int first)
{
    for (int channel = 0; channel < channels; ++channel) dst.at<double>(first + channel) = numbers[channel];
}

void storeMoments(const cv::Mat& src, cv::InputArray mask, cv::Mat& dst)
{
    cv::Scalar mean, stdDev;
    cv::meanStdDev(src, mean, stdDev, mask);
    store(mean, src.channels(), dst, 0);
    store(stdDev, src.channels(), dst, src.channels());
}

/// The derivative along x to `dst`, that along y to the second source.
void gradients(const Mats& src, cv::Mat& dst, int side)
{
    const cv::Mat along = src[1];
    cv::Sobel(src[0], dst, CV_32F, 1, 0, side, 1, 0, cv::BORDER_REPLICATE);
    cv::Sobel(src[0], along, CV_32F, 0, 1, side, 1, 0, cv::BORDER_REPLICATE);
}

/// OpenCV's name of an interpolation.
int interpolation(double type)
{
    if (type == VEXA_INTER_NEAREST) return cv::INTER_NEAREST;
    return type == VEXA_INTER_LINEAR ? cv::INTER_LINEAR : cv::INTER_CUBIC;
}

/// The first rows of a matrix.
cv::Mat matrix(const Parameters& parameters, int rows)
{
    return cv::Mat(rows, 3, CV_64F, const_cast<double*>(parameters.data()));
}

/// All values of a byte, as floats.
cv::Mat values()
{
    cv::Mat row(1, 256, CV_32F);
    for (int i = 0; i < row.cols; ++i) row.at<float>(i) = static_cast<float>(i);
    return row;
}

const Opponent opponents[] = {
    {"add", "cv::add",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         cv::add(src[0], src[1], dst, cv::noArray(), dst.depth());
     }},
    {"subtract", "cv::subtract",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         cv::subtract(src[0], src[1], dst, cv::noArray(), dst.depth());
     }},
    {"multiply", "cv::multiply",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::multiply(src[0], src[1], dst, 1.0, dst.depth()); }},
    {"divide", "cv::divide",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::divide(src[0], src[1], dst, 1.0, dst.depth()); }},
    {"absDiff", "cv::absdiff",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::absdiff(src[0], src[1], dst); }},
    {"add constant", "cv::add",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::add(src[0], cv::Scalar::all(parameters[0]), dst, cv::noArray(), dst.depth());
     }},
    {"add scalar", "cv::add",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) { cv::add(src[0], scalar(parameters), dst); }},
    {"constant minus", "cv::subtract",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::subtract(cv::Scalar::all(parameters[0]), src[0], dst);
     }},
    {"multiply constant", "cv::Mat::convertTo",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         src[0].convertTo(dst, dst.depth(), parameters[0]);
     }},
    {"multiply scalar", "cv::multiply",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::multiply(src[0], scalar(parameters), dst);
     }},
    {"constant over", "cv::divide",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) { cv::divide(parameters[0], src[0], dst); }},
    {"AND", "cv::bitwise_and",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::bitwise_and(src[0], src[1], dst); }},
    {"XOR", "cv::bitwise_xor",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::bitwise_xor(src[0], src[1], dst); }},
    {"OR constant", "cv::bitwise_or",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::bitwise_or(src[0], cv::Scalar::all(parameters[0]), dst);
     }},
    {"abs", "cv::absdiff",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::absdiff(src[0], cv::Scalar::all(0), dst); }},
    {"exp", "cv::exp", [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::exp(src[0], dst); }},
    {"sqrt", "cv::sqrt", [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::sqrt(src[0], dst); }},
    {"pow", "cv::pow",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) { cv::pow(src[0], parameters[0], dst); }},
    {"set", "cv::Mat::setTo",
     [](const Mats&, cv::Mat& dst, const Parameters& parameters) { dst.setTo(scalar(parameters)); }},
    {"threshold", "cv::max, cv::min",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::max(src[0], scalar(parameters), dst);
         cv::min(dst, scalar(parameters, 3), dst);
     }},
    {"padImage", "cv::copyMakeBorder",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         const int margin = static_cast<int>(parameters[0]);
         cv::copyMakeBorder(src[0], dst, margin, margin, margin, margin, cv::BORDER_CONSTANT, scalar(parameters, 1));
     }},
    {"getChannel", "cv::extractChannel",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::extractChannel(src[0], dst, static_cast<int>(parameters[0]));
     }},
    {"rgb2gray", "cv::cvtColor BGR2GRAY", cvtColorByChannels<cv::COLOR_BGR2GRAY, cv::COLOR_BGRA2GRAY>},
    {"gray2rgb", "cv::cvtColor GRAY2BGR", cvtColor<cv::COLOR_GRAY2BGR>},
    {"rgb2yuv", "cv::cvtColor BGR2YUV", cvtColor<cv::COLOR_BGR2YUV>},
    {"yuv2rgb", "cv::cvtColor YUV2BGR", cvtColor<cv::COLOR_YUV2BGR>},
    {"rgb2ycbcr", "cv::cvtColor BGR2YCrCb", cvtColor<cv::COLOR_BGR2YCrCb>},
    {"ycbcr2rgb", "cv::cvtColor YCrCb2BGR", cvtColor<cv::COLOR_YCrCb2BGR>},
    {"rgb2hsv", "cv::cvtColor BGR2HSV_FULL", cvtColor<cv::COLOR_BGR2HSV_FULL>},
    {"hsv2rgb", "cv::cvtColor HSV2BGR_FULL", cvtColor<cv::COLOR_HSV2BGR_FULL>},
    {"rgb2Lab", "cv::cvtColor BGR2Lab", cvtColor<cv::COLOR_BGR2Lab>},
    {"Lab2rgb", "cv::cvtColor Lab2BGR", cvtColor<cv::COLOR_Lab2BGR>},
    {"demosaic", "cv::cvtColor BayerBG2BGR", cvtColor<cv::COLOR_BayerBG2BGR>},
    {"demosaicDFPD", "cv::cvtColor BayerBG2BGR_EA", cvtColor<cv::COLOR_BayerBG2BGR_EA>},
    {"channelSplit", "cv::split",
     [](const Mats& src, cv::Mat&, const Parameters&) {
         Mats planes(src.begin() + 1, src.end());
         cv::split(src[0], planes);
     }},
    {"channelMerge", "cv::merge", [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::merge(src, dst); }},
    {"random", "cv::randu", [](const Mats&, cv::Mat& dst, const Parameters&) { cv::randu(dst, 0, 1); }},
    {"NOT", "cv::bitwise_not", [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::bitwise_not(src[0], dst); }},
    {"convertScale", "cv::Mat::convertTo",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         src[0].convertTo(dst, dst.depth(), parameters[0], parameters[1]);
     }},
    {"minMax", "cv::minMaxLoc",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         cv::minMaxLoc(src[0], &dst.at<double>(0), &dst.at<double>(1));
     }},
    {"sum", "cv::sum",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { store(cv::sum(src[0]), src[0].channels(), dst, 0); }},
    {"mean", "cv::mean",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { store(cv::mean(src[0]), src[0].channels(), dst, 0); }},
    {"norm", "cv::norm",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { dst.at<double>(0) = cv::norm(src[0]); }},
    {"meanStdDev", "cv::meanStdDev",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { storeMoments(src[0], cv::noArray(), dst); }},
    {"meanStdDev masked", "cv::meanStdDev",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { storeMoments(src[0], src[1], dst); }},
    {"inRange", "cv::inRange",
     [](const Mats& src, cv::Mat& dst, const Parameters& bounds) { cv::inRange(src[0], bounds[0], bounds[1], dst); }},
    {"countInRange", "cv::inRange, cv::countNonZero",
     [](const Mats& src, cv::Mat& dst, const Parameters& bounds) {
         cv::Mat mask;
         cv::inRange(src[0], bounds[0], bounds[1], mask);
         dst.at<double>(0) = cv::countNonZero(mask);
     }},
    {"calcHist", "cv::calcHist",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         for (int channel = 0; channel < src[0].channels(); ++channel) {
             cv::Mat bins;
             cv::calcHist(Mats{src[0]}, {channel}, cv::noArray(), bins, {256}, {0, 256});
             bins.reshape(1, 1).copyTo(dst.row(channel));
         }
     }},
    {"imageFilter", "cv::filter2D",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         cv::filter2D(src[0], dst, -1, src[1], {-1, -1}, 0, cv::BORDER_REPLICATE);
     }},
    {"Sobel gradients", "cv::Sobel", [](const Mats& src, cv::Mat& dst, const Parameters&) { gradients(src, dst, 3); }},
    {"Scharr gradients", "cv::Scharr",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { gradients(src, dst, cv::FILTER_SCHARR); }},
    {"minFilter", "cv::erode",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::erode(src[0], dst, src[1]); }},
    {"maxFilter", "cv::dilate",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::dilate(src[0], dst, src[1]); }},
    {"modeFilter", "cv::medianBlur",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::medianBlur(src[0], dst, src[1].rows); }},
    {"resize", "cv::resize",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::resize(src[0], dst, dst.size(), 0, 0, interpolation(parameters[0]));
     }},
    {"warpAffine", "cv::warpAffine",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::warpAffine(src[0], dst, matrix(parameters, 2), dst.size(), interpolation(parameters.back()));
     }},
    {"warpPerspective", "cv::warpPerspective",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::warpPerspective(src[0], dst, matrix(parameters, 3), dst.size(), interpolation(parameters.back()));
     }},
    {"flip", "cv::flip",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::flip(src[0], dst, parameters[0] == VEXA_FLIP_BOTH_DIRECTIONS ? -1 : static_cast<int>(parameters[0]));
     }},
    {"transpose", "cv::transpose",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::transpose(src[0], dst); }},
    {"channelMix", "cv::transform",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::transform(src[0], dst, cv::Matx34d(parameters.data()));
     }},
    {"autoColor", "cv::mean, cv::transform",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         const cv::Scalar mean = cv::mean(src[0]);
         cv::Matx34f mix = cv::Matx34f::eye();
         for (int i = 0; i < 3; ++i)
             mix(i, 1) += static_cast<float>((std::max({mean[0], mean[1], mean[2]}) - mean[i]) / 255);
         cv::transform(src[0], dst, mix);
     }},
    {"gammaCorrect", "cv::pow, cv::LUT",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::Mat table = values();
         cv::pow(table / 255, 1 / parameters[0], table);
         table.convertTo(table, CV_8U, 255);
         cv::LUT(src[0], table, dst);
     }},
    {"logTransform bytes", "cv::log, cv::LUT",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::Mat table = values() + 1;
         cv::log(table, table);
         cv::LUT(src[0], parameters[0] * table, dst);
     }},
    {"logTransform", "cv::add, cv::log, cv::Mat::convertTo",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::add(src[0], 1.0, dst);
         cv::log(dst, dst);
         dst.convertTo(dst, -1, parameters[0]);
     }},
    {"LUT", "cv::LUT",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::LUT(src[0], src[1].colRange(0, 256), dst); }},
    {"adjust", "cv::minMaxLoc, cv::convertScaleAbs",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         double min = 0;
         double max = 0;
         cv::minMaxLoc(src[0], &min, &max);
         const double scale = 255 * (parameters[1] - parameters[0]) / (max - min);
         cv::convertScaleAbs(src[0], dst, scale, 255 * parameters[0] - scale * min);
     }},
    {"histEq", "cv::equalizeHist",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::equalizeHist(src[0], dst); }},
    {"borderMask", "cv::copyMakeBorder",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         const int margin = static_cast<int>(parameters[0]);
         const cv::Rect inside(margin, margin, src[0].cols - 2 * margin, src[0].rows - 2 * margin);
         cv::copyMakeBorder(src[0](inside), dst, margin, margin, margin, margin,
                            cv::BORDER_CONSTANT | cv::BORDER_ISOLATED, scalar(parameters, 1));
     }},
    {"imageBinary", "cv::threshold",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         if (src[0].channels() == 3) cv::cvtColor(src[0], dst, cv::COLOR_BGR2GRAY);
         cv::threshold(src[0].channels() == 3 ? dst : src[0], dst, parameters[0] - 1, 255, cv::THRESH_BINARY);
     }},
    {"findTransformECC", "cv::findTransformECC",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         cv::Mat map;
         matrix(parameters, 2).convertTo(map, CV_32F);
         const cv::TermCriteria steps(cv::TermCriteria::COUNT, static_cast<int>(parameters[6]), 0);
         cv::findTransformECC(src[0], src[1], map, cv::MOTION_AFFINE, steps, cv::noArray(), 1);
         map.copyTo(dst);
     }},
    {"dft", "cv::Mat::convertTo, cv::dft",
     [](const Mats& src, cv::Mat& dst, const Parameters&) {
         static cv::Mat pixels;
         src[0].convertTo(pixels, CV_32F);
         cv::dft(pixels, dst, cv::DFT_COMPLEX_OUTPUT);
     }},
    {"Gaussian pyramid", "cv::buildPyramid",
     [](const Mats& src, cv::Mat&, const Parameters& parameters) {
         static Mats levels;
         cv::buildPyramid(src[0], levels, static_cast<int>(parameters[0]));
     }},
    {"dense flow", "cv::calcOpticalFlowFarneback",
     [](const Mats& src, cv::Mat&, const Parameters& parameters) {
         cv::Mat flow;
         cv::calcOpticalFlowFarneback(src[0], src[1], flow, 0.5, static_cast<int>(parameters[0]),
                                      static_cast<int>(parameters[1]), static_cast<int>(parameters[2]), 5, 1.1, 0);
     }},
    {"goodFeaturesToTrack", "cv::goodFeaturesToTrack",
     [](const Mats& src, cv::Mat&, const Parameters& parameters) {
         std::vector<cv::Point2f> corners;
         cv::goodFeaturesToTrack(src[0], corners, static_cast<int>(parameters[0]), parameters[1], parameters[2],
                                 cv::noArray(), static_cast<int>(parameters[3]), parameters[4] != 0, parameters[5]);
     }},
    {"trackFeatures", "cv::calcOpticalFlowPyrLK",
     [](const Mats& src, cv::Mat&, const Parameters& parameters) {
         std::vector<cv::Point2f> tracked;
         std::vector<unsigned char> found;
         const int side = static_cast<int>(parameters[0]);
         const cv::TermCriteria until(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, static_cast<int>(parameters[2]),
                                      parameters[3]);
         cv::calcOpticalFlowPyrLK(src[0], src[1], src[2].reshape(2), tracked, found, cv::noArray(),
                                  cv::Size(side, side), static_cast<int>(parameters[1]), until);
     }},
    {"matMul", "cv::gemm",
     [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::gemm(src[0], src[1], 1, cv::noArray(), 0, dst); }},
};

/// The pixels of an image, not copied.
cv::Mat mat(const VexaImage& image)
{
    const int depth = image.depth() == 8 ? CV_8U : image.depth() == 16 ? CV_16U : image.depth() == 32 ? CV_32F : CV_64F;
    return cv::Mat(image.height(), image.width(), CV_MAKETYPE(depth, image.channels()), image.ptr(),
                   static_cast<std::size_t>(image.pitch()));
}

}  // namespace

Peer peerOf(const Call& call)
{
    Mats sources;
    for (const Shared& source : call.sources) sources.push_back(mat(*source));
    for (const Opponent& opponent : opponents)
        if (call.operation == opponent.operation)
            return {[opponent, call, sources] {
                        cv::Mat dst = mat(*call.dst);
                        opponent.call(sources, dst, call.parameters);
                    },
                    opponent.name};
    return {};
}

}  // namespace bench
