/// @file
/// Gradients: the four stencils from their weights, ramps by hand, and the checks.

#include "flat_rows.h"

namespace {

using namespace kit;
namespace filtering = vexa::imageFiltering;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;

/// Weights of the 3x3 neighbourhood, row by row.
struct Stencil {
    VexaGradientKernelType type;
    int x[9];
    int y[9];
};

const Stencil stencils[] = {
    {VEXA_GRADIENT_CENTRAL_DIFFERENCE, {0, 0, 0, -1, 0, 1, 0, 0, 0}, {0, -1, 0, 0, 0, 0, 0, 1, 0}},
    {VEXA_GRADIENT_SOBEL_3x3, {1, 2, 1, 0, 0, 0, -1, -2, -1}, {-1, 0, 1, -2, 0, 2, -1, 0, 1}},
    {VEXA_GRADIENT_SCHARR_3x3, {3, 10, 3, 0, 0, 0, -3, -10, -3}, {-3, 0, 3, -10, 0, 10, -3, 0, 3}},
    {VEXA_GRADIENT_PREWITT_3x3, {1, 1, 1, 0, 0, 0, -1, -1, -1}, {-1, 0, 1, -1, 0, 1, -1, 0, 1}},
};

template <typename T>
double weighted(const FlatRows<T>& src, const int (&weights)[9], std::size_t index)
{
    double sum = 0;
    for (int i = 0; i < 9; ++i)
        sum += weights[i] *
               static_cast<double>(src(src.column(index) + src.channels * (i % 3 - 1), src.row(index) + i / 3 - 1));
    return sum;
}

template <typename T>
void expectGradients(VexaSize size, int channels)
{
    // Whole numbers, so that sums are exact in any order.
    VexaImage src = noise<T>(size, channels, 31);
    if (sizeof(T) == 4) {
        std::vector<T> whole = download<T>(src);
        for (T& element : whole) element = static_cast<T>(static_cast<int>(element));
        upload(src, whole);
    }
    const FlatRows<T> rows(src);
    for (const Stencil& stencil : stencils) {
        SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", " << channels << " channels of "
                                        << 8 * sizeof(T) << " bits, stencil " << stencil.type);
        VexaImage x;
        VexaImage y(size, formatOf<f32>(channels));
        fillBuffer(y, 0xA5);
        ASSERT_EQ(filtering::imageGradients(src, x, y, stencil.type), success);
        expectElements<f32>(x, [&](std::size_t i) { return weighted(rows, stencil.x, i); });
        expectElements<f32>(y, [&](std::size_t i) { return weighted(rows, stencil.y, i); });
        expectGaps(y, 0xA5);
    }
}

TEST(ImageGradients, AreTheirStencils)
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({1030, 66});
    for (const VexaSize& size : sizes)
        for (const int channels : {1, 3}) {
            expectGradients<u8>(size, channels);
            expectGradients<f32>(size, channels);
        }
}

/// The central difference goes along its name; the 3x3 stencils are crossed, and X has the opposite sign.
TEST(ImageGradients, RampsByHand)
{
    const VexaImage src = imageOf<u8>({3, 3}, 1, {0, 1, 2, 5, 6, 7, 10, 11, 12});
    const struct {
        VexaGradientKernelType type;
        float x, y;
    } centre[] = {{VEXA_GRADIENT_CENTRAL_DIFFERENCE, 2, 10},
                  {VEXA_GRADIENT_SOBEL_3x3, -40, 8},
                  {VEXA_GRADIENT_SCHARR_3x3, -160, 32},
                  {VEXA_GRADIENT_PREWITT_3x3, -30, 6}};
    for (const auto& expected : centre) {
        VexaImage x, y;
        ASSERT_EQ(filtering::imageGradients(src, x, y, expected.type), success);
        EXPECT_EQ(download<f32>(x)[4], expected.x);
        EXPECT_EQ(download<f32>(y)[4], expected.y);
    }
}

TEST(ImageGradients, Checks)
{
    const auto call = [](const VexaImage& src, VexaImage& x, VexaImage& y, int type = VEXA_GRADIENT_SOBEL_3x3) {
        return filtering::imageGradients(src, x, y, static_cast<VexaGradientKernelType>(type));
    };
    VexaImage x, y;
    EXPECT_EQ(call(VexaImage(), x, y), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(x.isInitialized());

    const VexaImage src(8, 6, VEXA_8UC1);
    for (VexaImage other : {VexaImage(9, 6, VEXA_32FC1), VexaImage(8, 7, VEXA_32FC1), VexaImage(8, 6, VEXA_32FC3),
                            VexaImage(8, 6, VEXA_8UC1)}) {
        VexaImage first, second;
        EXPECT_EQ(call(src, other, second), mode);
        EXPECT_EQ(second.isInitialized(), other.type() == VEXA_8UC1);
        EXPECT_EQ(call(src, first, other), mode);
        EXPECT_EQ(first.type(), VEXA_32FC1);
    }

    const struct {
        VexaType type;
        VexaStatus status;
    } sources[] = {{VEXA_16UC1, mode},
                   {VEXA_32SC1, success},
                   {VEXA_8UC2, VEXA_CHANNEL_NOT_SUPPORTED_ERROR},
                   {VEXA_32FC4, VEXA_CHANNEL_NOT_SUPPORTED_ERROR}};
    for (const auto& source : sources) {
        VexaImage first, second;
        EXPECT_EQ(call(VexaImage(5, 3, source.type), first, second), source.status) << source.type;
        EXPECT_EQ(first.depth(), 32);
        EXPECT_EQ(second.depth(), 32);
    }

    VexaImage untouched = constant<f32>({8, 6}, 1, 3.0F);
    VexaImage untouchedToo = constant<f32>({8, 6}, 1, 4.0F);
    EXPECT_EQ(call(src, untouched, untouchedToo, 7), success);
    EXPECT_EQ(download<f32>(untouched), std::vector<f32>(48, 3.0F));
    EXPECT_EQ(download<f32>(untouchedToo), std::vector<f32>(48, 4.0F));
}

}  // namespace
