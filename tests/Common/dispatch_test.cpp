/// @file
/// The call frame apart from any operation: type tables, checks, and how many rows kernels may address.

#include "dispatch.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "arguments.h"
#include "checks.h"
#include "images.h"

namespace vexa {

/// A second name for bytes, so that two rows of a table can match one image.
struct Alias {};

template <>
struct Element<Alias> : Element<u8> {};

}  // namespace vexa

using namespace vexa;

namespace {

template <typename T>
const char* const nameOf = std::is_same_v<T, Alias> ? "alias"
                           : std::is_same_v<T, u8>  ? "u8"
                           : std::is_same_v<T, u16> ? "u16"
                                                    : "f32";

/// Writes down what it is called with.
struct Recorder {
    std::string& calls;

    template <int C, typename... T>
    void operator()(ChannelCount<C>, Row<T...>) const
    {
        calls += std::to_string(C);
        ((calls += std::string(" ") + nameOf<T>), ...);
        calls += ";";
    }
};

struct Answering {
    VexaStatus status;

    template <int C, typename... T>
    VexaStatus operator()(ChannelCount<C>, Row<T...>) const
    {
        return status;
    }
};

using Pairs = Table<Row<u8, u8>, Row<Alias, u8>, Row<u8, f32>, Row<Alias, u16>, Row<u8, u16>>;

TEST(Dispatch, CallsTheFirstRowThatMatches)
{
    struct Case {
        VexaType first, second;
        std::string calls;
    };
    const Case cases[] = {
        {VEXA_8UC1, VEXA_8UC1, "1 u8 u8;"},   {VEXA_8UC3, VEXA_8UC3, "3 u8 u8;"},
        {VEXA_8UC3, VEXA_32FC3, "3 u8 f32;"}, {VEXA_8UC1, VEXA_16UC1, "1 alias u16;"},
        {VEXA_8UC4, VEXA_8UC4, ""},           {VEXA_8UC1, VEXA_8UC3, ""},
        {VEXA_16UC1, VEXA_8UC1, ""},          {VEXA_8SC1, VEXA_8SC1, ""},
        {VEXA_32FC1, VEXA_32FC1, ""},
    };
    for (const Case& row : cases) {
        const VexaImage first(4, 4, row.first);
        const VexaImage second(4, 4, row.second);
        std::string calls;
        const VexaStatus status = dispatch(Pairs{}, Channels<3, 1>{}, VEXA_SIZE_ERROR, Recorder{calls}, first, second);
        EXPECT_EQ(calls, row.calls) << row.first << ", " << row.second;
        EXPECT_EQ(status, row.calls.empty() ? VEXA_SIZE_ERROR : VEXA_SUCCESS) << row.first << ", " << row.second;
    }
}

TEST(Dispatch, CarriesOutTheStatusOfTheWork)
{
    const VexaImage bytes(4, 4, VEXA_8UC1);
    const VexaImage empty;
    for (const VexaStatus status :
         {VEXA_SUCCESS, VEXA_SINGULAR_MATRIX_ERROR, VEXA_WARP_AFFINE_INCORRECT_QUAD_WARNING}) {
        EXPECT_EQ(dispatch(Pairs{}, Channels<1>{}, VEXA_SIZE_ERROR, Answering{status}, bytes, bytes), status);
        EXPECT_EQ(dispatch(Pairs{}, Channels<1>{}, VEXA_SIZE_ERROR, Answering{status}, bytes, empty), VEXA_SIZE_ERROR);
    }
}

TEST(Checks, MatchGivesTheStatusOfTheFirstDifference)
{
    const VexaImage model(8, 6, VEXA_8UC3);
    const auto compare = [&model](const VexaImage& image) {
        return match(
            image, model,
            {same::height.giving(VEXA_SIZE_ERROR), same::width, same::channels.giving(VEXA_CHANNEL_NOT_SUPPORTED_ERROR),
             same::type.giving(VEXA_DEPTH_NOT_SUPPORTED_ERROR)});
    };
    EXPECT_EQ(compare(VexaImage(8, 6, VEXA_8UC3)), VEXA_SUCCESS);
    EXPECT_EQ(compare(VexaImage(9, 7, VEXA_16UC1)), VEXA_SIZE_ERROR);
    EXPECT_EQ(compare(VexaImage(9, 6, VEXA_16UC1)), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(compare(VexaImage(8, 6, VEXA_16UC1)), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(compare(VexaImage(8, 6, VEXA_8SC3)), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(match(VexaImage(9, 7, VEXA_16UC1), model, {}), VEXA_SUCCESS);
    EXPECT_EQ(same::width.status, VEXA_NOT_SUPPORTED_MODE_ERROR) << "giving() must leave its comparison alone";
}

TEST(Checks, MatchOrCreateKeepsWhatIsThereAndCreatesWhatIsNot)
{
    const VexaImage model(8, 6, VEXA_8UC3);
    VexaImage dst(8, 7, VEXA_16UC1);
    const void* const buffer = dst.ptr();
    EXPECT_EQ(
        matchOrCreate(dst, model, {same::width, same::height.giving(VEXA_SIZE_ERROR)}, model.size(), model.type()),
        VEXA_SIZE_ERROR);
    EXPECT_EQ(matchOrCreate(dst, model, {same::width}, model.size(), model.type()), VEXA_SUCCESS);
    EXPECT_EQ(dst.ptr(), buffer);
    EXPECT_EQ(dst.type(), VEXA_16UC1);
    EXPECT_EQ(dst.height(), 7);

    VexaImage empty;
    EXPECT_EQ(matchOrCreate(empty, model, {same::type}, VexaSize(3, 2), 16, 4), VEXA_SUCCESS);
    EXPECT_EQ(empty.type(), VEXA_16UC4);
    EXPECT_EQ(empty.width(), 3);
    EXPECT_EQ(empty.height(), 2);

    VexaImage impossible;
    EXPECT_EQ(matchOrCreate(impossible, model, {same::type}, VexaSize(0, 2), 16, 4), VEXA_SUCCESS);
    EXPECT_FALSE(impossible.isInitialized());
}

/// Worked out by hand: a row counts if all its bytes lie inside the buffer.
TEST(RowsInside, CountsWholeRowsOfTheBuffer)
{
    struct Case {
        int width, height, ownPitch;  ///< of an 8-bit image
        long long rows, rowBytes, pitch;
        int expected;
    };
    const Case cases[] = {
        {10, 4, 16, 4, 10, 16, 4},   // its own layout
        {10, 4, 16, 9, 10, 16, 4},   // and no more than it holds
        {10, 4, 16, 4, 10, 512, 1},  // 64 bytes
        {10, 4, 16, 4, 10, 27, 3},   // bytes 0, 27 and 54 to 63
        {10, 4, 16, 4, 11, 27, 2},   // one byte more
        {10, 4, 16, 3, 64, 0, 3},    // all rows lie on the first
        {10, 4, 16, 3, 65, 0, 0},          {10, 4, 16, 3, 65, 16, 0},
        {100, 3, 16, 3, 100, 16, 3},  // rows longer than the pitch: 132 bytes
        {100, 3, 16, 3, 100, 33, 1},       {100, 3, 16, 3, 100, 32, 2},
        {10, 4, 16, 4, 10, 2147483647, 1},
    };
    for (const Case& row : cases) {
        const VexaImage image(row.width, row.height, row.ownPitch, 8, 1);
        EXPECT_EQ(rowsInside(image, row.rows, row.rowBytes, row.pitch), row.expected)
            << row.width << "x" << row.height << ": " << row.rows << " rows of " << row.rowBytes << " by " << row.pitch;
    }
}

TEST(RowsInside, TakesTheLayoutOfAnotherImage)
{
    const VexaImage narrow(10, 4, 32, 16, 1);  // 128 bytes
    EXPECT_EQ(rowsInside(narrow, VexaImage(10, 4, 32, 16, 1)), 4);
    EXPECT_EQ(rowsInside(narrow, VexaImage(10, 4, 20, 16, 1)), 4);
    EXPECT_EQ(rowsInside(narrow, VexaImage(10, 4, 54, 16, 1)), 3);  // 108 + 20
    EXPECT_EQ(rowsInside(narrow, VexaImage(10, 4, 56, 16, 1)), 2);
    EXPECT_EQ(rowsInside(VexaImage(10, 4, 56, 16, 1), narrow), 4);
}

}  // namespace
