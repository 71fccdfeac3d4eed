/// @file
/// Filters as objects: creation, copies, access, and the kernels that are made by formulas.

#include <array>
#include <cmath>
#include <limits>
#include <thread>

#include "images.h"

namespace {

using Filters = VexaSpecialFilters;

std::vector<float> coefficientsOf(const VexaFilter& filter)
{
    return {filter.coeffs(), filter.coeffs() + filter.width() * filter.height()};
}

void expectFilter(const VexaFilter& filter, VexaSize size, VexaPoint2D<int> anchor, const std::vector<float>& coeffs)
{
    EXPECT_TRUE(filter.isInitialized());
    EXPECT_EQ(filter.width(), size.width);
    EXPECT_EQ(filter.height(), size.height);
    EXPECT_EQ(filter.anchor().x, anchor.x);
    EXPECT_EQ(filter.anchor().y, anchor.y);
    EXPECT_EQ(coefficientsOf(filter), coeffs);
}

void expectEmpty(const VexaFilter& filter)
{
    EXPECT_FALSE(filter.isInitialized());
    EXPECT_EQ(filter.width(), 0);
    EXPECT_EQ(filter.height(), 0);
    EXPECT_EQ(filter.coeffs(), nullptr);
}

TEST(Filter, EveryWayToCreateOne)
{
    std::vector<float> values = {1, 2, 3, 4, 5, 6};
    const std::vector<float> zeros(6, 0.0F);
    const VexaSize size(2, 3);
    const VexaPoint2D<int> anchor(4, -7);
    const VexaPoint2D<int> usual(0, -1);
    float* const given = values.data();
    expectFilter(VexaFilter(2, 3), size, usual, zeros);
    expectFilter(VexaFilter(2, 3, given), size, usual, values);
    expectFilter(VexaFilter(2, 3, anchor), size, anchor, zeros);
    expectFilter(VexaFilter(2, 3, anchor, given), size, anchor, values);
    expectFilter(VexaFilter(size), size, usual, zeros);
    expectFilter(VexaFilter(size, given), size, usual, values);
    expectFilter(VexaFilter(size, anchor), size, anchor, zeros);
    expectFilter(VexaFilter(size, anchor, given), size, anchor, values);

    VexaFilter filter;
    expectEmpty(filter);
    EXPECT_FALSE(filter.release());
    EXPECT_TRUE(filter.create(2, 3, given));
    EXPECT_FALSE(filter.create(5, 5, anchor));
    expectFilter(filter, size, usual, values);
    EXPECT_TRUE(filter.release());
    expectEmpty(filter);
    EXPECT_EQ(filter.anchor().y, -1);
    EXPECT_TRUE(filter.create(size, anchor, nullptr));
    expectFilter(filter, size, anchor, zeros);
    expectEmpty(VexaFilter(-1, 3));
}

TEST(Filter, AnchorsTruncateTowardZero)
{
    const int anchors[] = {0, 0, -1, -1, -2, -2, -3};
    for (int size = 1; size <= 7; ++size) {
        EXPECT_EQ(__vexaDefaultAnchor(size, 1).x, anchors[size - 1]) << size;
        EXPECT_EQ(VexaFilter(1, size).anchor().y, anchors[size - 1]) << size;
    }
}

/// Copies share their coefficients, which live as long as the last of them.
TEST(Filter, CopiesShareTheirCoefficients)
{
    VexaFilter first(2, 1);
    VexaFilter copy(first);
    VexaFilter assigned(3, 3);
    assigned = copy;
    first[1] = 5.0F;
    EXPECT_EQ(copy.coeffs(), first.coeffs());
    EXPECT_TRUE(first.release());
    EXPECT_TRUE(copy.release());
    expectFilter(assigned, {2, 1}, {0, 0}, {0, 5});
    const VexaFilter& self = assigned;
    assigned = self;
    EXPECT_EQ(assigned[1], 5.0F);
    const VexaFilter empty;
    assigned = empty;
    expectEmpty(assigned);
}

/// The count of owners is what threads share.
TEST(Filter, CopiesInThreads)
{
    const VexaFilter filter(3, 3);
    const auto copyOften = [&filter] {
        for (int i = 0; i < 20000; ++i) {
            const VexaFilter copy(filter);
            ASSERT_EQ(copy.width(), 3);
        }
    };
    std::thread other(copyOften);
    copyOften();
    other.join();
    EXPECT_EQ(filter(2, 2), 0.0F);
}

TEST(Filter, AccessOutsideReadsZero)
{
    std::vector<float> values = {1, 2, 3, 4, 5, 6};
    VexaFilter filter(3, 2, values.data());
    EXPECT_EQ(filter(2, 1), 6.0F);
    EXPECT_EQ(filter(0, 1), 4.0F);
    EXPECT_EQ(filter[4], 5.0F);
    filter(3, 0) = 5.0F;
    const VexaFilter& constant = filter;
    EXPECT_EQ(constant(3, 0), 0.0F);
    for (const int index : {-1, 6}) EXPECT_EQ(filter[index] = 7.0F, 7.0F);
    EXPECT_EQ(constant[6], 0.0F);
    EXPECT_EQ(constant(0, 2), 0.0F);
    EXPECT_EQ(constant(-1, 1), 0.0F);
    EXPECT_EQ(VexaFilter()[0], 0.0F);
    EXPECT_EQ(coefficientsOf(filter), values);
}

TEST(SpecialFilters, ThreeByThree)
{
    const struct {
        VexaFilter filter;
        std::vector<float> coeffs;
    } filters[] = {
        {Filters::sobel(), {1, 2, 1, 0, 0, 0, -1, -2, -1}},
        {Filters::scharr(), {3, 10, 3, 0, 0, 0, -3, -10, -3}},
        {Filters::prewitt(), {1, 1, 1, 0, 0, 0, -1, -1, -1}},
        {Filters::laplacian(0), {0, 1, 0, 1, -4, 1, 0, 1, 0}},
        {Filters::laplacian(-1), {0, 1, 0, 1, -4, 1, 0, 1, 0}},
        {Filters::laplacian(1), {0.5F, 0, 0.5F, 0, -2, 0, 0.5F, 0, 0.5F}},
        {Filters::laplacian(2), {0.5F, 0, 0.5F, 0, -2, 0, 0.5F, 0, 0.5F}},
        {Filters::unsharp(0), {0, -1, 0, -1, 5, -1, 0, -1, 0}},
        {Filters::unsharp(1), {-0.5F, 0, -0.5F, 0, 3, 0, -0.5F, 0, -0.5F}},
        {Filters::laplacian(0.25F), {0.2F, 0.6F, 0.2F, 0.6F, -3.2F, 0.6F, 0.2F, 0.6F, 0.2F}},
    };
    for (const auto& [filter, coeffs] : filters) expectFilter(filter, {3, 3}, {-1, -1}, coeffs);
}

TEST(SpecialFilters, Average)
{
    expectFilter(Filters::average({2, 3}), {2, 3}, {0, -1}, std::vector<float>(6, 1.0F / 6.0F));
}

TEST(SpecialFilters, GaussianSamplesTheBell)
{
    const VexaSize sizes[] = {{3, 3}, {4, 4}, {7, 2}, {1, 9}};
    for (const VexaSize& size : sizes) {
        const double sigma = 1.25;
        const VexaFilter filter = Filters::gaussian(size, 1.25F);
        double sum = 0;
        std::vector<double> bell;
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                const double dx = x - (size.width - 1) / 2.0;
                const double dy = y - (size.height - 1) / 2.0;
                bell.push_back(std::exp(-(dx * dx + dy * dy) / (2 * sigma * sigma)));
                sum += bell.back();
            }
        for (std::size_t i = 0; i < bell.size(); ++i)
            EXPECT_NEAR(double(filter[static_cast<int>(i)]), bell[i] / sum, 1e-7) << i;
    }
    const VexaFilter known = Filters::gaussian({3, 3}, 1.0F);
    EXPECT_NEAR(double(known(1, 1)), 0.20418, 5e-6);
    EXPECT_NEAR(double(known(0, 1)), 0.12384, 5e-6);
    EXPECT_NEAR(double(known(2, 0)), 0.07511, 5e-6);
    // All of a bell this narrow is below the smallest sum that is divided by.
    EXPECT_NEAR(double(Filters::gaussian({2, 2}, 0.1F)[3]), std::exp(-25.0), 1e-15);
}

}  // namespace
