/// @file
/// Warps against the inverse mapping in double, and what they refuse.

#include <array>
#include <functional>
#include <limits>

#include "sampling.h"

namespace {

using namespace kit;
namespace gt = vexa::geometryTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus refused = VEXA_INTERNAL_CALL_ERROR;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;

const VexaInterpolationType types[] = {VEXA_INTER_NEAREST, VEXA_INTER_LINEAR, VEXA_INTER_CUBIC};

using Matrix = std::array<std::array<double, 3>, 3>;
using Warp = VexaStatus (*)(const VexaImage&, VexaImage&, Vexa64f (*)[3], VexaInterpolationType, const VexaStream&);

VexaStatus apply(Warp warp, const VexaImage& src, VexaImage& dst, const Matrix& matrix,
                 VexaInterpolationType type = VEXA_INTER_LINEAR)
{
    double rows[3][3];
    for (std::size_t i = 0; i < 3; ++i) std::copy(matrix[i].begin(), matrix[i].end(), rows[i]);
    return warp(src, dst, rows, type, VexaStream(false));
}

Matrix inverseOf(const Matrix& m)
{
    Matrix inverse;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t a = (j + 1) % 3, b = (j + 2) % 3, c = (i + 1) % 3, d = (i + 2) % 3;
            inverse[i][j] = m[a][c] * m[b][d] - m[a][d] * m[b][c];
        }
    const double determinant = m[0][0] * inverse[0][0] + m[0][1] * inverse[1][0] + m[0][2] * inverse[2][0];
    for (auto& row : inverse)
        for (double& element : row) element /= determinant;
    return inverse;
}

/// The nearest distance of a position to where it leaves the image, or to where the nearest pixel changes.
double margin(double position, double step)
{
    return std::abs((position + 0.5) / step - std::round((position + 0.5) / step)) * step;
}

/// `back` maps the destination to the source.
template <typename T>
void expectWarped(const VexaImage& dst, const Sampled<T>& src, const Matrix& back, VexaInterpolationType type)
{
    const std::vector<T> elements = download<T>(dst);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const int x = static_cast<int>(i) / src.channels % dst.width();
        const int y = static_cast<int>(i) / src.channels / dst.width();
        std::array<double, 3> p;
        for (std::size_t k = 0; k < 3; ++k) p[k] = back[k][0] * x + back[k][1] * y + back[k][2];
        const double u = p[0] / p[2];
        const double v = p[1] / p[2];
        // Positions on a seam may fall to either side.
        const bool nearest = type == VEXA_INTER_NEAREST;
        if (margin(u, nearest ? 1 : src.width) < 1e-3 || margin(v, nearest ? 1 : src.height) < 1e-3) continue;
        const bool inside = u >= -0.5 && v >= -0.5 && u < src.width - 0.5 && v < src.height - 0.5;
        const double exact = inside ? src.interpolated(type, u, v, static_cast<int>(i) % src.channels) : 0.0;
        ASSERT_LT(errorOf(elements[i], exact), sampleTolerance<T>) << x << ", " << y << " from " << u << ", " << v;
    }
}

/// Both forms, the direct one with the inverse.
template <typename T>
void expectPair(Warp warp, Warp warpBack, const Matrix& back, VexaSize from, VexaSize to, int channels)
{
    const VexaImage src = noise<T>(from, channels, 61);
    const Sampled<T> sampled(src);
    for (const VexaInterpolationType type : types) {
        SCOPED_TRACE(testing::Message() << from.width << "x" << from.height << " to " << to.width << "x" << to.height
                                        << ", " << channels << " channels of " << 8 * sizeof(T) << " bits, mode "
                                        << type);
        for (const bool direct : {false, true}) {
            VexaImage dst(to, formatOf<T>(channels));
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(direct ? apply(warp, src, dst, inverseOf(back), type) : apply(warpBack, src, dst, back, type),
                      success);
            expectWarped<T>(dst, sampled, back, type);
            expectGaps(dst, 0xA5);
        }
    }
}

template <typename T>
void expectWarps(VexaSize from, VexaSize to, int channels)
{
    const Matrix affine[] = {{{{0.83, 0.41, -3.3}, {-0.37, 0.91, 6.2}, {0, 0, 1}}},
                             {{{2.1, 0, 0.3}, {0, 0.4, -0.2}, {0, 0, 1}}},
                             {{{-1.03, 0.001, 20.7}, {0.002, -0.98, 14.1}, {0, 0, 1}}}};
    const Matrix perspective = {{{0.93, 0.11, -2.3}, {-0.07, 1.02, 1.2}, {0.004, 0.003, 1.1}}};
    for (const Matrix& back : affine) expectPair<T>(gt::warpAffine, gt::warpAffineBack, back, from, to, channels);
    expectPair<T>(gt::warpPerspective, gt::warpPerspectiveBack, perspective, from, to, channels);
}

TEST(Warps, SampleTheInverseMapping)
{
    for (const int channels : {1, 3}) {
        expectWarps<u8>({40, 25}, {40, 25}, channels);
        expectWarps<u16>({40, 25}, {33, 47}, channels);
        expectWarps<f32>({17, 33}, {150, 60}, channels);
        expectWarps<u8>({700, 30}, {610, 30}, channels);
    }
}

/// Where the denominator of a perspective changes its sign the image is cut, not turned over into infinities.
TEST(Warps, HorizonInTheFrame)
{
    const Matrix back = {{{1, 0, 0}, {0, 1, 0}, {-0.05, 0.013, 1}}};
    const VexaImage src = noise<f32>({40, 40}, 1, 62);
    VexaImage dst(40, 40, VEXA_32FC1);
    ASSERT_EQ(apply(gt::warpPerspectiveBack, src, dst, back), success);
    expectWarped<f32>(dst, Sampled<f32>(src), back, VEXA_INTER_LINEAR);
}

const Matrix identity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Warp warps[] = {gt::warpAffine, gt::warpAffineBack, gt::warpPerspective, gt::warpPerspectiveBack};

TEST(Warps, IdentityCopiesIntoACorner)
{
    const VexaImage src = noise<u8>({9, 5}, 3, 63);
    for (const Warp warp : warps) {
        VexaImage dst = constant<u8>({12, 7}, 3, 9);
        ASSERT_EQ(apply(warp, src, dst, identity, VEXA_INTER_NEAREST), success);
        const Sampled<u8> sampled(src);
        expectElements<u8>(dst, [&](std::size_t i) {
            return sampled.orZero(static_cast<int>(i / 3) % 12, static_cast<int>(i / 3) / 12, static_cast<int>(i % 3));
        });
    }
}

/// The destination is cleared before the transform is refused.
TEST(Warps, RefuseWhatCannotBeMapped)
{
    constexpr double huge = 1e300;
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Matrix singular = {{{1, 2, 0}, {2, 4, 0}, {0, 0, 1}}};
    const VexaImage src = constant<u8>({9, 5}, 1, 200);
    const std::vector<u8> zeros(63, 0);
    for (const Warp warp : warps) {
        const auto expectRefused = [&](const VexaImage& from, const Matrix& matrix, int type) {
            VexaImage dst = constant<u8>({9, 7}, 1, 9);
            EXPECT_EQ(apply(warp, from, dst, matrix, static_cast<VexaInterpolationType>(type)), refused);
            EXPECT_EQ(download<u8>(dst), zeros);
        };
        expectRefused(src, identity, 0);
        expectRefused(src, identity, 4);
        expectRefused(src, singular, VEXA_INTER_LINEAR);
        expectRefused(constant<u8>({1, 5}, 1, 200), identity, VEXA_INTER_LINEAR);

        for (const double strange : {huge, -huge, nan, infinity, 1e30, 3e9})
            for (std::size_t place = 0; place < 6; ++place) {
                Matrix matrix = identity;
                matrix[place / 3][place % 3] = strange;
                VexaImage dst = constant<u8>({9, 7}, 1, 9);
                const VexaStatus status = apply(warp, src, dst, matrix);
                EXPECT_TRUE(status == success || status == refused) << status;
                for (const u8 element : download<u8>(dst)) EXPECT_TRUE(element == 0 || element == 200);
            }

        VexaImage missed = constant<u8>({9, 7}, 1, 9);
        const VexaStatus status = apply(warp, src, missed, {{{1, 0, 1000}, {0, 1, 0}, {0, 0, 1}}});
        EXPECT_TRUE(status == success || status == refused) << status;
        EXPECT_EQ(download<u8>(missed), zeros);
    }
}

TEST(Warps, Checks)
{
    for (const Warp warp : warps) {
        VexaImage dst;
        EXPECT_EQ(apply(warp, VexaImage(), dst, identity), VEXA_IMAGE_NOT_INITIALIZED);
        const VexaImage src(8, 6, VEXA_8UC1);
        for (VexaImage other : {VexaImage(8, 6, VEXA_8UC3), VexaImage(8, 6, VEXA_16UC1)})
            EXPECT_EQ(apply(warp, src, other, identity), mode);
        for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
            const auto type = static_cast<VexaType>(t);
            const bool isServed = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                                  type == VEXA_32FC1 || type == VEXA_32FC3;
            VexaImage created;
            EXPECT_EQ(apply(warp, VexaImage(5, 3, type), created, identity), isServed ? success : mode) << t;
            EXPECT_EQ(created.depth(), VexaImage(5, 3, type).depth());
        }
        VexaImage inPlace = constant<u8>({8, 6}, 1, 9);
        EXPECT_EQ(apply(warp, inPlace, inPlace, identity), success);
        EXPECT_EQ(download<u8>(inPlace), std::vector<u8>(48, 0));
    }
}

}  // namespace
