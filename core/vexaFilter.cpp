/// @file
/// Filters. Copies of a filter share a block of page-locked memory: a count of its owners, then the coefficients.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>

#include "platform.h"
#include "vexaCore.h"

namespace platform = vexa::platform;

namespace {

/// What lies in front of the coefficients.
struct alignas(std::max_align_t) Owners {
    std::atomic<int> count;
};

Owners* ownersOf(Vexa32f* coeffs)
{
    return reinterpret_cast<Owners*>(coeffs) - 1;
}

/// Coefficients with one owner; null if there is no memory for them or their bytes are past a signed 32-bit integer.
Vexa32f* allocateCoefficients(Vexa32s w, Vexa32s h)
{
    const long long count = static_cast<long long>(w) * h;
    constexpr auto size = static_cast<long long>(sizeof(Vexa32f));
    if (count < 0 || count > std::numeric_limits<Vexa32s>::max() / size) return nullptr;
    void* const block = platform::allocatePinned(sizeof(Owners) + static_cast<std::size_t>(count * size));
    if (block == nullptr) return nullptr;
    return reinterpret_cast<Vexa32f*>(new (block) Owners{{1}} + 1);
}

void addOwner(Vexa32f* coeffs)
{
    if (coeffs != nullptr) ownersOf(coeffs)->count.fetch_add(1, std::memory_order_relaxed);
}

/// The last owner frees the block.
void removeOwner(Vexa32f* coeffs)
{
    if (coeffs == nullptr) return;
    if (ownersOf(coeffs)->count.fetch_sub(1, std::memory_order_acq_rel) == 1) platform::releasePinned(ownersOf(coeffs));
}

/// What a coefficient that does not exist refers to; always read as 0.
Vexa32f __dummy;

Vexa32f& nothing()
{
    __dummy = 0;
    return __dummy;
}

int halfBelow(int size)
{
    return static_cast<int>((1 - static_cast<long long>(size)) / 2);
}

}  // namespace

VexaPoint2D<int> __vexaDefaultAnchor(int w, int h)
{
    return {halfBelow(w), halfBelow(h)};
}

VexaFilter::VexaFilter() : _width(0), _height(0), _coeffs(nullptr), _init(false) {}

VexaFilter::VexaFilter(Vexa32s w, Vexa32s h) : VexaFilter()
{
    (void)create(w, h);
}

VexaFilter::VexaFilter(Vexa32s w, Vexa32s h, Vexa32f* coeffs) : VexaFilter()
{
    (void)create(w, h, coeffs);
}

VexaFilter::VexaFilter(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor) : VexaFilter()
{
    (void)create(w, h, anchor);
}

VexaFilter::VexaFilter(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor, Vexa32f* coeffs) : VexaFilter()
{
    (void)create(w, h, anchor, coeffs);
}

VexaFilter::VexaFilter(const VexaSize& size) : VexaFilter(size.width, size.height) {}

VexaFilter::VexaFilter(const VexaSize& size, Vexa32f* coeffs) : VexaFilter(size.width, size.height, coeffs) {}

VexaFilter::VexaFilter(const VexaSize& size, const VexaPoint2D<int>& anchor)
    : VexaFilter(size.width, size.height, anchor)
{}

VexaFilter::VexaFilter(const VexaSize& size, const VexaPoint2D<int>& anchor, Vexa32f* coeffs)
    : VexaFilter(size.width, size.height, anchor, coeffs)
{}

VexaFilter::VexaFilter(const VexaFilter& other)
    : _width(other._width), _height(other._height), _coeffs(other._coeffs), _anchor(other._anchor), _init(other._init)
{
    addOwner(_coeffs);
}

VexaFilter& VexaFilter::operator=(const VexaFilter& other)
{
    if (this == &other) return *this;
    addOwner(other._coeffs);
    removeOwner(_coeffs);
    _width = other._width;
    _height = other._height;
    _coeffs = other._coeffs;
    _anchor = other._anchor;
    _init = other._init;
    return *this;
}

VexaFilter::~VexaFilter()
{
    (void)release();
}

bool VexaFilter::create(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor)
{
    return create(w, h, anchor, nullptr);
}

bool VexaFilter::create(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor, Vexa32f* coeffs)
{
    if (_init) return false;
    Vexa32f* const created = allocateCoefficients(w, h);
    if (created == nullptr) return false;
    _width = w;
    _height = h;
    _coeffs = created;
    _anchor = anchor;
    _init = true;
    const std::size_t count = static_cast<std::size_t>(static_cast<long long>(w) * h);
    if (coeffs != nullptr)
        std::copy_n(coeffs, count, created);
    else
        std::fill_n(created, count, 0.0F);
    return true;
}

bool VexaFilter::create(Vexa32s w, Vexa32s h)
{
    return create(w, h, nullptr);
}

bool VexaFilter::create(Vexa32s w, Vexa32s h, Vexa32f* coeffs)
{
    return create(w, h, __vexaDefaultAnchor(w, h), coeffs);
}

bool VexaFilter::create(const VexaSize& size)
{
    return create(size.width, size.height);
}

bool VexaFilter::create(const VexaSize& size, Vexa32f* coeffs)
{
    return create(size.width, size.height, coeffs);
}

bool VexaFilter::create(const VexaSize& size, const VexaPoint2D<int>& anchor)
{
    return create(size.width, size.height, anchor);
}

bool VexaFilter::create(const VexaSize& size, const VexaPoint2D<int>& anchor, Vexa32f* coeffs)
{
    return create(size.width, size.height, anchor, coeffs);
}

bool VexaFilter::release()
{
    if (!_init) return false;
    removeOwner(_coeffs);
    _init = false;
    _width = 0;
    _height = 0;
    _coeffs = nullptr;
    return true;
}

Vexa32s VexaFilter::width() const
{
    return _width;
}

Vexa32s VexaFilter::height() const
{
    return _height;
}

bool VexaFilter::isInitialized() const
{
    return _init;
}

VexaPoint2D<int> VexaFilter::anchor() const
{
    return _anchor;
}

Vexa32f* VexaFilter::coeffs() const
{
    return _coeffs;
}

Vexa32f& VexaFilter::operator[](int i)
{
    return _init && i >= 0 && i < _width * _height ? _coeffs[i] : nothing();
}

const Vexa32f& VexaFilter::operator[](int i) const
{
    return const_cast<VexaFilter&>(*this)[i];
}

Vexa32f& VexaFilter::operator()(int x, int y)
{
    const bool exists = _init && x >= 0 && x < _width && y >= 0 && y < _height;
    return exists ? _coeffs[_width * y + x] : nothing();
}

const Vexa32f& VexaFilter::operator()(int x, int y) const
{
    return const_cast<VexaFilter&>(*this)(x, y);
}

namespace {

constexpr int side = 3;

VexaFilter threeByThree(const float (&coeffs)[side * side])
{
    VexaFilter filter(side, side);
    for (int i = 0; i < side * side; ++i) filter[i] = coeffs[i];
    return filter;
}

/// A Gaussian of height 1, sampled around the middle of the filter, and the sum of its samples.
void get_gaussian_kernel(VexaFilter& filter, float* sum, float c)
{
    float Y = (1.0F - static_cast<float>(filter.height())) / 2.0F;
    for (int y = 0; y < filter.height(); ++y, ++Y) {
        float X = (1.0F - static_cast<float>(filter.width())) / 2.0F;
        for (int x = 0; x < filter.width(); ++x, ++X) {
            filter(x, y) = std::exp((X * X + Y * Y) * c);
            *sum += filter(x, y);
        }
    }
}

/// The parts of the Laplacian for a shape alpha, all over alpha + 1.
struct LaplacianParts {
    float corner;
    float edge;
    float centre;
};

LaplacianParts laplacianParts(float alpha)
{
    const float notBelow = alpha < 0.0F ? 0.0F : alpha;
    const float a = notBelow > 1.0F ? 1.0F : notBelow;
    return {a / (a + 1.0F), (1.0F - a) / (a + 1.0F), 4.0F / (a + 1.0F)};
}

}  // namespace

VexaFilter VexaSpecialFilters::average(const VexaSize& size)
{
    VexaFilter filter(size);
    // Of the filter and not of the size, whose product may be past all integers.
    const int count = filter.width() * filter.height();
    for (int i = 0; i < count; ++i) filter[i] = 1.0F / static_cast<float>(count);
    return filter;
}

VexaFilter VexaSpecialFilters::gaussian(const VexaSize& size, float sigma)
{
    VexaFilter filter(size);
    const float c = -1.0F / ((sigma + sigma) * sigma);
    float sum = 0;
    get_gaussian_kernel(filter, &sum, c);
    constexpr float negligible = std::numeric_limits<float>::epsilon();
    if (sum > negligible || sum < -negligible)
        for (int i = 0; i < filter.width() * filter.height(); ++i) filter[i] /= sum;
    return filter;
}

VexaFilter VexaSpecialFilters::laplacian(float alpha)
{
    const LaplacianParts l = laplacianParts(alpha);
    return threeByThree({l.corner, l.edge, l.corner, l.edge, -l.centre, l.edge, l.corner, l.edge, l.corner});
}

VexaFilter VexaSpecialFilters::sobel()
{
    return threeByThree({1, 2, 1, 0, 0, 0, -1, -2, -1});
}

VexaFilter VexaSpecialFilters::scharr()
{
    return threeByThree({3, 10, 3, 0, 0, 0, -3, -10, -3});
}

VexaFilter VexaSpecialFilters::prewitt()
{
    return threeByThree({1, 1, 1, 0, 0, 0, -1, -1, -1});
}

VexaFilter VexaSpecialFilters::unsharp(float alpha)
{
    const LaplacianParts l = laplacianParts(alpha);
    return threeByThree(
        {-l.corner, -l.edge, -l.corner, -l.edge, l.centre + 1.0F, -l.edge, -l.corner, -l.edge, -l.corner});
}
