/// @file
/// Statuses of transforms and of computer vision where a call of the seam fails.

#include <memory>

#include "fault.h"
#include "images.h"

namespace {

using namespace kit;
namespace cv = vexa::computerVision;
namespace fault = vexa::platform::fault;
using fault::Call;
using Feature = VexaPointValue2D<float, float>;

class VisionFaults : public testing::Test {
protected:
    void TearDown() override { fault::disarm(); }

    const VexaImage image = noise<u8>({64, 48}, 1, 1);
};

TEST_F(VisionFaults, FourierTransform)
{
    VexaImage dst(64, 48, VEXA_32FC2);
    const struct {
        Call call;
        VexaStatus status;
    } failures[] = {{Call::allocate, VEXA_MEM_ALLOC_ERR}, {Call::release, VEXA_MEMFREE_ERR}};
    for (const auto& failure : failures) {
        fault::arm(failure.call);
        EXPECT_EQ(vexa::imageTransforms::fft2(image, dst), failure.status);
    }
}

/// Pyramids drop the statuses of their levels, which stay empty.
TEST_F(VisionFaults, PyramidsWithoutMemory)
{
    VexaPyramid pyramid;
    fault::arm(Call::allocate, 2);
    EXPECT_EQ(pyramid.create(image, 3, 0.5F, VEXA_INTER_LINEAR), VEXA_SUCCESS);
    EXPECT_TRUE(pyramid[0].isInitialized());
    EXPECT_FALSE(pyramid[1].isInitialized());
    EXPECT_TRUE(pyramid[2].isInitialized());
}

/// Once there is an array for the candidates it is the caller's.
TEST_F(VisionFaults, GoodFeatures)
{
    const struct {
        Call call;
        int n;
        VexaStatus status;
        bool hasOutput;
    } failures[] = {{Call::allocate, 1, VEXA_MEM_ALLOC_ERR, false},
                    {Call::allocate, 2, VEXA_MEM_ALLOC_ERR, false},
                    {Call::setBytes, 1, VEXA_MEMSET_ERR, false},
                    {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR, true}};
    for (const auto& failure : failures) {
        Feature* output = nullptr;
        int count = 10;
        fault::arm(failure.call, failure.n);
        EXPECT_EQ(cv::goodFeaturesToTrack(image, {0, 0, 64, 48}, output, count, VexaFeaturesCriteria()),
                  failure.status);
        EXPECT_EQ(output != nullptr, failure.hasOutput);
        delete[] output;
    }
}

TEST_F(VisionFaults, TrackFeatures)
{
    const struct {
        Call call;
        int n;
        VexaStatus status;
    } failures[] = {{Call::allocate, 1, VEXA_MEM_ALLOC_ERR},
                    {Call::resize, 2, VEXA_INTERNAL_CALL_ERROR},
                    {Call::copyToDevice, 1, VEXA_MEMCPY_H2D_ERROR},
                    {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR}};
    Feature point(20, 20, 0);
    for (const auto& failure : failures) {
        Feature* tracked = nullptr;
        testing::internal::CaptureStdout();
        fault::arm(failure.call, failure.n);
        EXPECT_EQ(cv::trackFeatures(image, image, &point, tracked, 1, VexaTrackingCriteria()), failure.status);
        const std::string output = testing::internal::GetCapturedStdout();
        if (failure.call == Call::resize) {
            EXPECT_EQ(output.compare(0, 14, "NPP Error: 0 \n"), 0);
            EXPECT_NE(output.substr(14), "NPP Error: 0 \n");
        }
        delete[] tracked;
    }
}

TEST_F(VisionFaults, DenseFlow)
{
    const struct {
        Call call;
        int n;
        VexaStatus status;
    } failures[] = {{Call::pin, 1, VEXA_MEMORY_PINNING_ERROR},
                    {Call::pin, 2, VEXA_MEMORY_PINNING_ERROR},
                    {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR}};
    std::vector<float> x(64 * 48), y(64 * 48);
    for (const auto& failure : failures) {
        fault::arm(failure.call, failure.n);
        EXPECT_EQ(cv::opticalFlowPyrLKDense(image, image, x.data(), y.data(),
                                            VexaTrackingCriteria(1, VexaSize(2, 2), 1, 0.0F, 0.1F, 0.5F)),
                  failure.status);
    }
    fault::arm(Call::copyToHost);
    EXPECT_EQ(cv::opticalFlowHS(image, image, x.data(), y.data(), false, 1.0F, 1), VEXA_SUCCESS);
}

TEST_F(VisionFaults, FocusStack)
{
    const VexaImage frame = noise<u8>({32, 24}, 3, 2);
    VexaImage frames[] = {frame, frame}, sharp;
    testing::internal::CaptureStdout();
    fault::arm(Call::copyToDevice);
    EXPECT_EQ(cv::focusStack(frames, 2, sharp, VexaFilter()), VEXA_MEMCPY_H2D_ERROR);
    testing::internal::GetCapturedStdout();
    fault::arm(Call::synchronize);
    EXPECT_EQ(vexa_order_stack_32fc1(nullptr, nullptr, nullptr, 0, 0, 0, 0, 0, nullptr),
              VEXA_INTERNAL_FUNCTION_CALL_ERROR);
}

}  // namespace
