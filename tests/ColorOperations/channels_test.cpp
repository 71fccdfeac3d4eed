/// @file
/// Channels of a colour image apart and together again.

#include <array>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaChannelSeq rgb = VEXA_CHANNEL_SEQ_RGB;
constexpr VexaChannelSeq bgr = VEXA_CHANNEL_SEQ_BGR;

VexaImage withSequence(const VexaImage& image, VexaChannelSeq sequence)
{
    VexaImage result(image);
    result.setChannelSequence(sequence);
    return result;
}

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

Planes planesOf(VexaSize size, VexaType type)
{
    Planes planes;
    for (VexaImage& plane : planes) {
        EXPECT_EQ(plane.create(size, type), VEXA_SUCCESS);
        fillBuffer(plane, 0xA5);
    }
    return planes;
}

template <typename T>
void expectSplitAndMerge()
{
    for (const VexaSize& size : edgeSizes())
        for (const VexaChannelSeq sequence : {rgb, bgr}) {
            SCOPED_TRACE(testing::Message() << 8 * sizeof(T) << " bits, width " << size.width << ", " << sequence);
            const VexaImage src = withSequence(noise<T>(size, 3, 9), sequence);
            const std::vector<T> elements = download<T>(src);
            Planes planes = planesOf(size, formatOf<T>(1));
            ASSERT_EQ(split(src, planes), VEXA_SUCCESS);
            for (std::size_t c = 0; c < 3; ++c) {
                const std::size_t slot = sequence == rgb ? c : 2 - c;
                expectElements<T>(planes[c], [&](std::size_t i) { return double(elements[3 * i + slot]); });
                expectGaps(planes[c], 0xA5);
            }
            VexaImage dst = withSequence(VexaImage(size, formatOf<T>(3)), sequence);
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(merge(planes, dst), VEXA_SUCCESS);
            EXPECT_EQ(download<T>(dst), elements);
            EXPECT_EQ(dst.channelSeq(), sequence);
            expectGaps(dst, 0xA5);
        }
}

TEST(Channels, SplitAndMergeRestore)
{
    expectSplitAndMerge<u8>();
    expectSplitAndMerge<u16>();
    expectSplitAndMerge<f32>();
}

TEST(Channels, OtherSequencesDoNothing)
{
    for (const VexaChannelSeq sequence :
         {VEXA_CHANNEL_SEQ_BGRA, VEXA_CHANNEL_SEQ_RGBA, VEXA_CHANNEL_SEQ_LUMINANCE, VEXA_CHANNEL_SEQ_NONE}) {
        const VexaSize size(5, 3);
        Planes planes = planesOf(size, VEXA_8UC1);
        EXPECT_EQ(split(withSequence(constant<u8>(size, 3, 7), sequence), planes), VEXA_SUCCESS);
        for (const VexaImage& plane : planes) expectElements<u8>(plane, [](std::size_t) { return 0xA5; });
        VexaImage dst = withSequence(constant<u8>(size, 3, 7), sequence);
        EXPECT_EQ(merge(planes, dst), VEXA_SUCCESS);
        expectElements<u8>(dst, [](std::size_t) { return 7; });
    }
}

/// Created before a type is refused, without a sign.
TEST(Channels, CreateAndServeExactlyTheirTypes)
{
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const VexaImage src(5, 3, static_cast<VexaType>(t));
        const VexaType type = src.type();
        Planes planes;
        const bool splits = type == VEXA_8UC3 || type == VEXA_16UC3 || type == VEXA_32FC3;
        const VexaStatus refusal = splits ? VEXA_SUCCESS : VEXA_DEPTH_NOT_SUPPORTED_ERROR;
        EXPECT_EQ(split(src, planes), src.channels() == 3 ? refusal : VEXA_CHANNEL_NOT_SUPPORTED_ERROR) << t;
        for (const VexaImage& plane : planes)
            EXPECT_EQ(plane.type(), src.channels() == 3 ? getType(src.depth(), 1, false) : VEXA_NO_TYPE) << t;

        VexaImage dst;
        const bool merges = type == VEXA_8UC1 || type == VEXA_16UC1 || type == VEXA_32FC1;
        const VexaStatus mergeRefusal = merges ? VEXA_SUCCESS : VEXA_DEPTH_NOT_SUPPORTED_ERROR;
        EXPECT_EQ(co::channelMerge(src, src, src, dst),
                  src.channels() == 1 ? mergeRefusal : VEXA_CHANNEL_NOT_SUPPORTED_ERROR)
            << t;
        EXPECT_EQ(dst.type(), src.channels() == 1 ? getType(src.depth(), 3, false) : VEXA_NO_TYPE) << t;
    }
}

TEST(Channels, SplitChecksInOrder)
{
    const VexaImage src(5, 3, VEXA_8UC3);
    const VexaImage misfits[] = {VexaImage(4, 3, VEXA_8UC1), VexaImage(5, 4, VEXA_8UC1), VexaImage(5, 3, VEXA_16UC1)};
    for (const VexaImage& misfit : misfits)
        for (std::size_t c = 0; c < 3; ++c) {
            Planes planes;
            planes[c] = misfit;
            EXPECT_EQ(split(VexaImage(), planes), VEXA_IMAGE_NOT_INITIALIZED);
            EXPECT_EQ(split(VexaImage(5, 3, VEXA_8UC4), planes), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
            EXPECT_FALSE(planes[c == 0 ? 1 : 0].isInitialized());
            EXPECT_EQ(split(src, planes), mode);
            for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(planes[i].isInitialized(), i <= c);
            planes[c] = VexaImage(4, 3, VEXA_8UC1);
            EXPECT_EQ(split(VexaImage(5, 3, VEXA_64FC3), planes), mode) << "before the type is looked at";
        }
}

TEST(Channels, MergeChecksInOrder)
{
    const VexaImage red(5, 3, VEXA_8UC1);
    const VexaImage green(5, 3, VEXA_8UC2);
    const VexaImage narrow(4, 3, VEXA_8UC1);
    const VexaImage tall(5, 4, VEXA_8UC1);
    VexaImage dst;
    EXPECT_EQ(co::channelMerge(VexaImage(), red, red, dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::channelMerge(green, VexaImage(), red, dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::channelMerge(green, red, VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::channelMerge(green, narrow, red, dst), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    VexaImage oneChannel(4, 3, VEXA_8UC1);
    for (const VexaImage* const other : {&narrow, &tall}) {
        EXPECT_EQ(co::channelMerge(red, *other, red, oneChannel), mode);
        EXPECT_EQ(co::channelMerge(red, red, *other, oneChannel), mode);
    }
    EXPECT_FALSE(dst.isInitialized());
    EXPECT_EQ(co::channelMerge(red, red, red, oneChannel), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    for (const VexaImage& misfit :
         {VexaImage(4, 3, VEXA_8UC3), VexaImage(5, 4, VEXA_8UC3), VexaImage(5, 3, VEXA_16UC3)}) {
        VexaImage image(misfit);
        EXPECT_EQ(co::channelMerge(red, red, red, image), mode);
        EXPECT_EQ(co::channelMerge(VexaImage(5, 3, VEXA_64FC1), red, red, image), mode);
    }
    EXPECT_EQ(co::channelMerge(red, green, red, dst), VEXA_SUCCESS) << "channels of the others are not compared";
}

/// Planes are addressed by the pitch of red, and their channels go uncompared, but nothing leaves their buffers.
TEST(Channels, OtherPlanesStayInside)
{
    const VexaImage shapes[] = {VexaImage(50, 20, 8, 1),      VexaImage(50, 20, 50, 8, 1), VexaImage(50, 20, 8, 8, 1),
                                VexaImage(50, 20, 300, 8, 1), VexaImage(50, 20, 8, 2),     VexaImage(50, 20, 8, 8, 4)};
    const VexaImage src = constant<u8>({50, 20}, 3, 7);
    for (const VexaImage& red : shapes)
        for (const VexaImage& green : shapes) {
            const auto shaped = [](const VexaImage& shape, VexaImage& image) {
                (void)image.create(shape.width(), shape.height(), shape.pitch(), shape.depth(), shape.channels());
            };
            Planes planes;
            shaped(red, planes[0]);
            shaped(green, planes[1]);
            EXPECT_EQ(split(src, planes), VEXA_SUCCESS);
            VexaImage dst;
            const VexaStatus refusal = red.channels() == 1 ? VEXA_SUCCESS : VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
            EXPECT_EQ(merge(planes, dst), refusal);
            VexaImage floats(50, 20, VEXA_32FC3);
            EXPECT_EQ(co::channelMerge(VexaImage(50, 20, VEXA_32FC1), planes[0], planes[1], floats), VEXA_SUCCESS);
        }
}

TEST(Channels, Workers)
{
    const VexaSize size(67, 5);
    const VexaImage src = noise<u16>(size, 3, 9);
    const Planes planes = planesOf(size, VEXA_16UC1);
    VexaImage dst(size, VEXA_16UC3);
    const int pitch = planes[0].pitch();
    for (const VexaChannelSeq sequence : {rgb, VEXA_CHANNEL_SEQ_NONE}) {
        ASSERT_EQ(vexa_split_16u_C3(src.ptr<u16>(), planes[0].ptr<u16>(), planes[1].ptr<u16>(), planes[2].ptr<u16>(),
                                    67, 5, src.pitch(), pitch, sequence, nullptr),
                  VEXA_SUCCESS);
        ASSERT_EQ(vexa_merge_16u_C3(planes[0].ptr<u16>(), planes[1].ptr<u16>(), planes[2].ptr<u16>(), dst.ptr<u16>(),
                                    67, 5, pitch, dst.pitch(), sequence, nullptr),
                  VEXA_SUCCESS);
        EXPECT_EQ(download<u16>(dst), download<u16>(src));
    }
}

}  // namespace
