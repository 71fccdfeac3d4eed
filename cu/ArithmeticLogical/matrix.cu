/// @file
/// Matrices: products and the inverse.

#include "arguments.h"
#include "checks.h"
#include "product.h"
#include "temporaries.h"

using namespace vexa;

template <typename T>
VEXA_KERNEL kernel_mat_mul(const T* a, const T* b, T* c, int m, int n, int k, int ap, int bp, int cp)
{
    multiplyMatrices(k, m, n, {a, ap, 1}, {b, bp, 1}, Plane<T>{c, cp});
}

/// A times its transpose.
template <typename T>
VEXA_KERNEL kernel_aat(const T* a, T* b, int m, int n, int ap, int bp)
{
    multiplyMatrices(m, m, n, {a, ap, 1}, {a, 1, ap}, Plane<T>{b, bp});
}

/// The transpose of A times A.
template <typename T>
VEXA_KERNEL kernel_ata(const T* a, T* b, int m, int n, int ap, int bp)
{
    multiplyMatrices(n, n, m, {a, 1, ap}, {a, ap, 1}, Plane<T>{b, bp});
}

VexaStatus vexa_matmul_32fc1(float* a, float* b, float* c, int m, int n, int k, int ap, int bp, int cp,
                             cudaStream_t stream)
{
    launch(kernel_mat_mul<float>, {k, m}, stream, a, b, c, m, n, k, elements<f32>(ap), elements<f32>(bp),
           elements<f32>(cp));
    return VEXA_SUCCESS;
}

VexaStatus vexa_mat_trans_mul_32fc1(float* a, float* b, int m, int n, int ap, int bp, cudaStream_t stream)
{
    launch(kernel_ata<float>, {n, n}, stream, a, b, m, n, elements<f32>(ap), elements<f32>(bp));
    return VEXA_SUCCESS;
}

VexaStatus vexa_mat_mul_trans_32fc1(float* a, float* b, int m, int n, int ap, int bp, cudaStream_t stream)
{
    launch(kernel_aat<float>, {m, m}, stream, a, b, m, n, elements<f32>(ap), elements<f32>(bp));
    return VEXA_SUCCESS;
}

namespace {

/// A block that holds a matrix's address, as the solver wants it; null if there is none.
float** allocateAddress(float* matrix)
{
    float** block = nullptr;
    if (allocateElements(block, 1)) return nullptr;
    if (platform::copyToDevice(block, &matrix, sizeof matrix) == VEXA_SUCCESS) return block;
    (void)platform::release(block);
    return nullptr;
}

/// What the solver says of pivots. 0 if that can't be read.
Vexa32s read(const Vexa32s* info)
{
    Vexa32s value = 0;
    (void)platform::copyToHost(&value, info, sizeof value);
    return value;
}

}  // namespace

/// The rows of pixels are columns to the solver: it inverts the transpose, which read back by rows is the inverse. What
/// is allocated stays so on the early returns; that is meant.
VexaStatus vexa_invert_32fc1(float* src_d, float* dst_d, int n, int spitch, int dpitch, cudaStream_t stream)
{
    if (src_d == nullptr || dst_d == nullptr) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    platform::Solver solver = nullptr;
    Vexa32s* pivots = nullptr;
    Vexa32s* info = nullptr;
    (void)platform::createSolver(solver, stream);
    (void)allocateElements(pivots, static_cast<std::size_t>(std::max(n, 0)));
    (void)allocateElements(info, 1);
    (void)platform::setBytes({info, sizeof *info}, 0, {sizeof *info, 1}, stream);
    float** const matrix = allocateAddress(src_d);

    const VexaStatus factored = platform::luFactor(solver, n, matrix, elements<f32>(spitch), pivots, info);
    if (read(info) == n) return VEXA_SINGULAR_MATRIX_ERROR;
    if (factored) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    float** const inverse = allocateAddress(dst_d);
    const VexaStatus inverted =
        platform::luInvert(solver, n, matrix, elements<f32>(spitch), pivots, inverse, elements<f32>(dpitch), info);
    (void)read(info);
    if (inverted) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    (void)releaseAll({pivots, info, matrix, inverse});
    platform::destroySolver(solver);
    return VEXA_SUCCESS;
}

namespace {

constexpr VexaType matrixType = VEXA_32FC1;

/// The image must be a matrix of floats.
[[nodiscard]] VexaStatus isMatrix(const VexaImage& image)
{
    return image.type() == matrixType ? VEXA_SUCCESS : VEXA_TYPE_NOT_SUPPORTED_ERROR;
}

[[nodiscard]] VexaStatus hasSize(const VexaImage& image, int width, int height)
{
    return image.width() == width && image.height() == height ? VEXA_SUCCESS : VEXA_SIZE_ERROR;
}

[[nodiscard]] VexaStatus hasTypeOf(const VexaImage& image, const VexaImage& model)
{
    return match(image, model, {same::type});
}

/// Rows that a copy of src without gaps needs, so that its n rows can also be read at the pitch of src: the solver is
/// told that pitch and not the copy's own.
int rowsWithSlack(const VexaImage& src, int rowBytes)
{
    const long long bytes = bufferBytes(src.pitch(), src.height(), rowBytes);
    return static_cast<int>((bytes - 1) / rowBytes + 1);
}

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus matMul(const VexaImage& A, const VexaImage& B, VexaImage& C, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(A, B)) return failed;
    if (A.width() != B.height()) return VEXA_SIZE_ERROR;
    if (const VexaStatus failed = isMatrix(A)) return failed;
    if (const VexaStatus failed = hasTypeOf(B, A)) return failed;
    if (C.isInitialized()) {
        if (const VexaStatus failed = hasSize(C, B.width(), A.height())) return failed;
        if (const VexaStatus failed = hasTypeOf(C, A)) return failed;
    } else {
        (void)C.create(B.width(), A.height(), A.type());
    }
    return vexa_matmul_32fc1(A.ptr<f32>(), B.ptr<f32>(), C.ptr<f32>(), A.height(), A.width(), B.width(), A.pitch(),
                             B.pitch(), C.pitch(), handle(stream));
}

VexaStatus matMulTrans(const VexaImage& A, VexaImage& B, bool trans, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(A)) return failed;
    if (const VexaStatus failed = isMatrix(A)) return failed;
    const int side = trans ? A.width() : A.height();
    if (B.isInitialized()) {
        if (const VexaStatus failed = hasTypeOf(B, A)) return failed;
        if (const VexaStatus failed = hasSize(B, side, side)) return failed;
    } else {
        (void)B.create(side, side, A.type());
    }
    const auto multiply = trans ? vexa_mat_trans_mul_32fc1 : vexa_mat_mul_trans_32fc1;
    return multiply(A.ptr<f32>(), B.ptr<f32>(), A.height(), A.width(), A.pitch(), B.pitch(), handle(stream));
}

VexaStatus invert(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = isMatrix(src)) return failed;
    if (src.width() != src.height()) return VEXA_SIZE_ERROR;
    const int n = src.width();
    const int continuousPitch = n * src.depth() / 8;
    if (dst.isInitialized()) {
        if (const VexaStatus failed = hasTypeOf(dst, src)) return failed;
        if (const VexaStatus failed = hasSize(dst, n, n)) return failed;
    } else {
        (void)dst.create(n, n, continuousPitch, src.depth(), src.channels());
    }
    VexaImage temp;
    if (const VexaStatus failed =
            temp.create(n, rowsWithSlack(src, continuousPitch), continuousPitch, src.depth(), src.channels()))
        return failed;
    const std::size_t rowBytes = static_cast<std::size_t>(continuousPitch);
    (void)platform::setBytes({temp.ptr(), rowBytes}, 0, {rowBytes, static_cast<std::size_t>(temp.height())},
                             handle(stream));
    (void)src.copyTo(temp, VexaPoint2D<int>(0, 0), VexaRect(0, 0, n, n), stream);
    return vexa_invert_32fc1(temp.ptr<f32>(), dst.ptr<f32>(), n, src.pitch(), dst.pitch(), handle(stream));
}

}  // namespace vexa::arithmeticLogical
