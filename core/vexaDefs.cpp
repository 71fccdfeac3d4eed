/// @file
/// Formats, status texts, value records and VexaScalar.

#include "vexaDefs.h"

#include <algorithm>
#include <iterator>

#include "clear.h"
#include "platform.h"

using vexa::clear;

VexaSize::VexaSize() : width(0), height(0) {}

VexaSize::VexaSize(Vexa32s width, Vexa32s height) : width(width), height(height) {}

VexaSize::~VexaSize()
{
    clear(width);
    clear(height);
}

template <typename T>
VexaPoint2D<T>::VexaPoint2D() : x(0), y(0)
{}

template <typename T>
VexaPoint2D<T>::VexaPoint2D(T x, T y) : x(x), y(y)
{}

template <typename T>
VexaPoint2D<T>::~VexaPoint2D()
{
    clear(x);
    clear(y);
}

template struct VexaPoint2D<int>;
template struct VexaPoint2D<float>;

VexaRect::VexaRect() : x(0), y(0), width(0), height(0) {}

VexaRect::VexaRect(Vexa32s x, Vexa32s y, Vexa32s width, Vexa32s height) : x(x), y(y), width(width), height(height) {}

VexaPoint2D<int> VexaRect::origin() const
{
    return {x, y};
}

template <typename P, typename V>
VexaPointValue2D<P, V>::VexaPointValue2D() : x(0), y(0), val(0)
{}

template <typename P, typename V>
VexaPointValue2D<P, V>::VexaPointValue2D(P x, P y, V val) : x(x), y(y), val(val)
{}

template struct VexaPointValue2D<float, float>;

namespace {

constexpr int elementCount = 4;

Vexa64f* elements(Vexa64f v0, Vexa64f v1, Vexa64f v2, Vexa64f v3)
{
    auto* const block = static_cast<Vexa64f*>(vexa::platform::allocatePinned(elementCount * sizeof(Vexa64f)));
    if (block == nullptr) return nullptr;
    const Vexa64f values[elementCount] = {v0, v1, v2, v3};
    std::copy_n(values, elementCount, block);
    return block;
}

/// What an element that does not exist refers to; always read as 0.
Vexa64f __dummy;

Vexa64f& element(Vexa64f* vals, int i)
{
    if (vals != nullptr && i >= 0 && i < elementCount) return vals[i];
    __dummy = 0;
    return __dummy;
}

}  // namespace

VexaScalar::VexaScalar() : VexaScalar(0) {}

VexaScalar::VexaScalar(Vexa64f value) : _vals(elements(value, value, value, value)), _isInteger(false) {}

VexaScalar::VexaScalar(Vexa32s value) : _vals(elements(value, value, value, value)), _isInteger(true) {}

VexaScalar::VexaScalar(Vexa64f v0, Vexa64f v1, Vexa64f v2) : _vals(elements(v0, v1, v2, 0)), _isInteger(false) {}

VexaScalar::VexaScalar(Vexa32s v0, Vexa32s v1, Vexa32s v2) : _vals(elements(v0, v1, v2, 0)), _isInteger(true) {}

VexaScalar::VexaScalar(Vexa64f v0, Vexa64f v1, Vexa64f v2, Vexa64f v3)
    : _vals(elements(v0, v1, v2, v3)), _isInteger(false)
{}

VexaScalar::VexaScalar(Vexa32s v0, Vexa32s v1, Vexa32s v2, Vexa32s v3)
    : _vals(elements(v0, v1, v2, v3)), _isInteger(true)
{}

VexaScalar::VexaScalar(const VexaScalar& other)
    : _vals(elements(other[0], other[1], other[2], other[3])), _isInteger(other._isInteger)
{}

VexaScalar::~VexaScalar()
{
    vexa::platform::releasePinned(_vals);
    clear(_vals);
}

bool VexaScalar::isInteger() const
{
    return _isInteger;
}

Vexa64f* VexaScalar::vals()
{
    return _vals;
}

const Vexa64f* VexaScalar::vals() const
{
    return _vals;
}

Vexa64f& VexaScalar::operator[](int i)
{
    return element(_vals, i);
}

const Vexa64f& VexaScalar::operator[](int i) const
{
    return element(_vals, i);
}

VexaScalar VexaScalar::operator-() const
{
    const VexaScalar& v = *this;
    return {-v[0], -v[1], -v[2], -v[3]};
}

namespace {

/// The kinds of elements in the order of VexaType, which has a row for 1 to 4 channels of each.
struct ElementKind {
    int depth;
    bool isSigned;
};
constexpr ElementKind elementKinds[] = {{8, false},  {8, true},  {16, false}, {16, true},
                                        {32, false}, {32, true}, {64, false}};
constexpr int formatCount = 4 * static_cast<int>(std::size(elementKinds));

}  // namespace

VexaType getType(int depth, int channels, bool isSigned)
{
    if (channels < 1 || channels > 4) return VEXA_NO_TYPE;
    int first = 0;
    for (const ElementKind& kind : elementKinds) {
        if (kind.depth == depth && kind.isSigned == isSigned) return static_cast<VexaType>(first + channels - 1);
        first += 4;
    }
    return VEXA_NO_TYPE;
}

void getParameters(VexaType type, int& depth, int& channels)
{
    const int row = static_cast<int>(type);
    if (row < 0 || row >= formatCount) {
        depth = 0;
        channels = 0;
        return;
    }
    const ElementKind& kind = elementKinds[row / 4];
    depth = kind.isSigned ? -kind.depth : kind.depth;
    channels = row % 4 + 1;
}

const char* vexaStatusString(VexaStatus status)
{
    switch (status) {
        case VEXA_SUCCESS:
            return "VEXA: No Error";
        case VEXA_MEM_ALLOC_ERR:
            return "VEXA: Device Memory Allocation Failed";
        case VEXA_ARRAY_ALLOC_ERR:
            return "VEXA: Device Array Allocation Failed";
        case VEXA_MEMSET_ERR:
            return "VEXA: Device Memset Failed";
        case VEXA_MEMCPY_H2D_ERROR:
            return "VEXA: Memory Copy From Host To Device Failed";
        case VEXA_MEMCPY_D2H_ERROR:
            return "VEXA: Memory Copy From Device To Host Failed";
        case VEXA_MEMCPY_D2D_ERROR:
            return "VEXA: Memory Copy From Device To Device Failed";
        case VEXA_MEMCPY_D2A_ERROR:
            return "VEXA: Memory Copy From Device To Device Array Failed";
        case VEXA_MEMCPY_H2S_ERROR:
            return "VEXA: Memory Copy From Host To Device Symbol Failed";
        case VEXA_MEMCPY_ERROR:
            return "VEXA: Memory Copy Failed";
        case VEXA_MEMFREE_ERR:
            return "VEXA: Failed To Release Device Memory";
        case VEXA_MEMFREE_ARRAY_ERR:
            return "VEXA: Failed To Release Device Array";
        case VEXA_TEXTURE_BIND_ERROR:
            return "VEXA: Texture Binding Failed";
        case VEXA_TEXTURE_UNBIND_ERROR:
            return "VEXA: Texture Unbinding Failed";
        case VEXA_INTERNAL_FUNCTION_CALL_ERROR:
            return "VEXA: Internal Function Calling Failed";
        case VEXA_INTERNAL_CALL_ERROR:
            return "VEXA: NPP Function Call Failed";
        case VEXA_CHANNEL_NOT_SUPPORTED_ERROR:
            return "VEXA: Specified Number Of Channels Not Supported For Current Operation";
        case VEXA_DEPTH_NOT_SUPPORTED_ERROR:
            return "VEXA: Specified Image Depth Not Supported For Current Operation";
        case VEXA_MEMORY_PINNING_ERROR:
            return "VEXA: Failed To Register Host Memory";
        case VEXA_MEMORY_UNPINNING_ERROR:
            return "VEXA: Failed To Unregister Host Memory";
        default:
            return "VEXA: Unknown Error";
    }
}
