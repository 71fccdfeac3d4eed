/// @file
/// OpenCV as the opponent, on the same pixels: on the host an image's buffer is memory that a cv::Mat can name.

#include <opencv2/core.hpp>

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
    {"NOT", "cv::bitwise_not", [](const Mats& src, cv::Mat& dst, const Parameters&) { cv::bitwise_not(src[0], dst); }},
    {"convertScale", "cv::Mat::convertTo",
     [](const Mats& src, cv::Mat& dst, const Parameters& parameters) {
         src[0].convertTo(dst, dst.depth(), parameters[0], parameters[1]);
     }},
};

/// The pixels of an image, not copied.
cv::Mat mat(const VexaImage& image)
{
    const int depth = image.depth() == 8 ? CV_8U : image.depth() == 16 ? CV_16U : CV_32F;
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
