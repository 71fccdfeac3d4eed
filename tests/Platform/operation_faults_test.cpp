/// @file
/// Statuses of geometry and filters where a call of the seam fails.

#include "fault.h"
#include "images.h"

namespace {

using namespace kit;
namespace gt = vexa::geometryTransforms;
namespace filtering = vexa::imageFiltering;
namespace fault = vexa::platform::fault;
using fault::Call;

class OperationFaults : public testing::Test {
protected:
    void TearDown() override { fault::disarm(); }
};

/// The old image is smaller than what would be written.
TEST_F(OperationFaults, RotateNoCropKeepsWhatCannotBeFreed)
{
    const VexaImage src = noise<f32>({64, 64}, 3, 1);
    VexaImage dst = constant<u8>({64, 64}, 1, 9);
    fault::arm(Call::release);
    EXPECT_EQ(gt::rotateNoCrop(src, dst, 5.0F), VEXA_MEM_ALLOC_ERR);
    EXPECT_EQ(download<u8>(dst), std::vector<u8>(64 * 64, 9));
    fault::arm(Call::allocate);
    EXPECT_EQ(gt::rotateNoCrop(src, dst, 5.0F), VEXA_MEM_ALLOC_ERR);
}

TEST_F(OperationFaults, GeometryOfTheSeam)
{
    const VexaImage src = noise<u8>({16, 16}, 1, 2);
    VexaImage dst = constant<u8>({8, 8}, 1, 9);
    fault::arm(Call::resize);
    EXPECT_EQ(gt::resize(src, dst, VEXA_INTER_LINEAR), VEXA_INTERNAL_CALL_ERROR);
    double identity[2][3] = {{1, 0, 0}, {0, 1, 0}};
    fault::arm(Call::warp);
    EXPECT_EQ(gt::warpAffine(src, dst, identity, VEXA_INTER_LINEAR), VEXA_INTERNAL_CALL_ERROR);
    EXPECT_EQ(download<u8>(dst), std::vector<u8>(64, 0));
    VexaImage transposed(16, 16, VEXA_8UC1);
    fault::arm(Call::transpose);
    EXPECT_EQ(gt::transpose(src, transposed), VEXA_SUCCESS);
    VexaImage frame;
    fault::arm(Call::statistic);
    EXPECT_NE(gt::taper(src, frame, 1, 1, 1, 1), VEXA_SUCCESS);
}

/// A destination that cannot be addressed by the pitch of the source needs a temporary image. Without one nothing is
/// written, and the status is that of the arguments.
TEST_F(OperationFaults, FiltersWithoutTheirTemporary)
{
    const VexaImage src = noise<u8>({33, 10}, 1, 3);
    VexaImage narrow(33, 10, 33, 8, 1);
    fault::arm(Call::allocate);
    EXPECT_EQ(filtering::minFilter(src, narrow, {-1, 0, 3, 3}, {3, 3}), VEXA_INVALID_ROI_ERROR);
    fault::arm(Call::allocate);
    EXPECT_EQ(filtering::medianFilter(src, narrow, {0, 0, 1, 1}, {2, 2}), VEXA_NOT_SUPPORTED_MODE_ERROR);
    fault::arm(Call::allocate);
    EXPECT_EQ(filtering::imageFilter(src, narrow, VexaFilter(3, 3)), VEXA_SUCCESS);
}

TEST_F(OperationFaults, MinimumInPlace)
{
    VexaImage image = noise<u8>({33, 10}, 1, 4);
    const std::vector<u8> before = download<u8>(image);
    const struct {
        Call call;
        VexaStatus status;
    } failures[] = {{Call::allocate, VEXA_MEM_ALLOC_ERR}, {Call::copyOnDevice, VEXA_MEMCPY_D2A_ERROR}};
    for (const auto& failure : failures) {
        fault::arm(failure.call);
        EXPECT_EQ(filtering::minFilter(image, image, {0, 0, 33, 10}, {3, 3}), failure.status);
        fault::disarm();
        EXPECT_EQ(download<u8>(image), before);
    }
    VexaImage dst(33, 10, VEXA_8UC1);
    fault::arm(Call::copyOnDevice);
    EXPECT_EQ(filtering::minFilter(image, dst, {1, 1, 3, 3}, {3, 3}), VEXA_MEMCPY_ERROR);
}

TEST_F(OperationFaults, FilterWithoutMemory)
{
    fault::arm(Call::allocatePinned);
    EXPECT_FALSE(VexaFilter(3, 3).isInitialized());
    fault::arm(Call::allocatePinned);
    EXPECT_FALSE(VexaSpecialFilters::gaussian({5, 5}, 1.0F).isInitialized());
}

}  // namespace
