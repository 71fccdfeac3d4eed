/// @file
/// The operators of images: each is applied to images and, element by element, to numbers of the host.

#include <algorithm>
#include <cmath>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;

constexpr int width = 6;

double elementOf(double number, int /*x*/, int /*channel*/)
{
    return number;
}

double elementOf(const VexaScalar& scalar, int /*x*/, int channel)
{
    return scalar[channel];
}

double elementOf(const VexaImage& image, int x, int channel)
{
    return image.get(x, 0, channel);
}

/// A row of pixels, channel c of pixel x being elements[(x + c) % width].
VexaImage rowOfPixels(VexaType type, const double (&elements)[width])
{
    VexaImage image(width, 1, type);
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < image.channels(); ++c) image.set(x, 0, c, elements[(x + c) % width]);
    return image;
}

std::vector<VexaImage> integerImages()
{
    std::vector<VexaImage> images;
    for (const int channels : {1, 3}) {
        images.push_back(rowOfPixels(getType(8, channels, false), {0, 1, 7, 10, 200, 255}));
        images.push_back(rowOfPixels(getType(16, channels, false), {0, 1, 7, 300, 40000, 65535}));
    }
    return images;
}

std::vector<VexaImage> images()
{
    std::vector<VexaImage> all = integerImages();
    for (const VexaType type : {VEXA_32FC1, VEXA_32FC3}) all.push_back(rowOfPixels(type, {-7.5, 0, 0.25, 3, 200, 1e6}));
    return all;
}

VexaImage otherLike(const VexaImage& image)
{
    return rowOfPixels(image.type(), {3, 7, 2, 200, 10, 5});
}

VexaType floatLike(const VexaImage& image)
{
    return getType(32, image.channels(), false);
}

/// The value saturated and truncated as the image stores it, allowing for products with an approximate reciprocal.
void expectElement(const VexaImage& image, int x, int channel, double value)
{
    constexpr double error = 4e-7;
    const auto stored = [&](double v) {
        return image.depth() == 32 ? v : std::floor(std::clamp(v, 0.0, std::ldexp(1.0, image.depth()) - 1));
    };
    const auto [low, high] = std::minmax({stored(value * (1 - error)), stored(value * (1 + error))});
    const double element = image.get(x, 0, channel);
    EXPECT_TRUE(low <= element && element <= high) << element << " and not " << value << " at " << x << ", " << channel;
}

/// Compares what the operator makes of an image and another operand with what it makes of their elements as Numbers.
template <typename Number, typename Operator, typename Left, typename Right>
void expectResult(const Operator& apply, const Left& left, const Right& right, VexaType type)
{
    const VexaImage result = apply(left, right);
    ASSERT_EQ(result.type(), type);
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < result.channels(); ++c)
            expectElement(
                result, x, c,
                apply(static_cast<Number>(elementOf(left, x, c)), static_cast<Number>(elementOf(right, x, c))));
}

template <typename Operator>
void expectArithmetic(const char* name, const Operator& apply)
{
    for (const VexaImage& a : images()) {
        SCOPED_TRACE(testing::Message() << name << " on type " << a.type());
        expectResult<double>(apply, a, otherLike(a), a.type());
        expectResult<double>(apply, a, 3, a.type());
        expectResult<double>(apply, 30, a, a.type());
        expectResult<double>(apply, a, 2.5, floatLike(a));
        expectResult<double>(apply, 2.5, a, floatLike(a));
        expectResult<double>(apply, a, VexaScalar(1, 2, 3), a.type());
        expectResult<double>(apply, VexaScalar(10, 20, 30), a, a.type());
        expectResult<double>(apply, a, VexaScalar(1.0, 2.0, 3.25), floatLike(a));
        expectResult<double>(apply, VexaScalar(1.0, 2.0, 3.25), a, floatLike(a));
    }
}

TEST(Operators, Arithmetic)
{
    expectArithmetic("+", [](const auto& a, const auto& b) { return a + b; });
    expectArithmetic("-", [](const auto& a, const auto& b) { return a - b; });
    expectArithmetic("*", [](const auto& a, const auto& b) { return a * b; });
    expectArithmetic("/", [](const auto& a, const auto& b) { return a / b; });
}

template <typename Operator>
void expectLogic(const char* name, const Operator& apply)
{
    for (const VexaImage& a : integerImages()) {
        SCOPED_TRACE(testing::Message() << name << " on type " << a.type());
        expectResult<int>(apply, a, otherLike(a), a.type());
        expectResult<int>(apply, a, 0x36, a.type());
        expectResult<int>(apply, 0x36, a, a.type());
    }
}

TEST(Operators, LogicAndShifts)
{
    expectLogic("&", [](const auto& a, const auto& b) { return a & b; });
    expectLogic("|", [](const auto& a, const auto& b) { return a | b; });
    expectLogic("^", [](const auto& a, const auto& b) { return a ^ b; });
    for (const VexaImage& a : integerImages()) {
        expectResult<int>([](const auto& image, int bits) { return image << bits; }, a, 3, a.type());
        expectResult<int>([](const auto& image, int bits) { return image >> bits; }, a, 3, a.type());
    }
}

TEST(Operators, Unary)
{
    for (const VexaImage& a : images())
        expectResult<double>([](const auto& image, int) { return -image; }, a, 0, a.type());
    for (const VexaImage& a : integerImages()) {
        const VexaImage complement = ~a;
        ASSERT_EQ(complement.type(), a.type());
        for (int x = 0; x < width; ++x)
            expectElement(complement, x, 0, std::ldexp(1.0, a.depth()) - 1 - a.get(x, 0, 0));
    }
}

/// The operator changes the image in place as it changes the elements as Numbers, and returns the image.
template <typename Number, typename Operator, typename Operand>
void expectInPlace(const Operator& apply, const VexaImage& before, const Operand& operand)
{
    VexaImage image(before);
    const void* const buffer = image.ptr();
    EXPECT_EQ(&apply(image, operand), &image);
    EXPECT_EQ(image.ptr(), buffer);
    ASSERT_EQ(image.type(), before.type());
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < image.channels(); ++c) {
            auto number = static_cast<Number>(before.get(x, 0, c));
            expectElement(image, x, c, apply(number, static_cast<Number>(elementOf(operand, x, c))));
        }
}

template <typename Operator>
void expectArithmeticInPlace(const char* name, const Operator& apply)
{
    for (const VexaImage& a : images()) {
        SCOPED_TRACE(testing::Message() << name << " on type " << a.type());
        expectInPlace<double>(apply, a, otherLike(a));
        expectInPlace<double>(apply, a, 3);
        expectInPlace<double>(apply, a, 2.5);
        expectInPlace<double>(apply, a, VexaScalar(1, 2, 3));
        expectInPlace<double>(apply, a, VexaScalar(1.0, 2.0, 3.25));
    }
}

template <typename Operator>
void expectLogicInPlace(const char* name, const Operator& apply)
{
    for (const VexaImage& a : integerImages()) {
        SCOPED_TRACE(testing::Message() << name << " on type " << a.type());
        expectInPlace<int>(apply, a, otherLike(a));
        expectInPlace<int>(apply, a, 0x36);
    }
}

TEST(Operators, InPlace)
{
    expectArithmeticInPlace("+=", [](auto& a, const auto& b) -> decltype(auto) { return a += b; });
    expectArithmeticInPlace("-=", [](auto& a, const auto& b) -> decltype(auto) { return a -= b; });
    expectArithmeticInPlace("*=", [](auto& a, const auto& b) -> decltype(auto) { return a *= b; });
    expectArithmeticInPlace("/=", [](auto& a, const auto& b) -> decltype(auto) { return a /= b; });
    expectLogicInPlace("&=", [](auto& a, const auto& b) -> decltype(auto) { return a &= b; });
    expectLogicInPlace("|=", [](auto& a, const auto& b) -> decltype(auto) { return a |= b; });
    expectLogicInPlace("^=", [](auto& a, const auto& b) -> decltype(auto) { return a ^= b; });
    for (const VexaImage& a : integerImages()) {
        expectInPlace<int>([](auto& image, int bits) -> decltype(auto) { return image <<= bits; }, a, 3);
        expectInPlace<int>([](auto& image, int bits) -> decltype(auto) { return image >>= bits; }, a, 3);
    }
    for (const VexaImage& a : images()) {
        expectInPlace<double>([](auto& image, int) -> decltype(auto) { return ++image; }, a, 0);
        expectInPlace<double>([](auto& image, int) -> decltype(auto) { return --image; }, a, 0);
    }
}

TEST(Operators, PostIncrement)
{
    VexaImage image = rowOf<u8>({0, 7, 255});
    const VexaImage beforeIncrement = image++;
    EXPECT_EQ(download<u8>(beforeIncrement), (std::vector<u8>{0, 7, 255}));
    EXPECT_EQ(download<u8>(image), (std::vector<u8>{1, 8, 255}));
    const VexaImage beforeDecrement = image--;
    EXPECT_EQ(download<u8>(beforeDecrement), (std::vector<u8>{1, 8, 255}));
    EXPECT_EQ(download<u8>(image), (std::vector<u8>{0, 7, 254}));
}

/// Computed by hand, written as callers write it: no cast is needed and nothing is ambiguous.
TEST(Operators, Examples)
{
    const VexaImage image = rowOf<u8>({7, 200, 0});
    const VexaImage color = imageOf<u8>({1, 1}, 3, {7, 200, 0});
    const struct {
        const char* text;
        VexaImage result;
        std::vector<u8> elements;
    } bytes[] = {
        {"image + 1", image + 1, {8, 201, 1}},
        {"1 + image", 1 + image, {8, 201, 1}},
        {"image + 100", image + 100, {107, 255, 100}},
        {"image - 10", image - 10, {0, 190, 0}},
        {"10 - image", 10 - image, {3, 0, 10}},
        {"image / 2", image / 2, {3, 100, 0}},
        {"image / 0", image / 0, {255, 255, 0}},
        {"100 / image", 100 / image, {14, 0, 255}},
        {"image << 1", image << 1, {14, 255, 0}},
        {"image & 0x0F", image & 0x0F, {7, 8, 0}},
        {"-image", -image, {0, 0, 0}},
        {"color - VexaScalar(1, 2, 3)", color - VexaScalar(1, 2, 3), {6, 198, 0}},
    };
    for (const auto& example : bytes) EXPECT_EQ(download<u8>(example.result), example.elements) << example.text;
    const struct {
        const char* text;
        VexaImage result;
        std::vector<f32> elements;
    } floats[] = {
        {"image + 1.0", image + 1.0, {8, 201, 1}},
        {"image - 0.5f", image - 0.5F, {6.5F, 199.5F, -0.5F}},
        {"image * 2.0", image * 2.0, {14, 400, 0}},
        {"color - VexaScalar(1.0, 2.0, 3.0)", color - VexaScalar(1.0, 2.0, 3.0), {6, 198, -3}},
    };
    for (const auto& example : floats) EXPECT_EQ(download<f32>(example.result), example.elements) << example.text;
}

TEST(Operators, EmptyImages)
{
    VexaImage empty;
    const VexaImage pixel = rowOf<u8>({1});
    for (const VexaImage& result :
         {empty + 1, empty * 1.5, empty / VexaScalar(2.0), empty - pixel, empty & 1, -empty, ~empty, empty++, empty--,
          ++empty, --empty, empty += 2.5, empty -= pixel, empty *= VexaScalar(2)})
        EXPECT_FALSE(result.isInitialized());
    EXPECT_FALSE(empty.isInitialized());
}

/// No status tells of a failure: the result is empty, except that floats for a constant stay allocated.
TEST(Operators, Failures)
{
    const VexaImage isSigned(5, 3, VEXA_8SC1);
    for (const VexaImage& result : {isSigned + 1.0, 1.5 - isSigned, isSigned / 2.0, isSigned * VexaScalar(2.0)}) {
        EXPECT_EQ(result.type(), VEXA_32FC1);
        EXPECT_EQ(result.width(), 5);
        EXPECT_EQ(result.height(), 3);
    }
    VexaImage image = rowOf<u8>({7, 200, 0});
    const VexaImage real = rowOf<f32>({1, 2, 3});
    for (const VexaImage& result : {image + rowOf<u8>({1, 2}), image & rowOf<u16>({1, 2, 3}), isSigned + 1, -isSigned,
                                    isSigned / 2, isSigned - VexaScalar(2), ~real, real & 1, real << 1})
        EXPECT_FALSE(result.isInitialized());

    image += real;
    image -= rowOf<u8>({1, 2});
    image &= rowOf<u16>({1, 2, 3});
    EXPECT_EQ(image.type(), VEXA_8UC1);
    EXPECT_EQ(download<u8>(image), (std::vector<u8>{7, 200, 0}));
    VexaImage signedImage(2, 1, VEXA_8SC1);
    signedImage.set(0, 0, 0, -5);
    ++signedImage;
    EXPECT_EQ(signedImage.get(0, 0, 0), -5);
}

/// Constants of each kind find their overload without a cast.
TEST(Operators, CallsWithConstants)
{
    const VexaStream stream(false);
    VexaImage image(2, 1, VEXA_8UC3);
    VexaImage dst;
    const auto pixel = [](const VexaImage& of) {
        return std::vector<double>{of.get(1, 0, 0), of.get(1, 0, 1), of.get(1, 0, 2)};
    };
    EXPECT_EQ(image.set(5.0), VEXA_SUCCESS);
    EXPECT_EQ(al::add(image, VexaScalar(1, 2, 3), dst), VEXA_SUCCESS);
    EXPECT_EQ(pixel(dst), (std::vector<double>{6, 7, 8}));
    EXPECT_EQ(al::add(image, 300.0, dst), VEXA_SUCCESS);
    EXPECT_EQ(al::add(image, 300, dst), VEXA_SUCCESS);
    EXPECT_EQ(pixel(dst), (std::vector<double>{255, 255, 255}));

    EXPECT_EQ(image.set(VexaScalar(1, 2, 3)), VEXA_SUCCESS);
    EXPECT_EQ(image.set(1, 300.0), VEXA_SUCCESS);
    EXPECT_EQ(pixel(image), (std::vector<double>{1, 300 - 256, 3})) << "one channel takes the low bits";
    EXPECT_EQ(image[0].get(1, 0, 0), 1);
    EXPECT_EQ(image.set(6, stream), VEXA_SUCCESS);
    EXPECT_EQ(image.set(5.0, stream), VEXA_SUCCESS);
    EXPECT_EQ(pixel(image), (std::vector<double>{5, 5, 5}));
    EXPECT_EQ(image.set(5), VEXA_SUCCESS);
    EXPECT_EQ(image.set(0, 0, VexaScalar(7)), VEXA_SUCCESS);
    EXPECT_EQ(image.get(0, 0, 2), 7);
    EXPECT_EQ(image.set(0, 0, 0, 7), VEXA_SUCCESS);
}

}  // namespace
