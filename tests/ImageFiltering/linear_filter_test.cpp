/// @file
/// Linear filters, bit for bit against the sum that defines them: fused, in ascending order of the coefficients.

#include <cmath>
#include <functional>
#include <limits>

#include "flat_rows.h"

namespace {

using namespace kit;
namespace filtering = vexa::imageFiltering;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;

/// Coefficients that are no round numbers.
VexaFilter randomFilter(VexaSize size, VexaPoint2D<int> anchor)
{
    VexaFilter filter(size, anchor);
    for (int i = 0; i < size.width * size.height; ++i)
        filter[i] = (static_cast<float>(i * 7919 % 613) / 613.0F - 0.35F) * 3.0F / static_cast<float>(size.width);
    return filter;
}

VexaFilter randomFilter(VexaSize size)
{
    return randomFilter(size, __vexaDefaultAnchor(size.width, size.height));
}

/// Coefficients count rows of the image within columns: over `columns` by `rows` taps.
template <typename T>
float sumAt(const FlatRows<T>& src, const VexaFilter& filter, int columns, int rows, std::size_t index)
{
    float sum = 0;
    int k = 0;
    for (int i = 0; i < columns; ++i)
        for (int j = 0; j < rows; ++j)
            sum = std::fma(static_cast<float>(src(src.column(index) + src.channels * (filter.anchor().x + i),
                                                  src.row(index) + filter.anchor().y + j)),
                           filter[k++], sum);
    return sum;
}

template <typename T>
float stored(float sum, int dataBits)
{
    if (sizeof(T) == 4) return sum;
    const auto top = static_cast<float>((1 << dataBits) - 1);
    return sum > top ? top : std::trunc(sum > 0.0F ? sum : 0.0F);
}

const VexaSize filterSizes[] = {{1, 1}, {3, 3}, {5, 1}, {1, 5}, {4, 4}, {5, 3}, {2, 7}, {11, 11}, {22, 22}, {1, 512}};

template <typename T>
void expectFiltered(const VexaImage& src, const VexaFilter& filter)
{
    SCOPED_TRACE(testing::Message() << src.width() << "x" << src.height() << " of type " << src.type() << ", filter "
                                    << filter.width() << "x" << filter.height() << " at " << filter.anchor().x << ", "
                                    << filter.anchor().y);
    VexaImage dst(src.size(), src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(filtering::imageFilter(src, dst, filter), success);
    const FlatRows<T> rows(src);
    expectElements<T>(dst, [&](std::size_t i) {
        return double(stored<T>(sumAt(rows, filter, filter.width(), filter.height(), i), src.dataBits()));
    });
    expectGaps(dst, 0xA5);
}

template <typename T>
void expectFilteredBySizes(int channels)
{
    for (const VexaSize& size : edgeSizes()) {
        const VexaImage src = noise<T>(size, channels, 21);
        for (const VexaSize& filterSize : filterSizes) expectFiltered<T>(src, randomFilter(filterSize));
        for (const VexaPoint2D<int>& anchor : {VexaPoint2D<int>(1, 2), VexaPoint2D<int>(-700, 40)})
            expectFiltered<T>(src, randomFilter({3, 2}, anchor));
    }
}

TEST(ImageFilter, IsTheFusedSumInOrder)
{
    for (const int channels : {1, 3}) {
        expectFilteredBySizes<u8>(channels);
        expectFilteredBySizes<u16>(channels);
        expectFilteredBySizes<f32>(channels);
    }
    VexaImage twelveBits = noise<u16>({67, 5}, 1, 22);
    twelveBits.setDataBits(12);
    expectFiltered<u16>(twelveBits, randomFilter({3, 3}));
}

template <typename T>
void expectFilteredInside(VexaSize size, int channels, const VexaRect& roi, bool copyOutliers)
{
    SCOPED_TRACE(testing::Message() << "rectangle " << roi.x << ", " << roi.y << ", " << roi.width << ", " << roi.height
                                    << ", " << channels << " channels of " << 8 * sizeof(T) << " bits, copying "
                                    << copyOutliers);
    const VexaImage src = noise<T>(size, channels, 23);
    const FlatRows<T> rows(src);
    for (const VexaSize& filterSize : {VexaSize(3, 3), VexaSize(5, 1), VexaSize(2, 7)}) {
        const VexaFilter filter = randomFilter(filterSize);
        VexaImage dst(size, src.type());
        fillBuffer(dst, 0x25);
        const std::vector<T> before = download<T>(dst);
        ASSERT_EQ(filtering::imageFilter(src, dst, roi, filter, copyOutliers), success);
        expectElements<T>(dst, [&](std::size_t i) {
            const int x = rows.column(i) / channels;
            const int y = rows.row(i);
            // The rectangle's form counts columns by the height of the filter.
            if (x >= roi.x && y >= roi.y && x < roi.x + roi.width && y < roi.y + roi.height)
                return double(stored<T>(sumAt(rows, filter, filter.height(), filter.width(), i), src.dataBits()));
            return double(copyOutliers ? rows(rows.column(i), y) : before[i]);
        });
        expectGaps(dst, 0x25);
    }
}

TEST(ImageFilter, RectanglesLimitWhatIsWritten)
{
    const VexaRect rectangles[] = {{0, 0, 33, 21},   {4, 3, 7, 5},  {20, 10, 100, 100},
                                   {-5, -3, 12, 10}, {40, 0, 5, 5}, {5, 5, 0, 4}};
    for (const VexaRect& roi : rectangles)
        for (const int channels : {1, 3})
            for (const bool copyOutliers : {false, true}) {
                expectFilteredInside<u8>({33, 21}, channels, roi, copyOutliers);
                expectFilteredInside<u16>({33, 21}, channels, roi, copyOutliers);
                expectFilteredInside<f32>({33, 21}, channels, roi, copyOutliers);
            }
}

/// Both images are addressed by the pitch of the source; a destination with room for fewer rows gets those.
TEST(ImageFilter, ImagesOfOtherPitches)
{
    const VexaSize size(700, 150);
    const VexaImage src = noise<u8>(size, 1, 24);
    const VexaFilter filter = randomFilter({3, 5});
    VexaImage dst;
    ASSERT_EQ(filtering::imageFilter(src, dst, filter), success);
    const std::vector<u8> expected = download<u8>(dst);
    VexaImage narrow(size.width, size.height, size.width, 8, 1);
    ASSERT_EQ(filtering::imageFilter(src, narrow, filter), success);
    std::vector<u8> bytes(static_cast<std::size_t>(size.width * size.height));
    ASSERT_EQ(narrow.download(bytes.data()), success);
    const auto pitch = static_cast<std::size_t>(src.pitch());
    const auto width = static_cast<std::size_t>(size.width);
    for (std::size_t y = 0; y * pitch + width <= bytes.size(); ++y)
        for (std::size_t x = 0; x < width; ++x)
            ASSERT_EQ(bytes[y * pitch + x], expected[y * width + x]) << x << ", " << y;
    expectFilteredInside<u8>(size, 3, {13, 9, 651, 131}, true);
}

// ---- by hand ----

std::vector<u8> filtered(const VexaImage& src, const VexaFilter& filter)
{
    VexaImage dst;
    EXPECT_EQ(filtering::imageFilter(src, dst, filter), success);
    return download<u8>(dst);
}

VexaFilter single(float coefficient)
{
    return VexaFilter(1, 1, &coefficient);
}

TEST(ImageFilter, StoresByHand)
{
    const VexaImage src = rowOf<u8>({0, 1, 127, 255});
    EXPECT_EQ(filtered(src, single(1.0F)), (std::vector<u8>{0, 1, 127, 255}));
    EXPECT_EQ(filtered(src, single(0.5F)), (std::vector<u8>{0, 0, 63, 127}));
    EXPECT_EQ(filtered(src, single(-1.0F)), (std::vector<u8>{0, 0, 0, 0}));
    EXPECT_EQ(filtered(src, single(3.0F)), (std::vector<u8>{0, 3, 255, 255}));
    EXPECT_EQ(filtered(src, single(std::numeric_limits<float>::quiet_NaN())), (std::vector<u8>{0, 0, 0, 0}));
    EXPECT_EQ(filtered(src, VexaFilter()), (std::vector<u8>{0, 0, 0, 0}));
}

/// Square filters are transposed: the rows of Sobel's lie along the columns of the image.
TEST(ImageFilter, SobelIsADerivativeAlongX)
{
    const VexaImage ramp = imageOf<u8>({4, 2}, 1, {40, 30, 20, 10, 40, 30, 20, 10});
    EXPECT_EQ(filtered(ramp, VexaSpecialFilters::sobel()), (std::vector<u8>{40, 80, 80, 40, 40, 80, 80, 40}));
}

/// Left and right of the image all channels read the first and the last element of the row.
TEST(ImageFilter, ChannelsBleedAtTheEdges)
{
    std::vector<float> ones = {1, 1, 1};
    const VexaImage src = imageOf<u8>({2, 1}, 3, {1, 2, 3, 10, 20, 30});
    EXPECT_EQ(filtered(src, VexaFilter(3, 1, ones.data())), (std::vector<u8>{12, 23, 34, 41, 52, 63}));
}

// ---- statuses ----

using Form = std::function<VexaStatus(const VexaImage& src, VexaImage& dst, const VexaFilter& filter)>;

void expectChecks(const Form& form)
{
    const VexaFilter filter(3, 3);
    VexaImage dst;
    EXPECT_EQ(form(VexaImage(), dst, filter), VEXA_IMAGE_NOT_INITIALIZED);
    VexaImage src(8, 6, VEXA_8UC1);
    EXPECT_EQ(form(src, src, filter), VEXA_INPLACE_OP_NOT_SUPPORTED);
    EXPECT_EQ(form(src, dst, VexaFilter(27, 19)), VEXA_INVALID_ARG_ERROR);
    EXPECT_FALSE(dst.isInitialized());
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC1), VexaImage(8, 7, VEXA_8UC1), VexaImage(8, 6, VEXA_16UC1),
                            VexaImage(8, 6, VEXA_8UC3)})
        EXPECT_EQ(form(src, other, filter), mode);
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const auto type = static_cast<VexaType>(t);
        const bool isServed = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                              type == VEXA_32FC1 || type == VEXA_32FC3;
        VexaImage created;
        EXPECT_EQ(form(VexaImage(5, 3, type), created, filter), isServed ? success : VEXA_TYPE_NOT_SUPPORTED_ERROR)
            << t;
        EXPECT_EQ(created.type(), type);
    }
}

TEST(ImageFilter, Checks)
{
    expectChecks([](const VexaImage& src, VexaImage& dst, const VexaFilter& filter) {
        return filtering::imageFilter(src, dst, filter);
    });
    expectChecks([](const VexaImage& src, VexaImage& dst, const VexaFilter& filter) {
        return filtering::imageFilter(src, dst, VexaRect(0, 0, 2, 2), filter, false);
    });
}

}  // namespace
