/// @file
/// VexaHistogram: bins in device memory or in either kind of host memory. The two forms of create() differ on an
/// initialised histogram; that is the contract.

#include <cstddef>
#include <cstring>
#include <new>

#include "platform.h"
#include "vexaCore.h"

namespace platform = vexa::platform;

namespace {

struct BinsOf {
    VexaType type;
    Vexa32s bins;
};
constexpr BinsOf binsOf[] = {{VEXA_8UC1, 256}, {VEXA_8UC3, 3 * 256}, {VEXA_16UC1, 65536}, {VEXA_16UC3, 3 * 65536}};

std::size_t bytesOf(Vexa32s bins)
{
    return static_cast<std::size_t>(bins) * sizeof(Vexa32u);
}

/// Bins of 0; null if there is no memory for them.
Vexa32u* clearedInHost(Vexa32u* bins, Vexa32s count)
{
    return bins != nullptr ? static_cast<Vexa32u*>(std::memset(bins, 0, bytesOf(count))) : nullptr;
}

Vexa32u* clearedInDevice(Vexa32s count)
{
    void* bins = nullptr;
    if (platform::allocate(bins, bytesOf(count))) return nullptr;
    (void)platform::setBytes({bins, bytesOf(count)}, 0, {bytesOf(count), 1}, nullptr);
    (void)platform::synchronize(nullptr);
    return static_cast<Vexa32u*>(bins);
}

}  // namespace

VexaHistogram::VexaHistogram() : _init(false), _hist(nullptr), _bins(0), _type(VEXA_NO_TYPE), _loc(VEXA_PTR_NONE) {}

VexaHistogram::VexaHistogram(Vexa32s bins, VexaPointerType location) : VexaHistogram()
{
    (void)create(bins, location);
}

VexaHistogram::VexaHistogram(VexaType type, VexaPointerType location) : VexaHistogram()
{
    (void)create(type, location);
}

VexaHistogram::~VexaHistogram()
{
    (void)release();
}

VexaStatus VexaHistogram::create(Vexa32s bins, VexaPointerType location)
{
    if (bins < 1 || _init) return VEXA_INVALID_ARG_ERROR;
    // A histogram without memory is initialised all the same, with null bins.
    switch (location) {
        case VEXA_PTR_HOST_PAGE_LOCKED:
            _hist = clearedInHost(static_cast<Vexa32u*>(platform::allocatePinned(bytesOf(bins))), bins);
            break;
        case VEXA_PTR_HOST:
            _hist = clearedInHost(new (std::nothrow) Vexa32u[static_cast<std::size_t>(bins)], bins);
            break;
        case VEXA_PTR_DEVICE:
            _hist = clearedInDevice(bins);
            break;
        default:
            return VEXA_INVALID_ARG_ERROR;
    }
    _loc = location;
    _bins = bins;
    _type = VEXA_UNKNOWN_TYPE;
    _init = true;
    return VEXA_SUCCESS;
}

VexaStatus VexaHistogram::create(VexaType type, VexaPointerType location)
{
    if (_init) return VEXA_SUCCESS;
    for (const BinsOf& row : binsOf) {
        if (row.type != type) continue;
        if (const VexaStatus failed = create(row.bins, location)) {
            (void)release();
            return failed;
        }
        _type = type;
        return VEXA_SUCCESS;
    }
    return VEXA_TYPE_NOT_SUPPORTED_ERROR;
}

VexaStatus VexaHistogram::release()
{
    if (!_init) return VEXA_SUCCESS;
    switch (_loc) {
        case VEXA_PTR_DEVICE:
            (void)platform::release(_hist);
            break;
        case VEXA_PTR_HOST:
            delete[] _hist;
            break;
        case VEXA_PTR_HOST_PAGE_LOCKED:
            platform::releasePinned(_hist);
            break;
        default:
            return VEXA_UNKNOWN_ERROR;
    }
    _init = false;
    _hist = nullptr;
    _bins = 0;
    _type = VEXA_NO_TYPE;
    _loc = VEXA_PTR_NONE;
    return VEXA_SUCCESS;
}

bool VexaHistogram::isInitialized() const
{
    return _init;
}

Vexa32u* VexaHistogram::hist()
{
    return _hist;
}

const Vexa32u* VexaHistogram::hist() const
{
    return _hist;
}

Vexa32s VexaHistogram::binCount() const
{
    return _bins;
}

VexaType VexaHistogram::type() const
{
    return _type;
}

VexaPointerType VexaHistogram::location() const
{
    return _loc;
}
