/// @file
/// V210, packed and unpacked.

#include <algorithm>
#include <array>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus success = VEXA_SUCCESS;

/// A flat run of packed bytes in rows of this many.
VexaImage packedImage(int rowBytes, int height)
{
    VexaImage image(rowBytes, height, rowBytes, 8, 1);
    fillBuffer(image, 0);
    return image;
}

VexaImage packedWords(const std::vector<Vexa32u>& words)
{
    VexaImage image = packedImage(static_cast<int>(4 * words.size()), 1);
    EXPECT_EQ(image.upload(words.data()), success);
    return image;
}

std::vector<Vexa32u> wordsOf(const VexaImage& packed)
{
    std::vector<Vexa32u> words(static_cast<std::size_t>(packed.width()) * static_cast<std::size_t>(packed.height()) /
                               4);
    EXPECT_EQ(packed.download(words.data()), success);
    return words;
}

/// Where a group of six pixels holds the sample of a slot: Y, Cr, Cb. Chroma stands at even pixels.
struct Field {
    std::size_t pixel;
    std::size_t slot;
    std::size_t word;
    int shift;
};
const Field fields[] = {{0, 2, 0, 0}, {0, 0, 0, 10}, {0, 1, 0, 20}, {1, 0, 1, 0}, {2, 2, 1, 10}, {2, 0, 1, 20},
                        {2, 1, 2, 0}, {3, 0, 2, 10}, {4, 2, 2, 20}, {4, 0, 3, 0}, {4, 1, 3, 10}, {5, 0, 3, 20}};

TEST(V210, EveryFieldHasItsPlace)
{
    for (const Field& field : fields) {
        SCOPED_TRACE(testing::Message() << "pixel " << field.pixel << ", slot " << field.slot);
        std::vector<Vexa32u> words(4, 0);
        words[field.word] = 0x2F5U << field.shift;
        std::vector<u16> pixels(18, 0);
        pixels[3 * field.pixel + field.slot] = 0x2F5;
        if (field.slot != 0) pixels[3 * field.pixel + 3 + field.slot] = 0x2F5;
        std::vector<u16> samples(12, 0);
        samples[static_cast<std::size_t>(&field - fields)] = 0x2F5;

        std::vector<Vexa32u> unusedBits(words);
        for (Vexa32u& word : unusedBits) word |= 0xC0000000;
        VexaImage dst(6, 1, VEXA_16UC3);
        ASSERT_EQ(co::V210TOYUV444(packedWords(unusedBits), dst), success);
        EXPECT_EQ(download<u16>(dst), pixels);

        for (const std::size_t odd : {3, 9, 15}) pixels[odd + 1] = pixels[odd + 2] = 0x3FF;  // not read
        VexaImage packed = packedImage(16, 1);
        ASSERT_EQ(co::YUV444TOV210(imageOf<u16>({6, 1}, 3, pixels), packed), success);
        EXPECT_EQ(wordsOf(packed), words);
        fillBuffer(packed, 0xA5);
        ASSERT_EQ(co::YUV422TOV210(rowOf<u16>(samples), packed), success);
        EXPECT_EQ(wordsOf(packed), words);
    }
}

TEST(V210, LargeSamplesCarry)
{
    VexaImage packed = packedImage(16, 1);
    ASSERT_EQ(co::YUV422TOV210(rowOf<u16>({1024, 0, 0, 0, 1025, 1, 0, 0, 1024, 65535, 1023, 0}), packed), success);
    EXPECT_EQ(wordsOf(packed),
              (std::vector<Vexa32u>{1 << 10, (1025 << 10) + (1 << 20), 1 << 30, 65535 + (1023 << 10)}));
    ASSERT_EQ(co::YUV444TOV210(imageOf<u16>({2, 1}, 3, {0, 0, 1024, 0, 0, 0}), packed), success);
    EXPECT_EQ(wordsOf(packed), (std::vector<Vexa32u>{1 << 10, 0, 0, 0}));
}

/// There and back: Y comes back exactly, the chroma of the even pixel in both of a pair. An odd last column is left
/// out. Rows of the flat run follow each other without a gap, wherever they end in a group.
TEST(V210, RoundTrip)
{
    for (const VexaSize& size : {VexaSize(6, 1), VexaSize(6, 17), VexaSize(48, 3), VexaSize(1920, 1100), VexaSize(8, 3),
                                 VexaSize(7, 2), VexaSize(5, 6), VexaSize(2, 1), VexaSize(1, 4)}) {
        SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
        std::vector<u16> elements = download<u16>(noise<u16>(size, 3, 11));
        for (u16& element : elements) element = static_cast<u16>(element >> 6);
        std::vector<u16> pixels(elements);
        std::vector<u16> linear;
        const auto width = static_cast<std::size_t>(size.width);
        for (std::size_t i = 0; i < pixels.size(); i += 3) {
            const std::size_t x = i / 3 % width;
            if (x == width - 1 && width % 2 == 1)
                pixels[i] = pixels[i + 1] = pixels[i + 2] = 0xA5A5;
            else if (x % 2 == 0)
                linear.insert(linear.end(), {pixels[i + 2], pixels[i], pixels[i + 1], pixels[i + 3]});
            else
                std::copy_n(&pixels[i - 2], 2, &pixels[i + 1]);
        }
        // Of a width that does not fill groups, rows of which all hold some bytes too many.
        VexaImage packed = packedImage((size.width + 5) / 6 * 16, size.height);
        ASSERT_EQ(co::YUV444TOV210(imageOf<u16>(size, 3, elements), packed), success);
        for (const int padding : {0, 26}) {
            VexaImage dst(size.width, size.height, 6 * size.width + padding, 16, 3);
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(co::V210TOYUV444(packed, dst), success);
            EXPECT_EQ(download<u16>(dst), pixels);
            expectGaps(dst, 0xA5);
            VexaImage again = packedImage(packed.width(), size.height);
            ASSERT_EQ(co::YUV444TOV210(dst, again), success);
            EXPECT_EQ(wordsOf(again), wordsOf(packed));
        }
        if (size.width % 6 != 0) continue;
        VexaImage src(size.width, size.height, 4 * size.width, 16, 2);
        upload(src, linear);
        VexaImage flat = packedImage(packed.width(), size.height);
        ASSERT_EQ(co::YUV422TOV210(src, flat), success);
        EXPECT_EQ(wordsOf(flat), wordsOf(packed));
    }
}

TEST(V210, Statuses)
{
    const VexaImage src = packedImage(16, 1);
    VexaImage empty;
    VexaImage bytes(6, 1, VEXA_8UC3);
    VexaImage words(1920, 1100, VEXA_16UC3);
    EXPECT_EQ(co::V210TOYUV444(VexaImage(), bytes), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::V210TOYUV444(src, bytes), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(co::V210TOYUV444(src, empty), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    for (const auto pack : {co::YUV444TOV210, co::YUV422TOV210}) {
        EXPECT_EQ(pack(VexaImage(), words, VexaStream(false)), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(pack(bytes, words, VexaStream(false)), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
        EXPECT_EQ(pack(words, empty, VexaStream(false)), success);
    }
    EXPECT_FALSE(empty.isInitialized());
}

/// A source that ends early leaves 0 in what it does not reach. The run has as many rows as the 4:2:2 image.
TEST(V210, RunsEnd)
{
    VexaImage dst(12, 1, VEXA_16UC3);
    ASSERT_EQ(co::V210TOYUV444(packedWords({0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}), dst), success);
    expectElements<u16>(dst, [](std::size_t i) { return i < 18 ? 1023 : 0; });
    VexaImage twoRows = packedImage(16, 2);
    ASSERT_EQ(co::YUV422TOV210(constant<u16>({24, 1}, 1, 1), twoRows), success);
    const Vexa32u ones = 1 + (1 << 10) + (1 << 20);
    EXPECT_EQ(wordsOf(twoRows), (std::vector<Vexa32u>{ones, ones, ones, ones, 0, 0, 0, 0}));
}

/// Images of any pitch, size and channels: what does not fit is left out, nothing leaves a buffer.
TEST(V210, OtherShapesStayInside)
{
    std::vector<VexaImage> images[2];  // of pixels, packed
    for (const int depth : {16, 8}) {
        std::vector<VexaImage>& shapes = images[depth == 8 ? 1 : 0];
        shapes.resize(15);
        for (std::size_t i = 0; i < 12; ++i)
            ASSERT_EQ(
                shapes[i].create(12, 5, std::array<int, 4>{2, 31, 96, 300}[i % 4], depth, static_cast<int>(i / 4) + 1),
                success);
        ASSERT_EQ(shapes[12].create(1, 1, depth, 4), success);
        ASSERT_EQ(shapes[13].create(13, 40, -depth, 3), success);
        ASSERT_EQ(shapes[14].create(1920, 1092, 1920 * depth / 8, depth, 1), success);
        for (VexaImage& image : shapes) fillBuffer(image, 0x11);
    }
    for (VexaImage& pixels : images[0])
        for (VexaImage& packed : images[1]) {
            EXPECT_EQ(co::V210TOYUV444(packed, pixels), success);
            EXPECT_EQ(co::YUV444TOV210(pixels, packed), success);
            EXPECT_EQ(co::YUV422TOV210(pixels, packed), success);
        }
}

TEST(V210, Workers)
{
    const VexaImage src = constant<u16>({48, 5}, 3, 999);
    const VexaImage packed = packedImage(128, 5);
    const VexaImage dst(48, 5, VEXA_16UC3);
    auto* const words = static_cast<Vexa32u*>(packed.ptr());
    ASSERT_EQ(vexa_yuv444_to_v210(src.ptr<u16>(), words, 48, src.pitch(), 5, packed.pitch(), nullptr), success);
    ASSERT_EQ(vexa_v210_to_yuv444(words, dst.ptr<u16>(), 48, dst.pitch(), 5, packed.pitch(), nullptr), success);
    EXPECT_EQ(download<u16>(dst), download<u16>(src));
}

}  // namespace
