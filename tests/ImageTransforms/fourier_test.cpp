/// @file
/// The Fourier transform against its sum in double, the quadrant swap and the properties by their definitions.

#include <cmath>
#include <complex>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace it = vexa::imageTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus depth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus channel = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;

using Complex = std::complex<double>;
using Spectrum = std::vector<Complex>;

/// The transforms of `count` sequences of `length` values; `step` apart are values, `next` apart sequences.
Spectrum transformed(const Spectrum& values, int length, int step, int count, int next)
{
    Spectrum roots(static_cast<std::size_t>(length));
    for (int k = 0; k < length; ++k) roots[static_cast<std::size_t>(k)] = std::polar(1.0, -2.0 * M_PI * k / length);
    Spectrum result(values.size());
    for (int sequence = 0; sequence < count; ++sequence)
        for (int k = 0; k < length; ++k) {
            Complex sum = 0;
            for (int i = 0; i < length; ++i)
                sum += values[static_cast<std::size_t>(sequence * next + i * step)] *
                       roots[static_cast<std::size_t>(static_cast<long long>(i) * k % length)];
            result[static_cast<std::size_t>(sequence * next + k * step)] = sum;
        }
    return result;
}

Spectrum spectrumOf(const VexaImage& image)
{
    const std::vector<u8> pixels = download<u8>(image);
    const Spectrum values(pixels.begin(), pixels.end());
    const Spectrum rows = transformed(values, image.width(), 1, image.height(), image.width());
    return transformed(rows, image.height(), image.width(), image.width(), 1);
}

TEST(Fft2, IsTheSumOfWaves)
{
    const VexaSize sizes[] = {{1, 1},   {2, 1},  {1, 2},   {1, 13},  {29, 1},   {16, 16},   {15, 9},
                              {31, 37}, {67, 5}, {128, 6}, {5, 250}, {100, 49}, {101, 103}, {96, 144}};
    for (const VexaSize& size : sizes) {
        SCOPED_TRACE(testing::Message() << size.width << "x" << size.height);
        const VexaImage src = noise<u8>(size, 1, 5);
        VexaImage dst(size, VEXA_32FC2);
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(it::fft2(src, dst), success);
        const Spectrum expected = spectrumOf(src);
        const double tolerance = 2e-6 * (expected[0].real() + 1);
        expectElements<f32>(
            dst, [&](std::size_t i) { return i % 2 == 0 ? expected[i / 2].real() : expected[i / 2].imag(); },
            tolerance);
        expectGaps(dst, 0xA5);
    }
}

/// Sizes that direct sums would take too long for.
TEST(Fft2, KeepsTheEnergyAndTheSymmetryOfRealImages)
{
    for (const VexaSize& size : {VexaSize(1024, 512), VexaSize(1000, 750), VexaSize(1009, 3), VexaSize(499, 503)}) {
        SCOPED_TRACE(testing::Message() << size.width << "x" << size.height);
        const VexaImage src = noise<u8>(size, 1, 6);
        double energy = 0, sum = 0;
        for (const u8 pixel : download<u8>(src)) {
            energy += static_cast<double>(pixel) * pixel;
            sum += pixel;
        }
        VexaImage dst;
        ASSERT_EQ(it::fft2(src, dst), success);
        ASSERT_EQ(dst.type(), VEXA_32FC2);
        const std::vector<f32> waves = download<f32>(dst);
        EXPECT_NEAR(waves[0], sum, 1e-6 * sum);
        double waveEnergy = 0;
        for (const f32 part : waves) waveEnergy += static_cast<double>(part) * part;
        EXPECT_NEAR(waveEnergy / size.width / size.height, energy, 1e-5 * energy);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                const auto at = static_cast<std::size_t>(2 * (y * size.width + x));
                const auto mirrored = static_cast<std::size_t>(
                    2 * ((size.height - y) % size.height * size.width + (size.width - x) % size.width));
                ASSERT_NEAR(waves[at], waves[mirrored], 2e-6 * sum) << x << ", " << y;
                ASSERT_NEAR(waves[at + 1], -waves[mirrored + 1], 2e-6 * sum) << x << ", " << y;
            }
    }
}

TEST(Fft2, RefusesWhatItDoesNotServe)
{
    const VexaImage src = noise<u8>({8, 6}, 1, 7);
    const VexaImage deep = noise<u16>({8, 6}, 1, 7);
    VexaImage dst;
    EXPECT_EQ(it::fft2(VexaImage(), dst), mode);
    EXPECT_EQ(it::fft2(VexaImage(8, 6, VEXA_8UC3), dst), channel);
    EXPECT_FALSE(dst.isInitialized());
    EXPECT_EQ(it::fft2(deep, dst), depth);
    ASSERT_TRUE(dst.isInitialized());
    EXPECT_EQ(dst.type(), VEXA_32FC2);
    EXPECT_EQ(dst.width(), 8);
    EXPECT_EQ(dst.height(), 6);
    const struct {
        int width, height;
        VexaType type;
        VexaStatus status;
    } destinations[] = {
        {9, 6, VEXA_32FC2, mode}, {8, 5, VEXA_16UC1, mode}, {8, 6, VEXA_16UC2, depth}, {8, 6, VEXA_32FC1, channel}};
    for (const auto& other : destinations) {
        VexaImage image(other.width, other.height, other.type);
        EXPECT_EQ(it::fft2(src, image), other.status);
        EXPECT_EQ(it::fft2(deep, image), other.status);
    }
}

// ---- quadrants ----

/// Rows and columns that are left over in odd sizes keep what they had.
TEST(FftShift, SwapsQuadrants)
{
    for (const VexaSize& size : {VexaSize(8, 6), VexaSize(5, 5), VexaSize(67, 34), VexaSize(130, 3), VexaSize(1, 4)})
        for (int channels = 1; channels <= 4; ++channels) {
            SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << "x" << channels);
            const VexaImage src = noise<f32>(size, channels, 8);
            const std::vector<f32> from = download<f32>(src);
            VexaImage dst = constant<f32>(size, channels, 0.25F);
            ASSERT_EQ(it::fftShift(src, dst), success);
            const int halfWidth = size.width / 2, halfHeight = size.height / 2;
            expectElements<f32>(dst, [&](std::size_t i) -> double {
                const int pixel = static_cast<int>(i) / channels;
                const int x = pixel % size.width, y = pixel / size.width;
                if (x >= 2 * halfWidth || y >= 2 * halfHeight) return 0.25;
                const int column = x < halfWidth ? x + halfWidth : x - halfWidth;
                const int row = y < halfHeight ? y + halfHeight : y - halfHeight;
                return from[static_cast<std::size_t>((row * size.width + column) * channels) +
                            i % static_cast<std::size_t>(channels)];
            });
        }
}

TEST(FftShift, TwiceIsTheImage)
{
    const VexaImage src = noise<f32>({34, 18}, 2, 9);
    VexaImage once, twice;
    ASSERT_EQ(it::fftShift(src, once), success);
    ASSERT_EQ(it::fftShift(once, twice), success);
    EXPECT_EQ(download<f32>(twice), download<f32>(src));
}

/// Both images are addressed by the pitch of the source.
TEST(FftShift, AddressesTheDestinationByTheSource)
{
    VexaImage src(4, 4, 16, 32, 1);
    std::vector<f32> values(16);
    for (std::size_t i = 0; i < 16; ++i) values[i] = static_cast<f32>(i);
    ASSERT_EQ(src.upload(values.data()), success);
    VexaImage dst(4, 4, 32, 32, 1);
    fillBuffer(dst, 0);
    ASSERT_EQ(it::fftShift(src, dst), success);
    std::vector<f32> buffer(32);
    ASSERT_EQ(dst.download(buffer.data()), success);
    const std::vector<f32> swapped = {10, 11, 8, 9, 14, 15, 12, 13, 2, 3, 0, 1, 6, 7, 4, 5};
    EXPECT_EQ(std::vector<f32>(buffer.begin(), buffer.begin() + 16), swapped);
    EXPECT_EQ(std::vector<f32>(buffer.begin() + 16, buffer.end()), std::vector<f32>(16, 0));
}

TEST(FftShift, RefusesWhatItDoesNotServe)
{
    VexaImage dst;
    EXPECT_EQ(it::fftShift(VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(it::fftShift(VexaImage(4, 4, VEXA_16UC1), dst), depth);
    EXPECT_FALSE(dst.isInitialized());
    const VexaImage src(4, 4, VEXA_32FC2);
    for (VexaImage other : {VexaImage(5, 4, VEXA_32FC2), VexaImage(4, 5, VEXA_32FC2), VexaImage(4, 4, VEXA_16UC2),
                            VexaImage(4, 4, VEXA_32FC1)})
        EXPECT_EQ(it::fftShift(src, other), mode);
    ASSERT_EQ(it::fftShift(src, dst), success);
    EXPECT_EQ(dst.type(), VEXA_32FC2);
}

// ---- properties ----

double propertyOf(int property, double re, double im, int height)
{
    const double values[] = {std::hypot(re, im), std::atan2(im, re), re, im};
    return values[property / 2] * (property % 2 == 1 ? 1.0 / height : 1.0);
}

/// A row holds two floats for each pixel; where it is too short, reading goes on in the next row, and pixels whose
/// floats lie behind the image are left alone.
TEST(FftGetProperty, ReadsPairsOfFloats)
{
    for (const VexaSize& size : {VexaSize(10, 10), VexaSize(100, 3), VexaSize(1, 1), VexaSize(200, 17)}) {
        VexaImage src(size, VEXA_32FC1);
        const std::size_t rowFloats = static_cast<std::size_t>(src.pitch()) / 4;
        std::vector<f32> buffer(rowFloats * static_cast<std::size_t>(size.height));
        for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] = static_cast<f32>((i * 2654435761U) % 401) - 200.0F;
        ASSERT_EQ(src.upload(buffer.data()), success);
        for (int property = 0; property < 8; ++property) {
            SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", property " << property);
            VexaImage dst = constant<f32>(size, 1, -777.0F);
            ASSERT_EQ(it::fftGetProperty(src, dst, static_cast<VexaFFTProp>(property)), success);
            expectElements<f32>(
                dst,
                [&](std::size_t i) -> double {
                    const std::size_t at = i / static_cast<std::size_t>(size.width) * rowFloats +
                                           2 * (i % static_cast<std::size_t>(size.width));
                    if (at + 1 >= buffer.size()) return -777.0;
                    return propertyOf(property, buffer[at], buffer[at + 1], size.height);
                },
                1e-3);
        }
    }
}

TEST(FftGetProperty, PhaseByHand)
{
    VexaImage src(4, 1, 32, 32, 1);
    const f32 buffer[] = {0, 0, 1, 0, -1, 0, 0, -2};
    ASSERT_EQ(src.upload(buffer), success);
    VexaImage dst;
    ASSERT_EQ(it::fftGetProperty(src, dst, VEXA_FFT_PHASE), success);
    const double expected[] = {0, 0, M_PI, -M_PI / 2};
    expectElements<f32>(
        dst, [&](std::size_t i) { return expected[i]; }, 1e-5);
}

TEST(FftGetProperty, RefusesWhatItDoesNotServe)
{
    VexaImage dst;
    EXPECT_EQ(it::fftGetProperty(VexaImage(), dst, VEXA_FFT_REAL), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(it::fftGetProperty(VexaImage(4, 4, VEXA_8UC3), dst, VEXA_FFT_REAL), depth);
    VexaImage waves;
    ASSERT_EQ(it::fft2(noise<u8>({8, 8}, 1, 1), waves), success);
    EXPECT_EQ(it::fftGetProperty(waves, dst, VEXA_FFT_MAGNITUDE), channel);
    EXPECT_FALSE(dst.isInitialized());
    const VexaImage src = constant<f32>({4, 4}, 1, 1.0F);
    for (VexaImage other : {VexaImage(5, 4, VEXA_32FC1), VexaImage(4, 5, VEXA_32FC1), VexaImage(4, 4, VEXA_16UC1),
                            VexaImage(4, 4, VEXA_32FC2)})
        EXPECT_EQ(it::fftGetProperty(src, other, VEXA_FFT_REAL), mode);
    dst = constant<f32>({4, 4}, 1, 9.0F);
    for (const int property : {8, -1, 1000}) {
        EXPECT_EQ(it::fftGetProperty(src, dst, static_cast<VexaFFTProp>(property)), success);
        expectElements<f32>(dst, [](std::size_t) { return 9.0; });
    }
}

}  // namespace
