/// @file
/// The Fourier transform beside OpenCV's, for sizes that do not divide well: primes, single rows and columns.

#include <opencv2/core.hpp>

#include "images.h"

namespace {

using namespace kit;

TEST(Fft2BesideOpenCv, AwkwardSizes)
{
    for (const VexaSize& size : {VexaSize(997, 991), VexaSize(1, 4099), VexaSize(4099, 1), VexaSize(1013, 8),
                                 VexaSize(6, 1021), VexaSize(719, 541)}) {
        const VexaImage src = noise<u8>(size, 1, 10);
        std::vector<u8> pixels = download<u8>(src);
        cv::Mat values, waves;
        cv::Mat(size.height, size.width, CV_8UC1, pixels.data()).convertTo(values, CV_64F);
        cv::dft(values, waves, cv::DFT_COMPLEX_OUTPUT);
        const double* const expected = waves.ptr<double>();
        VexaImage dst;
        ASSERT_EQ(vexa::imageTransforms::fft2(src, dst), VEXA_SUCCESS);
        SCOPED_TRACE(testing::Message() << size.width << "x" << size.height);
        expectElements<f32>(
            dst, [&](std::size_t i) { return expected[i]; }, 1e-6 * expected[0]);
    }
}

}  // namespace
