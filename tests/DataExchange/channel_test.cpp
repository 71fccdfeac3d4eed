/// @file
/// getChannel and the channels of an image by index.

#include <algorithm>
#include <climits>

#include "images.h"

namespace {

using namespace kit;
namespace de = vexa::dataExchange;

template <typename T>
void expectChannels(const VexaSize& size, int channels)
{
    const VexaImage src = noise<T>(size, channels, 1);
    const std::vector<T> x = download<T>(src);
    for (int channel = 0; channel < channels; ++channel) {
        VexaImage dst(size, formatOf<T>(1));
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(de::getChannel(src, dst, channel), VEXA_SUCCESS);
        expectElements<T>(dst, [&](auto i) { return x[i * channels + channel]; });
        expectGaps(dst, 0xA5);
        EXPECT_EQ(download<T>(src[channel]), download<T>(dst));
    }
}

TEST(GetChannel, AllTypesAndSizes)
{
    for (const VexaSize& size : edgeSizes())
        for (const int channels : {3, 4}) {
            expectChannels<u8>(size, channels);
            expectChannels<u16>(size, channels);
            expectChannels<f32>(size, channels);
        }
}

TEST(GetChannel, ChecksInOrder)
{
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool served = type == VEXA_8UC3 || type == VEXA_8UC4 || type == VEXA_16UC3 || type == VEXA_16UC4 ||
                            type == VEXA_32FC3 || type == VEXA_32FC4;
        const VexaImage src(5, 3, type);
        VexaImage dst;
        VexaImage two(5, 3, VEXA_8UC2);
        EXPECT_EQ(de::getChannel(VexaImage(), two, 0), VEXA_IMAGE_NOT_INITIALIZED);
        for (const int channel : {INT_MIN, -1, src.channels(), INT_MAX}) {
            EXPECT_EQ(de::getChannel(src, two, channel), VEXA_INVALID_ARG_ERROR) << row;
            EXPECT_EQ(de::getChannel(src, dst, channel), VEXA_INVALID_ARG_ERROR) << row;
            EXPECT_FALSE(src[channel].isInitialized());
        }
        EXPECT_FALSE(dst.isInitialized());
        EXPECT_EQ(de::getChannel(src, two, 0), VEXA_CHANNEL_NOT_SUPPORTED_ERROR) << row;
        EXPECT_EQ(de::getChannel(src, dst, 0), served ? VEXA_SUCCESS : VEXA_TYPE_NOT_SUPPORTED_ERROR) << row;
        EXPECT_EQ(dst.type(), getType(src.depth(), 1, false)) << row << ": created, even if it is refused";
        EXPECT_EQ(src[0].type(), dst.type()) << row << ": made, though it may not be written";
    }
}

/// Neither size nor depth of a destination is compared: as much as its rows hold is stored, in elements of the source.
TEST(GetChannel, DestinationOfAnotherShapeIsNotOverrun)
{
    const VexaImage src = constant<u16>({40, 30}, 3, 0x1234);
    for (const VexaType type : {VEXA_8UC1, VEXA_16SC1, VEXA_32FC1, VEXA_64FC1})
        for (const VexaSize& size : {VexaSize(7, 5), VexaSize(7, 50), VexaSize(100, 5), VexaSize(100, 50)}) {
            VexaImage dst(size, type);
            fillBuffer(dst, 0x77);
            ASSERT_EQ(de::getChannel(src, dst, 1), VEXA_SUCCESS);
            const VexaSize common(std::min(40, size.width * dst.depth() / 16), std::min(30, size.height));
            const int pitch = dst.pitch() / 2;
            std::vector<u16> buffer(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(size.height));
            ASSERT_EQ(dst.download(buffer.data()), VEXA_SUCCESS);
            for (int i = 0; i < pitch * size.height; ++i)
                ASSERT_EQ(buffer[i], i % pitch < common.width && i / pitch < common.height ? 0x1234 : 0x7777)
                    << type << ", column " << i % pitch << ", row " << i / pitch;
        }
}

}  // namespace
