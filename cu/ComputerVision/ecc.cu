/// @file
/// Alignment by the enhanced correlation coefficient: a driver on the host, whose steps are operations of the library.
/// Products with the Jacobian it takes in two sweeps over the warped gradients, pixel by pixel. The Jacobian as an
/// image, and products with that, are for callers.

#include <climits>
#include <cmath>
#include <cstdio>

#include "arguments.h"
#include "checks.h"
#include "portable/fold_image.h"
#include "temporaries.h"
#include "vexaComputerVision.h"

using namespace vexa;
using statistics::Elements;
using statistics::Products;

VEXA_KERNEL kernel_generate_coordinate_grid_32fc1(float* xGrid, float* yGrid, int width, int height, int step)
{
    const Plane<float> toX{xGrid, step};
    const Plane<float> toY{yGrid, step};
    forEachPixel(width, height, [=](int x, int y) {
        toX.row(y)[x] = static_cast<float>(x);
        toY.row(y)[x] = static_cast<float>(y);
    });
}

namespace {

constexpr int numberOfParameters = 6;

using Derivatives = Pixel<float, numberOfParameters>;

/// The derivatives of a pixel of an affinely warped image by the parameters, from its gradient and its place.
VEXA_DEVICE Derivatives derivativesOf(float gradX, float gradY, float x, float y)
{
    return {{x * gradX, x * gradY, y * gradX, y * gradY, gradX, gradY}};
}

}  // namespace

/// The derivatives of an affinely warped image, in blocks side by side.
VEXA_KERNEL kernel_image_jacobian_affine_ECC(const float* gradX, const float* gradY, const float* xGrid,
                                             const float* yGrid, float* jacobian, int width, int height, int step,
                                             int jacobianStep)
{
    const Plane<const float> alongX{gradX, step};
    const Plane<const float> alongY{gradY, step};
    const Plane<const float> columns{xGrid, step};
    const Plane<const float> rows{yGrid, step};
    const Plane<float> to{jacobian, jacobianStep};
    forEachPixel(width, height, [=](int x, int y) {
        const Derivatives derivatives =
            derivativesOf(alongX.row(y)[x], alongY.row(y)[x], columns.row(y)[x], rows.row(y)[x]);
        float* const first = to.row(y) + x;
        for (int i = 0; i < numberOfParameters; ++i)
            first[static_cast<std::ptrdiff_t>(i) * width] = derivatives.element[i];
    });
}

namespace {

/// Parts of an image that lie side by side.
struct Blocks {
    Plane<const float> plane;
    int width;

    VEXA_DEVICE Elements<float, 1> operator[](int i) const
    {
        return {{plane.pixels + static_cast<std::ptrdiff_t>(i) * width, plane.pitch}};
    }
};

/// The products that a projection asks for: element (x, y) is that of block y of one image and block x of the other. A
/// symmetric one takes the part on and above the diagonal for the part below as well.
struct Projection {
    int columns;
    int rows;
    bool symmetric;

    VEXA_DEVICE int count() const { return columns * rows; }
    VEXA_DEVICE int column(int i) const { return i % columns; }
    VEXA_DEVICE int row(int i) const { return i / columns; }
    VEXA_DEVICE bool computes(int i) const { return !symmetric || column(i) >= row(i); }
};

using Total = Products<1>::Total;

/// The products of a tile lie side by side, so that its blocks are read from memory once and from the caches then.
VEXA_LOCAL_KERNEL kernel_projectTiles(Tiles tiles, Projection projection, Blocks ofRows, Blocks ofColumns,
                                      double* partials)
{
    const std::size_t bytesPerTile =
        2 * sizeof(float) * static_cast<std::size_t>(tiles.tileWidth) * static_cast<std::size_t>(tiles.tileHeight);
    const auto foldOne = [=](int i, Share share) {
        const int element = i % projection.count();
        Products<1> products;
        if (projection.computes(element))
            foldTile<1>(products, tiles[i / projection.count()], share, ofRows[projection.row(element)],
                        ofColumns[projection.column(element)]);
        return products.total();
    };
    foldEach<Total>(tiles.count * projection.count(), bytesPerTile, foldOne,
                    [=](int i, const Total& total) { partials[i] = total.sum[0]; });
}

VEXA_LOCAL_KERNEL kernel_mergeProjection(const double* partials, int tiles, Projection projection, float* dst, int step,
                                         int height)
{
    const Plane<float> to{dst, step};
    const auto mergeShare = [=](int element, Share share) {
        Total total = Total::none();
        for (int tile = share.index; tile < tiles; tile += Share::count)
            total.sum[0] += partials[static_cast<std::ptrdiff_t>(tile) * projection.count() + element];
        return total;
    };
    foldEach<Total>(projection.count(), 0, mergeShare, [=](int element, const Total& total) {
        if (!projection.computes(element)) return;
        const int x = projection.column(element);
        const int y = projection.row(element);
        to.row(y)[x] = static_cast<float>(total.sum[0]);
        if (projection.symmetric && x < height) to.row(x)[y] = static_cast<float>(total.sum[0]);
    });
}

/// Launches both kernels.
VexaStatus project(const Projection& projection, const Blocks& ofRows, const Blocks& ofColumns, int height,
                   VexaImage& dst)
{
    const Tiles tiles = tilesOf(ofRows.width, height);
    const long long count = static_cast<long long>(tiles.count) * projection.columns * projection.rows;
    if (count > INT_MAX) return VEXA_MEM_ALLOC_ERR;
    double* partials = nullptr;
    if (const VexaStatus failed = allocateElements(partials, static_cast<std::size_t>(count))) return failed;
    constexpr int largestGrid = 1 << 20;
    const auto blocks = [](long long folds) {
        return Extent{blockSide * static_cast<int>(std::min<long long>(folds, largestGrid)), blockSide};
    };
    launch(kernel_projectTiles, blocks(count), nullptr, tiles, projection, ofRows, ofColumns, partials);
    launch(kernel_mergeProjection, blocks(count / tiles.count), nullptr, partials, tiles.count, projection,
           dst.ptr<f32>(), pitchOf<f32>(dst), dst.height());
    return platform::release(partials);
}

}  // namespace

VexaStatus vexa_generate_grid_32fc1(Vexa32f* xGrid, Vexa32f* yGrid, const int width, const int height, const int pitch,
                                    cudaStream_t stream)
{
    launch(kernel_generate_coordinate_grid_32fc1, {width, height}, stream, xGrid, yGrid, width, height,
           elements<f32>(pitch));
    return VEXA_SUCCESS;
}

VexaStatus vexa_project_onto_jacobian_ECC(const VexaImage& src1, const VexaImage& src2, VexaImage& dst)
{
    if (const VexaStatus failed = initialized(src1, src2, dst)) return failed;
    for (const VexaImage* const image : {&src1, &src2, static_cast<const VexaImage*>(&dst)})
        if (image->type() != VEXA_32FC1) return VEXA_TYPE_NOT_SUPPORTED_ERROR;

    const bool symmetric = src1.width() == src2.width();
    const Projection projection = symmetric ? Projection{dst.width(), std::min(dst.width(), dst.height()), true}
                                            : Projection{1, dst.height(), false};
    const int width = src2.width() / projection.columns;
    if (width < 1 || src1.width() / width < projection.rows || src1.height() != src2.height())
        return VEXA_NOT_SUPPORTED_MODE_ERROR;
    const auto blocksOf = [width](const VexaImage& image) {
        return Blocks{{image.ptr<f32>(), pitchOf<f32>(image)}, width};
    };
    return project(projection, blocksOf(src1), blocksOf(src2), src1.height(), dst);
}

void initEye(Vexa64f map[][3])
{
    if (map == nullptr) return;
    for (int row = 0; row < 2; ++row)
        for (int column = 0; column < 3; ++column) map[row][column] = row == column ? 1 : 0;
}

namespace {

namespace al = arithmeticLogical;
namespace st = imageStatistics;

/// The parameters of a map, in the order of the blocks of the Jacobian: column by column.
Vexa64f& parameter(Vexa64f (*map)[3], int i)
{
    return map[i % 2][i / 2];
}

// ---- sums over a warped image ----

/// The column and the row of a pixel, as inputs of a fold.
struct Columns {
    static constexpr int bytesPerPixel = 0;

    struct From {
        int first;
        VEXA_DEVICE float operator()(int i) const { return static_cast<float>(first + i); }
        VEXA_DEVICE From pixel(int x) const { return {first + x}; }
        template <int n>
        VEXA_DEVICE From pixels(int x) const
        {
            return pixel(x);
        }
    };

    VEXA_DEVICE From row(int x, int /*y*/) const { return {x}; }
};

struct Rows {
    static constexpr int bytesPerPixel = 0;

    struct At {
        float y;
        VEXA_DEVICE float operator()(int /*i*/) const { return y; }
        VEXA_DEVICE At pixel(int /*x*/) const { return *this; }
        template <int n>
        VEXA_DEVICE At pixels(int /*x*/) const
        {
            return *this;
        }
    };

    VEXA_DEVICE At row(int /*x*/, int y) const { return {static_cast<float>(y)}; }
};

/// N sums in lanes of their own, of products of floats.
template <int N>
struct LanesOfSums : statistics::RowsDontMatter {
    static constexpr int lanes = laneCount<f32>;
    using Total = statistics::Numbers<double, N>;

    alignas(laneAlignment) double sum[N][lanes] = {};

    VEXA_DEVICE void add(int i, int lane, float a, float b)
    {
        sum[i][lane] += static_cast<double>(a) * static_cast<double>(b);
    }

    VEXA_DEVICE Total total() const
    {
        Total total = {};
        for (int i = 0; i < N; ++i)
            for (int lane = 0; lane < lanes; ++lane) total.sum[i] += sum[i][lane];
        return total;
    }
};

using Parameters = std::make_index_sequence<numberOfParameters>;

/// The Gauss-Newton matrix: the part on and above the diagonal, row by row.
struct Hessian : LanesOfSums<numberOfParameters*(numberOfParameters + 1) / 2> {
    VEXA_DEVICE void take(int lane, float gradX, float gradY, float x, float y)
    {
        addRows(lane, derivativesOf(gradX, gradY, x, y), Parameters());
    }

private:
    template <std::size_t... i>
    VEXA_DEVICE void addRows(int lane, Derivatives derivatives, std::index_sequence<i...>)
    {
        (addRow<i>(lane, derivatives, std::make_index_sequence<numberOfParameters - i>()), ...);
    }

    template <std::size_t i, std::size_t... j>
    VEXA_DEVICE void addRow(int lane, Derivatives derivatives, std::index_sequence<j...>)
    {
        constexpr std::size_t diagonal = i * numberOfParameters - i * (i - 1) / 2;
        (add(diagonal + j, lane, derivatives.element[i], derivatives.element[i + j]), ...);
    }
};

/// The products of the derivatives with the warped image, those with the template, and that of both images.
struct Projections : LanesOfSums<2 * numberOfParameters + 1> {
    VEXA_DEVICE void take(int lane, float gradX, float gradY, float x, float y, float image, float templ)
    {
        add(lane, derivativesOf(gradX, gradY, x, y), image, templ, Parameters());
    }

private:
    template <std::size_t... i>
    VEXA_DEVICE void add(int lane, Derivatives derivatives, float image, float templ, std::index_sequence<i...>)
    {
        (LanesOfSums::add(i, lane, derivatives.element[i], image), ...);
        (LanesOfSums::add(numberOfParameters + i, lane, derivatives.element[i], templ), ...);
        LanesOfSums::add(2 * numberOfParameters, lane, image, templ);
    }
};

template <typename Total>
struct StoreTotal {
    Total* to;
    VEXA_DEVICE void operator()(const Total& total) const { *to = total; }
};

bool isThere(const Elements<f32, 1>& image)
{
    return image.plane.pixels != nullptr;
}
template <typename Coordinate>
bool isThere(const Coordinate& /*coordinate*/)
{
    return true;
}

/// A fold of float images of one size. Zeros where it fails.
template <typename Fold, typename... Input>
typename Fold::Total foldOf(const VexaSize& size, const Input&... input)
{
    using Total = typename Fold::Total;
    Total total = {};
    Total* block = nullptr;
    if (!(isThere(input) && ...)) return total;
    if (allocateElements(block, static_cast<std::size_t>(tilesOf(size.width, size.height).count) + 1)) return total;
    statistics::fold<Fold, 1>(size.width, size.height, block + 1, nullptr, statistics::FromNothing<Fold>{},
                              StoreTotal<Total>{block}, input...);
    (void)platform::copyToHost(&total, block, sizeof total);
    (void)platform::release(block);
    return total;
}

// ---- small matrices ----

/// As the library multiplies matrices: ascending fused sums of floats.
struct Vector {
    float element[numberOfParameters];
};

struct Matrix {
    float element[numberOfParameters][numberOfParameters];

    Vector operator*(const Vector& v) const
    {
        Vector product = {};
        for (int i = 0; i < numberOfParameters; ++i)
            for (int k = 0; k < numberOfParameters; ++k)
                product.element[i] = std::fma(element[i][k], v.element[k], product.element[i]);
        return product;
    }
};

double dot(const Vector& a, const Vector& b)
{
    double sum = 0;
    for (int i = 0; i < numberOfParameters; ++i)
        sum += static_cast<double>(a.element[i]) * static_cast<double>(b.element[i]);
    return sum;
}

Matrix symmetric(const Hessian::Total& upper)
{
    Matrix matrix;
    int next = 0;
    for (int i = 0; i < numberOfParameters; ++i)
        for (int j = i; j < numberOfParameters; ++j)
            matrix.element[i][j] = matrix.element[j][i] = static_cast<float>(upper.sum[next++]);
    return matrix;
}

// ---- the driver ----

/// The images of an alignment. Statuses of steps are dropped: what could not be made is null or 0, which all steps
/// bear.
class Alignment {
public:
    Alignment(VexaImage& templ, VexaImage& input);

    /// A step of the map.
    /// @return false, with the map as it was, where the correlation would fall
    [[nodiscard]] bool step(Vexa64f (*map)[3]);

    /// The correlation coefficient before the last step.
    double coefficient() const { return _coefficient; }

private:
    void prepareMask();
    void warp(Vexa64f (*map)[3]);
    Matrix inverseOf(const Matrix& hessian);

    VexaSize _size;
    VexaImage _templateFloat;
    VexaImage _templateZeroMean;
    VexaImage _imageFloat;
    VexaImage _imageWarped;
    VexaImage _imageMask;
    VexaImage _preMask;
    VexaImage _preMaskFloat;
    VexaImage _gradientX;
    VexaImage _gradientY;
    VexaImage _gradientXWarped;
    VexaImage _gradientYWarped;
    VexaImage _hessian;
    VexaImage _hessianInverse;
    VexaScalar _imageMean;
    VexaScalar _imageDeviation;
    VexaScalar _templateMean;
    VexaScalar _templateDeviation;
    VexaScalar _count;
    double _coefficient = -1.0;
};

// The inverse takes the pitch of its source for that of a copy without gaps: there are none in these.
Alignment::Alignment(VexaImage& templ, VexaImage& input)
    : _size(templ.size()),
      _templateZeroMean(_size, VEXA_32FC1),
      _imageWarped(_size, VEXA_32FC1),
      _imageMask(_size, VEXA_8UC1),
      _preMask(input.size(), VEXA_8UC1),
      _gradientXWarped(_size, VEXA_32FC1),
      _gradientYWarped(_size, VEXA_32FC1),
      _hessian(numberOfParameters, numberOfParameters, sizeof(Vector), 32, 1),
      _hessianInverse(numberOfParameters, numberOfParameters, sizeof(Vector), 32, 1)
{
    (void)_hessianInverse.set(0.0);
    (void)templ.convertTo(_templateFloat, VEXA_32FC1, 1.0F, 0.0F);
    prepareMask();
    (void)input.convertTo(_imageFloat, VEXA_32FC1, 1.0F, 0.0F);
    (void)imageFiltering::imageGradients(_imageFloat, _gradientX, _gradientY, VEXA_GRADIENT_CENTRAL_DIFFERENCE);
    for (VexaImage* const gradient : {&_gradientX, &_gradientY}) {
        *gradient *= 0.5;
        *gradient *= _preMaskFloat;
    }
}

/// All pixels of the input are valid, and stay so: a mask that had been blurred would lose the pixels near its edges
/// here.
void Alignment::prepareMask()
{
    (void)_preMask.set(1.0);
    (void)_preMask.convertTo(_preMaskFloat, VEXA_32FC1, 1.0F, 0.0F);
    _preMaskFloat *= static_cast<Vexa64f>(0.5F / 0.95F);
    (void)al::round(_preMaskFloat, _preMaskFloat);
    (void)_preMaskFloat.convertTo(_preMask, VEXA_8UC1, 1.0F, 0.0F);
}

void Alignment::warp(Vexa64f (*map)[3])
{
    const auto take = [map](const VexaImage& from, VexaImage& to, VexaInterpolationType interpolation) {
        (void)geometryTransforms::warpAffineBack(from, to, map, interpolation);
    };
    take(_imageFloat, _imageWarped, VEXA_INTER_LINEAR);
    take(_gradientX, _gradientXWarped, VEXA_INTER_LINEAR);
    take(_gradientY, _gradientYWarped, VEXA_INTER_LINEAR);
    take(_preMask, _imageMask, VEXA_INTER_NEAREST);
}

/// Whatever its condition. One that can't be inverted keeps the inverse of the step before.
Matrix Alignment::inverseOf(const Matrix& hessian)
{
    Matrix inverse = {};
    (void)_hessian.upload(&hessian);
    (void)al::invert(_hessian, _hessianInverse);
    (void)_hessianInverse.download(&inverse);
    return inverse;
}

bool Alignment::step(Vexa64f (*map)[3])
{
    warp(map);
    (void)st::meanStdDev(_imageWarped, _imageMean, _imageDeviation, _imageMask);
    (void)st::meanStdDev(_templateFloat, _templateMean, _templateDeviation, _imageMask);
    // All pixels, not only those of the mask.
    _imageWarped -= _imageMean[0];
    (void)al::add(_templateFloat, -_templateMean[0], _templateZeroMean);
    (void)st::countInRange(_imageMask, _count, VexaScalar(1), VexaScalar(255));
    const auto normOf = [this](double deviation) { return std::sqrt(_count[0] * deviation * deviation); };
    const double templateNorm = normOf(_templateDeviation[0]);
    const double imageNorm = normOf(_imageDeviation[0]);

    const auto elements = [](const VexaImage& image) {
        return Elements<f32, 1>{{image.ptr<f32>(), pitchOf<f32>(image)}};
    };
    const auto gradX = elements(_gradientXWarped);
    const auto gradY = elements(_gradientYWarped);
    const Matrix inverse = inverseOf(symmetric(foldOf<Hessian>(_size, gradX, gradY, Columns{}, Rows{})));
    const Projections::Total projections = foldOf<Projections>(_size, gradX, gradY, Columns{}, Rows{},
                                                               elements(_imageWarped), elements(_templateZeroMean));
    const double* const imageProjection = projections.sum;
    const double* const templateProjection = imageProjection + numberOfParameters;
    const double correlation = templateProjection[numberOfParameters];
    _coefficient = correlation / (templateNorm * imageNorm);

    const auto rounded = [](const auto& value) {
        Vector vector;
        for (int i = 0; i < numberOfParameters; ++i) vector.element[i] = static_cast<float>(value(i));
        return vector;
    };
    const Vector ofImage = rounded([=](int i) { return imageProjection[i]; });
    const Vector ofTemplate = rounded([=](int i) { return templateProjection[i]; });
    const Vector solved = inverse * ofImage;
    const double numerator = imageNorm * imageNorm - dot(ofImage, solved);
    const double denominator = correlation - dot(ofTemplate, solved);
    // A NaN goes on: the map becomes one, and the coefficient ends the loop.
    if (denominator <= 0) return false;

    // The projection of the residual lambda * template - image.
    const double lambda = static_cast<float>(numerator / denominator);
    const Vector delta = inverse * rounded([=](int i) { return lambda * templateProjection[i] - imageProjection[i]; });
    for (int i = 0; i < numberOfParameters; ++i) parameter(map, i) += static_cast<Vexa64f>(delta.element[i]);
    return true;
}

}  // namespace

VexaStatus vexa_ecc_8u_c1(VexaImage& src, VexaImage& dst, Vexa64f (*map)[3], const int numberOfIterations,
                          const double termination_eps)
{
    if (const VexaStatus failed = initialized(src, dst)) return failed;
    if (src.type() != VEXA_8UC1 || dst.type() != VEXA_8UC1) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    if (map == nullptr) return VEXA_INVALID_ARG_ERROR;
    Alignment alignment(src, dst);
    double last = -termination_eps;
    for (int left = numberOfIterations; left > 0 && std::abs(alignment.coefficient() - last) >= termination_eps;
         --left) {
        last = alignment.coefficient();
        if (alignment.step(map)) continue;
        std::puts(
            "The algorithm stopped before its convergence. The correlation is going to be minimized. Images may be "
            "uncorrelated or non-overlapped");
        return VEXA_UNKNOWN_ERROR;
    }
    return VEXA_SUCCESS;
}

namespace vexa::computerVision {

VexaStatus findTransformECC(VexaImage& templ, VexaImage& input, Vexa64f (*t)[3], Vexa32s iterations, Vexa64f epsilon,
                            const VexaStream& /*stream*/)
{
    if (const VexaStatus failed = initialized(input, templ)) return failed;
    if (templ.type() != input.type()) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    if (templ.type() != VEXA_8UC1) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    return vexa_ecc_8u_c1(templ, input, t, iterations, epsilon);
}

}  // namespace vexa::computerVision
