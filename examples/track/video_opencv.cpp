/// @file
/// Videos by OpenCV.

#include <algorithm>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/videoio.hpp>

#include "video.h"

namespace {

class OpenCvVideo : public Video {
public:
    explicit OpenCvVideo(const std::string& file) : _capture(file) {}

    bool isOpen() const { return _capture.isOpened(); }
    int frames() const override { return std::max(0, static_cast<int>(_capture.get(cv::CAP_PROP_FRAME_COUNT))); }

    bool read(VexaImage& frame) override
    {
        cv::Mat pixels;
        if (!_capture.read(pixels) || pixels.type() != CV_8UC3) return false;
        VexaImage image(pixels.cols, pixels.rows, VEXA_8UC3);
        if (image.upload(pixels.data, static_cast<int>(pixels.step)) != VEXA_SUCCESS) return false;
        frame = image;
        return true;
    }

private:
    cv::VideoCapture _capture;
};

}  // namespace

std::unique_ptr<Video> openVideo(const std::string& file)
{
    // Each way of reading that fails would tell so at length.
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    try {
        auto video = std::make_unique<OpenCvVideo>(file);
        if (video->isOpen()) return video;
    } catch (const cv::Exception&) {
        // As good as a file that does not open.
    }
    return nullptr;
}
