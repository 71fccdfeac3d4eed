/// @file
/// Operators on images. Each is one operation on the default stream, its status dropped.

#include "vexaOperators.h"

namespace al = vexa::arithmeticLogical;

namespace {

/// What the result of an operator is before the operation: empty, so that it takes the type of the operation, or made
/// of floats of the same size and channels.
struct Result {
    const VexaImage* floatsLike = nullptr;
};

constexpr Result empty{};

Result floats(const VexaImage& image)
{
    return {&image};
}

/// For a constant a channel: floats unless all are integers.
Result resultOf(const VexaScalar& values, const VexaImage& image)
{
    return values.isInteger() ? empty : floats(image);
}

/// operation(result) into a new image, which is returned without a copy: empty if the operation failed.
template <typename Operation>
VexaImage make(Result before, const Operation& operation)
{
    VexaImage result;
    if (before.floatsLike != nullptr) (void)result.create(before.floatsLike->size(), 32, before.floatsLike->channels());
    // What a refused operation has already created goes; floats stay, with undefined pixels.
    if (operation(result) != VEXA_SUCCESS && before.floatsLike == nullptr) (void)result.release();
    return result;
}

VexaScalar reciprocals(const VexaScalar& values)
{
    return {1.0 / values[0], 1.0 / values[1], 1.0 / values[2], 1.0 / values[3]};
}

}  // namespace

VexaImage operator+(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::add(a, b, result); });
}

VexaImage operator+(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::add(image, static_cast<Vexa64f>(value), result); });
}

VexaImage operator+(const VexaImage& image, Vexa64f value)
{
    return make(floats(image), [&](VexaImage& result) { return al::add(image, value, result); });
}

VexaImage operator+(const VexaImage& image, const VexaScalar& values)
{
    return make(resultOf(values, image), [&](VexaImage& result) { return al::add(image, values, result); });
}

VexaImage operator+(Vexa32s value, const VexaImage& image)
{
    return image + value;
}

VexaImage operator+(Vexa64f value, const VexaImage& image)
{
    return image + value;
}

VexaImage operator+(const VexaScalar& values, const VexaImage& image)
{
    return image + values;
}

VexaImage operator-(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::subtract(a, b, result); });
}

VexaImage operator-(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::add(image, 0.0 - value, result); });
}

VexaImage operator-(const VexaImage& image, Vexa64f value)
{
    return make(floats(image), [&](VexaImage& result) { return al::add(image, -value, result); });
}

VexaImage operator-(const VexaImage& image, const VexaScalar& values)
{
    return make(resultOf(values, image), [&](VexaImage& result) { return al::add(image, -values, result); });
}

VexaImage operator-(Vexa32s value, const VexaImage& image)
{
    return make(empty, [&](VexaImage& result) { return al::subtract(static_cast<Vexa64f>(value), image, result); });
}

VexaImage operator-(Vexa64f value, const VexaImage& image)
{
    return make(floats(image), [&](VexaImage& result) { return al::subtract(value, image, result); });
}

VexaImage operator-(const VexaScalar& values, const VexaImage& image)
{
    return make(resultOf(values, image), [&](VexaImage& result) { return al::subtract(values, image, result); });
}

VexaImage operator*(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::multiply(a, b, result); });
}

VexaImage operator*(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::multiply(image, static_cast<Vexa64f>(value), result); });
}

VexaImage operator*(const VexaImage& image, Vexa64f value)
{
    return make(floats(image), [&](VexaImage& result) { return al::multiply(image, value, result); });
}

VexaImage operator*(const VexaImage& image, const VexaScalar& values)
{
    return make(resultOf(values, image), [&](VexaImage& result) { return al::multiply(image, values, result); });
}

VexaImage operator*(Vexa32s value, const VexaImage& image)
{
    return image * value;
}

VexaImage operator*(Vexa64f value, const VexaImage& image)
{
    return image * value;
}

VexaImage operator*(const VexaScalar& values, const VexaImage& image)
{
    return image * values;
}

VexaImage operator/(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::divide(a, b, result); });
}

VexaImage operator/(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::multiply(image, 1.0 / value, result); });
}

VexaImage operator/(const VexaImage& image, Vexa64f value)
{
    return make(floats(image), [&](VexaImage& result) { return al::multiply(image, 1.0 / value, result); });
}

VexaImage operator/(const VexaImage& image, const VexaScalar& values)
{
    return make(resultOf(values, image),
                [&](VexaImage& result) { return al::multiply(image, reciprocals(values), result); });
}

VexaImage operator/(Vexa32s value, const VexaImage& image)
{
    return make(empty, [&](VexaImage& result) { return al::divide(static_cast<Vexa64f>(value), image, result); });
}

VexaImage operator/(Vexa64f value, const VexaImage& image)
{
    return make(floats(image), [&](VexaImage& result) { return al::divide(value, image, result); });
}

VexaImage operator/(const VexaScalar& values, const VexaImage& image)
{
    return make(resultOf(values, image), [&](VexaImage& result) { return al::divide(values, image, result); });
}

VexaImage operator&(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::AND(a, b, result); });
}

VexaImage operator&(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::AND(image, value, result); });
}

VexaImage operator&(Vexa32s value, const VexaImage& image)
{
    return image & value;
}

VexaImage operator|(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::OR(a, b, result); });
}

VexaImage operator|(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::OR(image, value, result); });
}

VexaImage operator|(Vexa32s value, const VexaImage& image)
{
    return image | value;
}

VexaImage operator^(const VexaImage& a, const VexaImage& b)
{
    return make(empty, [&](VexaImage& result) { return al::XOR(a, b, result); });
}

VexaImage operator^(const VexaImage& image, Vexa32s value)
{
    return make(empty, [&](VexaImage& result) { return al::XOR(image, value, result); });
}

VexaImage operator^(Vexa32s value, const VexaImage& image)
{
    return image ^ value;
}

VexaImage operator~(const VexaImage& image)
{
    return make(empty, [&](VexaImage& result) { return al::NOT(image, result); });
}

VexaImage operator<<(const VexaImage& image, Vexa32s bits)
{
    return make(empty, [&](VexaImage& result) { return al::SHL(image, bits, result); });
}

VexaImage operator>>(const VexaImage& image, Vexa32s bits)
{
    return make(empty, [&](VexaImage& result) { return al::SHR(image, bits, result); });
}

VexaImage& VexaImage::operator++()
{
    (void)al::add(*this, 1.0, *this);
    return *this;
}

VexaImage& VexaImage::operator--()
{
    (void)al::add(*this, -1.0, *this);
    return *this;
}

VexaImage VexaImage::operator++(int)
{
    VexaImage before(*this);
    ++*this;
    return before;
}

VexaImage VexaImage::operator--(int)
{
    VexaImage before(*this);
    --*this;
    return before;
}

VexaImage VexaImage::operator-() const
{
    return make(empty, [&](VexaImage& result) { return al::multiply(*this, -1.0, result); });
}

VexaImage& VexaImage::operator+=(const VexaImage& image)
{
    (void)al::add(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator+=(Vexa32s value)
{
    return *this += static_cast<Vexa64f>(value);
}

VexaImage& VexaImage::operator+=(Vexa64f value)
{
    (void)al::add(*this, value, *this);
    return *this;
}

VexaImage& VexaImage::operator+=(const VexaScalar& values)
{
    (void)al::add(*this, values, *this);
    return *this;
}

VexaImage& VexaImage::operator-=(const VexaImage& image)
{
    (void)al::subtract(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator-=(Vexa32s value)
{
    return *this += 0.0 - value;
}

VexaImage& VexaImage::operator-=(Vexa64f value)
{
    return *this += -value;
}

VexaImage& VexaImage::operator-=(const VexaScalar& values)
{
    return *this += -values;
}

VexaImage& VexaImage::operator*=(const VexaImage& image)
{
    (void)al::multiply(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator*=(Vexa32s value)
{
    return *this *= static_cast<Vexa64f>(value);
}

VexaImage& VexaImage::operator*=(Vexa64f value)
{
    (void)al::multiply(*this, value, *this);
    return *this;
}

VexaImage& VexaImage::operator*=(const VexaScalar& values)
{
    (void)al::multiply(*this, values, *this);
    return *this;
}

VexaImage& VexaImage::operator/=(const VexaImage& image)
{
    (void)al::divide(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator/=(Vexa32s value)
{
    return *this *= 1.0 / value;
}

VexaImage& VexaImage::operator/=(Vexa64f value)
{
    return *this *= 1.0 / value;
}

VexaImage& VexaImage::operator/=(const VexaScalar& values)
{
    return *this *= reciprocals(values);
}

VexaImage& VexaImage::operator&=(const VexaImage& image)
{
    (void)al::AND(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator&=(Vexa32s value)
{
    (void)al::AND(*this, value, *this);
    return *this;
}

VexaImage& VexaImage::operator|=(const VexaImage& image)
{
    (void)al::OR(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator|=(Vexa32s value)
{
    (void)al::OR(*this, value, *this);
    return *this;
}

VexaImage& VexaImage::operator^=(const VexaImage& image)
{
    (void)al::XOR(*this, image, *this);
    return *this;
}

VexaImage& VexaImage::operator^=(Vexa32s value)
{
    (void)al::XOR(*this, value, *this);
    return *this;
}

VexaImage& VexaImage::operator<<=(Vexa32s bits)
{
    (void)al::SHL(*this, bits, *this);
    return *this;
}

VexaImage& VexaImage::operator>>=(Vexa32s bits)
{
    (void)al::SHR(*this, bits, *this);
    return *this;
}
