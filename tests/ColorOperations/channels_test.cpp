/// @file
/// Channels of a colour image apart and together again.

#include <array>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus badDepth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badChannels = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;

/// Red, green, blue.
using Planes = std::array<VexaImage, 3>;

VexaStatus split(const VexaImage& src, Planes& planes)
{
    return co::channelSplit(src, planes[0], planes[1], planes[2]);
}

VexaStatus merge(const Planes& planes, VexaImage& dst)
{
    return co::channelMerge(planes[0], planes[1], planes[2], dst);
}

/// Both ways, in every sequence: those that are not served leave the marks where they are.
template <typename T>
void expectSplitAndMerge(VexaSize size, VexaChannelSeq sequence)
{
    SCOPED_TRACE(testing::Message() << 8 * sizeof(T) << " bits, width " << size.width << ", sequence " << sequence);
    VexaImage src = noise<T>(size, 3, 9);
    src.setChannelSequence(sequence);
    Planes planes;
    for (VexaImage& plane : planes) {
        ASSERT_EQ(plane.create(size, formatOf<T>(1)), success);
        fillBuffer(plane, 0xA5);
    }
    VexaImage dst(size, formatOf<T>(3));
    dst.setChannelSequence(sequence);
    fillBuffer(dst, 0xA5);
    const std::vector<T> elements = download<T>(src);
    const std::vector<T> untouched = download<T>(dst);
    const bool isServed = sequence == VEXA_CHANNEL_SEQ_RGB || sequence == VEXA_CHANNEL_SEQ_BGR;

    ASSERT_EQ(split(src, planes), success);
    for (std::size_t c = 0; c < 3; ++c) {
        const std::size_t slot = sequence == VEXA_CHANNEL_SEQ_RGB ? c : 2 - c;
        expectElements<T>(planes[c],
                          [&](std::size_t i) { return double(isServed ? elements[3 * i + slot] : untouched[0]); });
        expectGaps(planes[c], 0xA5);
    }
    ASSERT_EQ(merge(planes, dst), success);
    EXPECT_EQ(download<T>(dst), isServed ? elements : untouched);
    EXPECT_EQ(dst.channelSeq(), sequence);
    expectGaps(dst, 0xA5);
}

TEST(Channels, SplitAndMergeRestore)
{
    for (const VexaSize& size : edgeSizes())
        for (int s = VEXA_CHANNEL_SEQ_RGB; s <= VEXA_CHANNEL_SEQ_NONE; ++s) {
            expectSplitAndMerge<u8>(size, static_cast<VexaChannelSeq>(s));
            expectSplitAndMerge<u16>(size, static_cast<VexaChannelSeq>(s));
            expectSplitAndMerge<f32>(size, static_cast<VexaChannelSeq>(s));
        }
}

/// Created before a type is refused, without a sign.
TEST(Channels, CreateAndServeExactlyTheirTypes)
{
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const VexaImage src(5, 3, static_cast<VexaType>(t));
        const int channels = src.channels();
        const bool isServed = src.type() == getType(src.depth(), channels, false) && src.depth() < 64;
        Planes planes;
        VexaImage dst;
        EXPECT_EQ(split(src, planes), channels != 3 ? badChannels : isServed ? success : badDepth) << t;
        EXPECT_EQ(co::channelMerge(src, src, src, dst), channels != 1 ? badChannels
                                                        : isServed    ? success
                                                                      : badDepth)
            << t;
        for (const VexaImage& plane : planes)
            EXPECT_EQ(plane.type(), channels == 3 ? getType(src.depth(), 1, false) : VEXA_NO_TYPE) << t;
        EXPECT_EQ(dst.type(), channels == 1 ? getType(src.depth(), 3, false) : VEXA_NO_TYPE) << t;
    }
}

TEST(Channels, CheckInOrder)
{
    const VexaImage color(5, 3, VEXA_8UC3);
    const VexaImage plane(5, 3, VEXA_8UC1);
    const VexaImage pair(5, 3, VEXA_8UC2);
    const VexaSize other[] = {VexaSize(4, 3), VexaSize(5, 4), VexaSize(5, 3)};
    for (const VexaSize& size : other) {
        const int depth = size.width == 5 && size.height == 3 ? 16 : 8;
        for (std::size_t c = 0; c < 3; ++c) {
            Planes planes;
            ASSERT_EQ(planes[c].create(size, depth, 1), success);
            EXPECT_EQ(split(VexaImage(), planes), VEXA_IMAGE_NOT_INITIALIZED);
            EXPECT_EQ(split(pair, planes), badChannels);
            EXPECT_FALSE(planes[c == 0 ? 1 : 0].isInitialized());
            EXPECT_EQ(split(VexaImage(5, 3, VEXA_64FC3), planes), mode) << "before the type is looked at";
            for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(planes[i].isInitialized(), i <= c) << "earlier ones stay";
        }
        VexaImage dst(size, depth, 3);
        VexaImage oneChannel(size, depth, 1);
        EXPECT_EQ(co::channelMerge(plane, plane, plane, dst), mode);
        EXPECT_EQ(co::channelMerge(plane, plane, plane, oneChannel), badChannels);
        if (depth == 16) continue;
        EXPECT_EQ(co::channelMerge(pair, oneChannel, plane, oneChannel), badChannels);
        EXPECT_EQ(co::channelMerge(plane, oneChannel, plane, oneChannel), mode);
        EXPECT_EQ(co::channelMerge(plane, plane, oneChannel, oneChannel), mode);
    }
    VexaImage dst;
    EXPECT_EQ(co::channelMerge(VexaImage(), pair, pair, dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::channelMerge(pair, VexaImage(), pair, dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::channelMerge(pair, pair, VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(dst.isInitialized());
    EXPECT_EQ(co::channelMerge(plane, pair, plane, dst), success) << "the channels of red alone are compared";
}

/// Planes are addressed by the pitch of red, and their channels go uncompared, but nothing leaves their buffers.
TEST(Channels, OtherPlanesStayInside)
{
    const VexaImage src = constant<u8>({50, 20}, 3, 7);
    const std::pair<int, int> shapes[] = {{50, 1}, {8, 1}, {300, 1}, {100, 2}, {8, 4}};  // pitch and channels
    for (const auto& red : shapes)
        for (const auto& green : shapes) {
            Planes planes;
            ASSERT_EQ(planes[0].create(50, 20, red.first, 8, red.second), success);
            ASSERT_EQ(planes[1].create(50, 20, green.first, 8, green.second), success);
            EXPECT_EQ(split(src, planes), success);
            VexaImage dst;
            EXPECT_EQ(merge(planes, dst), red.second == 1 ? success : badChannels);
            VexaImage floats;
            EXPECT_EQ(co::channelMerge(VexaImage(50, 20, VEXA_32FC1), planes[0], planes[1], floats), success);
        }
}

TEST(Channels, Workers)
{
    const VexaImage src = noise<u16>({67, 5}, 3, 9);
    const VexaImage red(67, 5, VEXA_16UC1);
    const VexaImage green(red);
    const VexaImage blue(red);
    const VexaImage dst(67, 5, VEXA_16UC3);
    for (const VexaChannelSeq sequence : {VEXA_CHANNEL_SEQ_BGR, VEXA_CHANNEL_SEQ_NONE}) {
        ASSERT_EQ(vexa_split_16u_C3(src.ptr<u16>(), red.ptr<u16>(), green.ptr<u16>(), blue.ptr<u16>(), 67, 5,
                                    src.pitch(), red.pitch(), sequence, nullptr),
                  success);
        ASSERT_EQ(vexa_merge_16u_C3(red.ptr<u16>(), green.ptr<u16>(), blue.ptr<u16>(), dst.ptr<u16>(), 67, 5,
                                    red.pitch(), dst.pitch(), sequence, nullptr),
                  success);
        EXPECT_EQ(download<u16>(dst), download<u16>(src));
    }
}

}  // namespace
