/// @file
/// What statistics and matrix operations answer when a step of theirs fails, and what stays allocated then.

#include <functional>
#include <vector>

#include "../Core/transfers.h"
#include "fault.h"
#include "memory.h"
#include "platform.h"

namespace platform = vexa::platform;
namespace fault = platform::fault;
namespace al = vexa::arithmeticLogical;
namespace st = vexa::imageStatistics;
using fault::Call;

namespace {

/// A step that fails, by the kind of call and its number, the status it means, and the blocks that are left behind.
struct Step {
    Call call;
    int n;
    VexaStatus status;
    std::size_t left;
};

/// Runs the operation once for each step that fails, and once unharmed. What it leaves allocated is its contract, and
/// can't be released any more.
void expectSteps(const char* operation, const std::function<VexaStatus()>& run, const std::vector<Step>& steps)
{
    SCOPED_TRACE(operation);
    for (const Step& step : steps) {
        SCOPED_TRACE(testing::Message() << "call " << static_cast<int>(step.call) << ", number " << step.n);
        const std::size_t before = platform::liveAllocations();
        fault::arm(step.call, step.n);
        EXPECT_EQ(run(), step.status);
        EXPECT_FALSE(fault::strikes(step.call)) << "there was no such call";
        fault::disarm();
        EXPECT_EQ(platform::liveAllocations() - before, step.left);
    }
    const std::size_t before = platform::liveAllocations();
    EXPECT_EQ(run(), VEXA_SUCCESS);
    EXPECT_EQ(platform::liveAllocations(), before);
}

class StatisticsFaults : public testing::Test {
protected:
    void SetUp() override { fault::disarm(); }
    void TearDown() override { fault::disarm(); }

    const VexaImage image = kit::noise<kit::u8>({67, 5}, 3, 1);
    const VexaImage floats = kit::noise<kit::f32>({67, 5}, 3, 1);
    VexaScalar first;
    VexaScalar second;
};

TEST_F(StatisticsFaults, Reductions)
{
    const auto stepsWith = [](VexaStatus primitive) {
        return std::vector<Step>{{Call::scratchSize, 1, primitive, 0},
                                 {Call::allocate, 1, VEXA_MEM_ALLOC_ERR, 0},
                                 {Call::allocate, 2, VEXA_MEM_ALLOC_ERR, 1},
                                 {Call::statistic, 1, primitive, 2},
                                 {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR, 2},
                                 {Call::release, 1, VEXA_MEMFREE_ERR, 1},
                                 {Call::release, 2, VEXA_MEMFREE_ERR, 1}};
    };
    expectSteps(
        "sum", [&] { return st::sum(image, first); }, stepsWith(VEXA_INTERNAL_CALL_ERROR));
    expectSteps(
        "max", [&] { return st::max(image, first); }, stepsWith(VEXA_INTERNAL_CALL_ERROR));
    expectSteps(
        "norm", [&] { return st::norm(image, first); }, stepsWith(VEXA_INTERNAL_FUNCTION_CALL_ERROR));
    expectSteps("minMax", [&] { return st::minMax(image, first, second); },
                {{Call::scratchSize, 1, VEXA_INTERNAL_CALL_ERROR, 0},
                 {Call::allocate, 1, VEXA_MEM_ALLOC_ERR, 0},
                 {Call::allocate, 2, VEXA_MEM_ALLOC_ERR, 1},
                 {Call::allocate, 3, VEXA_MEM_ALLOC_ERR, 2},
                 {Call::statistic, 1, VEXA_INTERNAL_CALL_ERROR, 3},
                 {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR, 3},
                 {Call::copyToHost, 2, VEXA_MEMCPY_D2H_ERROR, 3},
                 {Call::release, 3, VEXA_MEMFREE_ERR, 1}});
}

TEST_F(StatisticsFaults, MeanStdDev)
{
    const VexaImage mask = kit::constant<kit::u8>({67, 5}, 1, 1);
    const std::vector<Step> steps = {{Call::scratchSize, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 0},
                                     {Call::allocate, 1, VEXA_MEM_ALLOC_ERR, 0},
                                     {Call::allocate, 2, VEXA_MEM_ALLOC_ERR, 1},
                                     {Call::allocate, 3, VEXA_MEM_ALLOC_ERR, 2},
                                     {Call::statistic, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 3},
                                     {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR, 3},
                                     {Call::copyToHost, 2, VEXA_MEMCPY_D2H_ERROR, 3},
                                     {Call::release, 1, VEXA_MEMFREE_ERR, 1}};
    expectSteps(
        "meanStdDev", [&] { return st::meanStdDev(image, first, second); }, steps);
    expectSteps(
        "masked", [&] { return st::meanStdDev(image, first, second, mask); }, steps);
}

/// Of what comes before the primitive no status is looked at; a primitive without its blocks fails.
TEST_F(StatisticsFaults, CountInRange)
{
    expectSteps("countInRange", [&] { return st::countInRange(image, first, VexaScalar(1), VexaScalar(9)); },
                {{Call::scratchSize, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 1},
                 {Call::allocate, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 1},
                 {Call::allocate, 2, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 1},
                 {Call::statistic, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 2},
                 {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR, 2},
                 {Call::release, 1, VEXA_MEMFREE_ERR, 1},
                 {Call::release, 2, VEXA_MEMFREE_ERR, 1}});
}

TEST_F(StatisticsFaults, Dot)
{
    expectSteps("dot", [&] { return al::dot(floats, floats, first); },
                {{Call::allocate, 1, VEXA_MEM_ALLOC_ERR, 0},
                 {Call::allocate, 2, VEXA_MEMCPY_D2H_ERROR, 1},
                 {Call::copyToHost, 1, VEXA_MEMCPY_D2H_ERROR, 2},
                 {Call::release, 1, VEXA_MEMFREE_ERR, 1}});
    // What goes unreported leaves a result of 0.
    for (const Call call : {Call::scratchSize, Call::statistic}) {
        first[0] = 5;
        fault::arm(call);
        EXPECT_EQ(al::dot(floats, floats, first), VEXA_SUCCESS);
        EXPECT_EQ(first[0], 0);
    }
}

TEST_F(StatisticsFaults, ScalarsWithoutMemory)
{
    fault::arm(Call::allocatePinned);
    VexaScalar none;
    EXPECT_EQ(st::sum(image, none), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(st::max(image, none), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(st::minMax(image, first, none), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(st::meanStdDev(image, first, none), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(al::dot(floats, floats, none), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(st::countInRange(image, none, VexaScalar(1), VexaScalar(9)), VEXA_SUCCESS);
}

/// The worker's early returns leave pivots, info and the address of the matrix behind, later the inverse's too.
TEST_F(StatisticsFaults, Invert)
{
    VexaImage matrix(2, 2, 8, 32, 1);
    kit::upload<kit::f32>(matrix, {2, 1, 1, 3});
    VexaImage inverse(2, 2, VEXA_32FC1);
    expectSteps("invert", [&] { return al::invert(matrix, inverse); },
                {{Call::allocate, 1, VEXA_MEM_ALLOC_ERR, 0},
                 {Call::allocate, 2, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 2},
                 {Call::allocate, 3, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 2},
                 {Call::allocate, 4, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 2},
                 {Call::luFactor, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 3},
                 {Call::allocate, 5, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 3},
                 {Call::luInvert, 1, VEXA_INTERNAL_FUNCTION_CALL_ERROR, 4}});
    const std::size_t before = platform::liveAllocations();
    kit::upload<kit::f32>(matrix, {1, 2, 2, 4});
    EXPECT_EQ(al::invert(matrix, inverse), VEXA_SINGULAR_MATRIX_ERROR);
    EXPECT_EQ(platform::liveAllocations() - before, 3U);
    VexaImage fresh;
    fault::arm(Call::allocate);
    EXPECT_EQ(al::invert(matrix, fresh), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
    kit::expectEmpty(fresh);
    // An address that could not be written is no address.
    fault::arm(Call::copyToDevice);
    EXPECT_EQ(al::invert(matrix, inverse), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
}

/// Products without memory for their result do nothing.
TEST_F(StatisticsFaults, Products)
{
    const VexaImage a = kit::constant<kit::f32>({3, 3}, 1, 1);
    const std::function<VexaStatus(VexaImage&)> operations[] = {
        [&](VexaImage& result) { return al::matMul(a, a, result); },
        [&](VexaImage& result) { return al::matMulTrans(a, result, true); },
        [&](VexaImage& result) { return al::inRange(a, 0, 1, result); }};
    for (const auto& operate : operations) {
        VexaImage result;
        fault::arm(Call::allocate);
        EXPECT_EQ(operate(result), VEXA_SUCCESS);
        kit::expectEmpty(result);
    }
}

/// Nothing of a histogram's statuses is looked at: it is initialised without bins, and counting does nothing.
TEST_F(StatisticsFaults, Histograms)
{
    const std::size_t before = platform::liveAllocations();
    {
        fault::arm(Call::allocate);
        VexaHistogram onDevice(VEXA_8UC3, VEXA_PTR_DEVICE);
        fault::arm(Call::allocatePinned);
        VexaHistogram pinned(VEXA_8UC3, VEXA_PTR_HOST_PAGE_LOCKED);
        for (VexaHistogram* const hist : {&onDevice, &pinned}) {
            EXPECT_TRUE(hist->isInitialized());
            EXPECT_EQ(hist->hist(), nullptr);
            EXPECT_EQ(st::calcHist(image, *hist), VEXA_SUCCESS);
        }
        VexaHistogram onHost;
        fault::arm(Call::allocate);
        EXPECT_EQ(st::calcHist(image, onHost), VEXA_SUCCESS);
        EXPECT_EQ(onHost.hist()[0], 0U);
        EXPECT_EQ(st::calcHist(VexaImage(3, 2, VEXA_8UC2), onHost), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    }
    EXPECT_EQ(platform::liveAllocations(), before);
}

}  // namespace
