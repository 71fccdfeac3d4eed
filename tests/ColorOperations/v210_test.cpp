/// @file
/// V210, packed and unpacked.

#include <algorithm>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

/// Where a group of six pixels holds the sample of a slot: Y, Cr, Cb. Chroma stands at even pixels.
struct Field {
    int pixel;
    int slot;
    std::size_t word;
    int shift;
};
const Field fields[] = {{0, 2, 0, 0}, {0, 0, 0, 10}, {0, 1, 0, 20}, {1, 0, 1, 0}, {2, 2, 1, 10}, {2, 0, 1, 20},
                        {2, 1, 2, 0}, {3, 0, 2, 10}, {4, 2, 2, 20}, {4, 0, 3, 0}, {4, 1, 3, 10}, {5, 0, 3, 20}};

/// An image of packed words without padding: rows of a third of 8 bytes a pixel.
VexaImage packedImage(VexaSize size)
{
    const int rowBytes = size.width * 8 / 3;
    return VexaImage(rowBytes, size.height, rowBytes, 8, 1);
}

VexaImage packedWords(const std::vector<Vexa32u>& words)
{
    VexaImage image = packedImage(VexaSize(static_cast<int>(words.size()) * 3 / 2, 1));
    EXPECT_EQ(image.upload(words.data()), VEXA_SUCCESS);
    return image;
}

/// The flat run of an image as words.
std::vector<Vexa32u> wordsOf(const VexaImage& image)
{
    std::vector<Vexa32u> words(
        (static_cast<std::size_t>(image.pitch()) * static_cast<std::size_t>(image.height()) + 3) / 4);
    EXPECT_EQ(image.download(words.data()), VEXA_SUCCESS);
    return words;
}

std::vector<u16> samples(VexaSize size)
{
    std::vector<u16> elements = download<u16>(noise<u16>(size, 3, 11));
    for (u16& element : elements) element = static_cast<u16>(element >> 6);
    return elements;
}

TEST(V210, EveryFieldHasItsPlace)
{
    for (const Field& field : fields) {
        const std::size_t at = static_cast<std::size_t>(3 * field.pixel + field.slot);
        std::vector<Vexa32u> words(4, 0xC0000000);
        words[field.word] |= 0x2F5U << field.shift;
        std::vector<u16> pixels(18, 0);
        pixels[at] = 0x2F5;
        VexaImage dst(6, 1, VEXA_16UC3);
        ASSERT_EQ(co::V210TOYUV444(packedWords(words), dst), VEXA_SUCCESS);
        if (field.slot != 0) pixels[at + 3] = 0x2F5;
        EXPECT_EQ(download<u16>(dst), pixels);

        std::vector<u16> samples(12, 0);
        samples[static_cast<std::size_t>(&field - fields)] = 0x2F5;
        if (field.slot != 0) pixels[at + 3] = 0x3FF;  // the chroma of odd pixels is not read
        for (Vexa32u& word : words) word &= 0x3FFFFFFF;
        VexaImage packed = packedImage({6, 1});
        ASSERT_EQ(co::YUV444TOV210(imageOf<u16>({6, 1}, 3, pixels), packed), VEXA_SUCCESS);
        EXPECT_EQ(wordsOf(packed), words);
        fillBuffer(packed, 0xA5);
        ASSERT_EQ(co::YUV422TOV210(rowOf<u16>(samples), packed), VEXA_SUCCESS);
        EXPECT_EQ(wordsOf(packed), words);
    }
}

TEST(V210, LargeSamplesCarry)
{
    VexaImage packed = packedImage({6, 1});
    ASSERT_EQ(co::YUV422TOV210(rowOf<u16>({1024, 0, 0, 0, 1025, 1, 0, 0, 1024, 65535, 1023, 0}), packed), VEXA_SUCCESS);
    EXPECT_EQ(wordsOf(packed),
              (std::vector<Vexa32u>{1 << 10, (1025 << 10) + (1 << 20), 1 << 30, 65535 + (1023 << 10)}));
    ASSERT_EQ(
        co::YUV444TOV210(imageOf<u16>({6, 1}, 3, {0, 0, 1024, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), packed),
        VEXA_SUCCESS);
    EXPECT_EQ(wordsOf(packed), (std::vector<Vexa32u>{1 << 10, 0, 0, 0}));
}

/// Y comes back exactly, the chroma of the even pixel in both.
double roundTripped(const std::vector<u16>& elements, int width, std::size_t i)
{
    const std::size_t x = i / 3 % static_cast<std::size_t>(width);
    return elements[i % 3 != 0 && x % 2 == 1 ? i - 3 : i];
}

TEST(V210, RoundTrip)
{
    for (const VexaSize& size : {VexaSize(6, 1), VexaSize(6, 17), VexaSize(48, 3), VexaSize(1920, 20)}) {
        const std::vector<u16> elements = samples(size);
        VexaImage packed = packedImage(size);
        ASSERT_EQ(co::YUV444TOV210(imageOf<u16>(size, 3, elements), packed), VEXA_SUCCESS);
        for (const int pitch : {0, 6 * size.width, 6 * size.width + 26}) {
            VexaImage dst;
            if (pitch == 0)
                ASSERT_EQ(dst.create(size, VEXA_16UC3), VEXA_SUCCESS);
            else
                ASSERT_EQ(dst.create(size.width, size.height, pitch, 16, 3), VEXA_SUCCESS);
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(co::V210TOYUV444(packed, dst), VEXA_SUCCESS);
            expectElements<u16>(dst, [&](std::size_t i) { return roundTripped(elements, size.width, i); });
            expectGaps(dst, 0xA5);
            VexaImage again = packedImage(size);
            ASSERT_EQ(co::YUV444TOV210(dst, again), VEXA_SUCCESS);
            EXPECT_EQ(wordsOf(again), wordsOf(packed));
        }
        // The same from linear 4:2:2 samples, rows of two a pixel.
        std::vector<u16> linear;
        for (std::size_t i = 0; i < elements.size(); i += 6)
            linear.insert(linear.end(), {elements[i + 2], elements[i], elements[i + 1], elements[i + 3]});
        VexaImage src(size.width, size.height, 4 * size.width, 16, 2);
        upload(src, linear);
        VexaImage flat = packedImage(size);
        ASSERT_EQ(co::YUV422TOV210(src, flat), VEXA_SUCCESS);
        EXPECT_EQ(wordsOf(flat), wordsOf(packed));
    }
}

/// The rows of a flat run follow each other without a gap, wherever they end in a group.
TEST(V210, OtherWidths)
{
    for (const VexaSize& size : {VexaSize(8, 3), VexaSize(7, 2), VexaSize(5, 6), VexaSize(2, 1), VexaSize(1, 4)}) {
        SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
        const std::vector<u16> elements = samples(size);
        const auto width = static_cast<std::size_t>(size.width);
        // A run of whole groups that holds all samples of the image; an odd column has none.
        const std::size_t groups = (2 * width * static_cast<std::size_t>(size.height) + 11) / 12;
        std::vector<u16> linear;
        for (std::size_t y = 0; y < static_cast<std::size_t>(size.height); ++y)
            for (std::size_t x = 0; x + 1 < width; x += 2) {
                const u16* const pair = &elements[3 * (y * width + x)];
                linear.insert(linear.end(), {pair[2], pair[0], pair[1], pair[3]});
            }
        linear.resize(12 * groups, 0);
        std::vector<Vexa32u> words(4 * groups);
        for (std::size_t i = 0; i < words.size(); ++i)
            words[i] = linear[3 * i] + (Vexa32u{linear[3 * i + 1]} << 10) + (Vexa32u{linear[3 * i + 2]} << 20);

        const int pitch = (16 * static_cast<int>(groups) + size.height - 1) / size.height;
        VexaImage packed(pitch, size.height, pitch, 8, 1);
        fillBuffer(packed, 0);
        ASSERT_EQ(co::YUV444TOV210(imageOf<u16>(size, 3, elements), packed), VEXA_SUCCESS);
        std::vector<Vexa32u> result = wordsOf(packed);
        result.resize(words.size());
        EXPECT_EQ(result, words);

        VexaImage dst(size, VEXA_16UC3);
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(co::V210TOYUV444(packed, dst), VEXA_SUCCESS);
        expectElements<u16>(dst, [&](std::size_t i) {
            const bool isLeftOut = width % 2 == 1 && i / 3 % width == width - 1;
            return isLeftOut ? 0xA5A5 : roundTripped(elements, size.width, i);
        });
        expectGaps(dst, 0xA5);
    }
}

TEST(V210, Statuses)
{
    const VexaImage src = packedWords({0, 0, 0, 0});
    VexaImage empty;
    VexaImage bytes(6, 1, VEXA_8UC3);
    VexaImage words(6, 1, VEXA_16UC3);
    EXPECT_EQ(co::V210TOYUV444(VexaImage(), bytes), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::V210TOYUV444(src, bytes), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(co::V210TOYUV444(src, empty), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    for (const auto pack : {co::YUV444TOV210, co::YUV422TOV210}) {
        EXPECT_EQ(pack(VexaImage(), words, VexaStream(false)), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(pack(bytes, words, VexaStream(false)), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
        EXPECT_EQ(pack(words, empty, VexaStream(false)), VEXA_SUCCESS);
    }
    EXPECT_FALSE(empty.isInitialized());
    for (const VexaType type : {VEXA_16UC1, VEXA_16SC3, VEXA_16UC4}) {
        VexaImage other(6, 1, type);
        EXPECT_EQ(co::V210TOYUV444(src, other), VEXA_SUCCESS);
        EXPECT_EQ(co::YUV444TOV210(other, bytes), VEXA_SUCCESS);
    }
}

/// A source that ends early leaves 0 in what it does not reach.
TEST(V210, MissingSamplesAreZero)
{
    VexaImage dst(12, 1, VEXA_16UC3);
    ASSERT_EQ(co::V210TOYUV444(packedWords(std::vector<Vexa32u>(4, 0xFFFFFFFF)), dst), VEXA_SUCCESS);
    expectElements<u16>(dst, [](std::size_t i) { return i < 18 ? 1023 : 0; });
}

/// Packed images and images of pixels of any pitch and size: what does not fit is left out, nothing leaves a buffer.
TEST(V210, OtherShapesStayInside)
{
    const auto shapes = [](int depth) {
        std::vector<VexaImage> images;
        images.reserve(16);
        for (const int channels : {1, 3, 4})
            for (const int pitch : {2, 31, 96, 300}) images.emplace_back(12, 5, pitch, depth, channels);
        images.emplace_back(1, 1, depth, 1);
        images.emplace_back(12, 5, depth, 3);
        images.emplace_back(13, 40, depth, 3);
        for (VexaImage& image : images) fillBuffer(image, 0x11);
        return images;
    };
    std::vector<VexaImage> pixels = shapes(16);
    std::vector<VexaImage> packed = shapes(8);
    for (VexaImage& image : pixels)
        for (VexaImage& run : packed) {
            EXPECT_EQ(co::V210TOYUV444(run, image), VEXA_SUCCESS);
            EXPECT_EQ(co::YUV444TOV210(image, run), VEXA_SUCCESS);
            EXPECT_EQ(co::YUV422TOV210(image, run), VEXA_SUCCESS);
        }
}

TEST(V210, Workers)
{
    const VexaSize size(48, 5);
    const std::vector<u16> elements = samples(size);
    const VexaImage src = imageOf<u16>(size, 3, elements);
    const VexaImage packed = packedImage(size);
    const VexaImage dst(size, VEXA_16UC3);
    auto* const words = static_cast<Vexa32u*>(packed.ptr());
    ASSERT_EQ(vexa_yuv444_to_v210(src.ptr<u16>(), words, 48, src.pitch(), 5, packed.pitch(), nullptr), VEXA_SUCCESS);
    ASSERT_EQ(vexa_v210_to_yuv444(words, dst.ptr<u16>(), 48, dst.pitch(), 5, packed.pitch(), nullptr), VEXA_SUCCESS);
    expectElements<u16>(dst, [&](std::size_t i) { return roundTripped(elements, 48, i); });
}

}  // namespace
