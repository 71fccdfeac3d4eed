/// @file
/// Flow by OpenCV, with windows, levels and iterations as for the library's methods. `levels` is the coarsest.

#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/video/tracking.hpp>

#include "flow.h"
#include "picture.h"

namespace {

constexpr int levels = 3;
constexpr int side = 15;
constexpr int iterations = 10;
constexpr double threshold = 0.01;

cv::Mat pixelsOf(const VexaImage& image)
{
    cv::Mat pixels(image.height(), image.width(), CV_8U);
    require(image.download(pixels.data, image.width()), "download");
    return pixels;
}

/// Every pixel as a feature.
void sparse(const VexaImage& previous, const VexaImage& next, FlowField& flow)
{
    std::vector<cv::Point2f> from;
    for (int y = 0; y < flow.height; ++y)
        for (int x = 0; x < flow.width; ++x) from.emplace_back(static_cast<float>(x), static_cast<float>(y));
    std::vector<cv::Point2f> to;
    std::vector<unsigned char> found;
    cv::calcOpticalFlowPyrLK(pixelsOf(previous), pixelsOf(next), from, to, found, cv::noArray(), cv::Size(side, side),
                             levels,
                             cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, iterations, threshold));
    for (std::size_t i = 0; i < to.size(); ++i) {
        constexpr float none = std::numeric_limits<float>::quiet_NaN();
        flow.x[i] = found[i] != 0 ? to[i].x - from[i].x : none;
        flow.y[i] = found[i] != 0 ? to[i].y - from[i].y : none;
    }
}

void farneback(const VexaImage& previous, const VexaImage& next, FlowField& flow)
{
    cv::Mat result;
    cv::calcOpticalFlowFarneback(pixelsOf(previous), pixelsOf(next), result, 0.5, levels + 1, side, iterations, 5, 1.1,
                                 0);
    std::size_t i = 0;
    for (auto vector = result.begin<cv::Vec2f>(); vector != result.end<cv::Vec2f>(); ++vector, ++i) {
        flow.x[i] = (*vector)[0];
        flow.y[i] = (*vector)[1];
    }
}

}  // namespace

std::vector<FlowMethod> flowMethodsOfOpenCv()
{
    return {{"OpenCV `calcOpticalFlowPyrLK`", sparse}, {"OpenCV `calcOpticalFlowFarneback`", farneback}};
}
