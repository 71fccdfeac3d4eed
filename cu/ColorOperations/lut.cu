/// @file
/// Elements by tables: LUT with a table on the device, blackGammaLUT with three of the host.

#include "arguments.h"
#include "bytes.h"
#include "checks.h"
#include "clip.h"
#include "dispatch.h"
#include "temporaries.h"

using namespace vexa;

namespace {

/// Every `step`-th entry of a table from the first on.
template <int step>
struct Entries {
    const u8* table;

    VEXA_DEVICE u8 operator()(u8 byte) const { return table[step * byte]; }
};

/// The last entry serves the values past the table.
struct BoundedTable {
    const u16* table;
    int last;

    VEXA_DEVICE u16 operator()(u16 element) const { return table[element < last ? element : last]; }
};

/// An entry of a table that ends at the highest value, bounded to the range of values.
template <typename T>
struct BoundedEntry {
    const u16* table;
    u16 lowest;
    u16 highest;

    VEXA_DEVICE T operator()(T element) const
    {
        const u16 value = table[element < highest ? element : highest];
        if (lowest > value) return static_cast<T>(lowest);
        return static_cast<T>(value > highest ? highest : value);
    }
};

/// A table for each slot.
struct BoundedEntries {
    const u16* first;
    const u16* second;
    const u16* third;
    u16 lowest;
    u16 highest;

    VEXA_DEVICE Pixel<u16, 3> operator()(Pixel<u16, 3> pixel) const
    {
        return {{in(first, pixel.element[0]), in(second, pixel.element[1]), in(third, pixel.element[2])}};
    }

private:
    VEXA_DEVICE u16 in(const u16* table, u16 element) const
    {
        return BoundedEntry<u16>{table, lowest, highest}(element);
    }
};

}  // namespace

/// A table of one channel, or of three. An image of one channel takes the first 256 elements of either: with three
/// these belong to the first 86 values, which is meant.
template <int C, bool single>
VEXA_KERNEL kernel_lut_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa8u* lut)
{
    const Plane<u8> from{src, pitch};
    const Plane<u8> to{dst, pitch};
    if constexpr (single || C == 1)
        mapBytes<C>(width, height, to, from, Entries<1>{lut});
    else
        mapBytes<C>(width, height, to, from, Entries<C>{lut}, Entries<C>{lut + 1}, Entries<C>{lut + 2});
}

template <int C, bool single>
VEXA_KERNEL kernel_lut_16u(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, Vexa16u* lut, int entries)
{
    mapElements<C>(width, height, Plane<u16>{dst, pitch}, BoundedTable{lut, entries - 1}, Plane<u16>{src, pitch});
}

VEXA_KERNEL kernel_lut_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa16u* redLUT,
                          Vexa16u* greenLUT, Vexa16u* blueLUT, Vexa16u minVal, Vexa16u maxVal)
{
    mapBytes<3>(width, height, Plane<u8>{dst, pitch}, Plane<u8>{src, pitch}, BoundedEntry<u8>{redLUT, minVal, maxVal},
                BoundedEntry<u8>{greenLUT, minVal, maxVal}, BoundedEntry<u8>{blueLUT, minVal, maxVal});
}

VEXA_KERNEL kernel_lut_16u(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, Vexa16u* redLUT,
                           Vexa16u* greenLUT, Vexa16u* blueLUT, Vexa16u minVal, Vexa16u maxVal)
{
    mapPixels(width, height, Interleaved<u16, 3>{dst, pitch}, BoundedEntries{redLUT, greenLUT, blueLUT, minVal, maxVal},
              Interleaved<u16, 3>{src, pitch});
}

namespace {

/// A table of the host as a temporary on the device. What can't be copied is 0.
class DeviceTable {
public:
    DeviceTable(const Vexa16u* entries, int count)
    {
        const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(Vexa16u);
        (void)allocateElements(_entries, static_cast<std::size_t>(count));
        if (entries == nullptr || platform::copyToDevice(_entries, entries, bytes) != VEXA_SUCCESS)
            (void)platform::setBytes({_entries, bytes}, 0, {bytes, 1}, nullptr);
    }
    DeviceTable(const DeviceTable&) = delete;
    DeviceTable& operator=(const DeviceTable&) = delete;
    ~DeviceTable() { (void)platform::release(_entries); }

    Vexa16u* entries() const { return _entries; }

private:
    Vexa16u* _entries = nullptr;
};

template <typename T>
using TablesKernel = void (*)(T*, T*, int, int, int, Vexa16u*, Vexa16u*, Vexa16u*, Vexa16u, Vexa16u);

template <typename T>
VexaStatus mapByTables(TablesKernel<T> kernel, T* src, T* dst, const Vexa16u* redLUT, const Vexa16u* greenLUT,
                       const Vexa16u* blueLUT, const VexaSize& size, int pitch, int dataBits, cudaStream_t stream)
{
    const int count = 1 << std::clamp(dataBits, 0, 16);
    const DeviceTable red(redLUT, count);
    const DeviceTable green(greenLUT, count);
    const DeviceTable blue(blueLUT, count);
    launch(kernel, pixelExtent(size.width, size.height), stream, src, dst, size.width, size.height, elements<T>(pitch),
           red.entries(), green.entries(), blue.entries(), Vexa16u{0}, static_cast<Vexa16u>(count - 1));
    (void)platform::synchronizeDevice();
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexaBlackGammaLUT8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa16u* redLUT, Vexa16u* greenLUT, Vexa16u* blueLUT,
                               VexaSize imgSize, Vexa32s pitch, Vexa32s dataBits, cudaStream_t stream)
{
    return mapByTables<u8>(kernel_lut_8u, pSrc, pDst, redLUT, greenLUT, blueLUT, imgSize, pitch, dataBits, stream);
}

VexaStatus vexaBlackGammaLUT16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa16u* redLUT, Vexa16u* greenLUT, Vexa16u* blueLUT,
                                VexaSize imgSize, Vexa32s pitch, Vexa32s dataBits, cudaStream_t stream)
{
    return mapByTables<u16>(kernel_lut_16u, pSrc, pDst, redLUT, greenLUT, blueLUT, imgSize, pitch, dataBits, stream);
}

namespace {

/// A table of one row. The width of one with 16 bits and 1 channel is not compared.
[[nodiscard]] VexaStatus isMapping(const VexaImage& mapping)
{
    if (mapping.height() != 1) return VEXA_INVALID_ARG_ERROR;
    const bool fits = [&] {
        switch (mapping.type()) {
            case VEXA_16UC1:
                return true;
            case VEXA_8UC1:
            case VEXA_8UC3:
                return mapping.width() == mapping.channels() << 8;
            case VEXA_16UC3:
                return mapping.width() == mapping.channels() << 16;
            default:
                return false;
        }
    }();
    return fits ? VEXA_SUCCESS : VEXA_INVALID_ARG_ERROR;
}

struct MapByImage {
    const VexaImage& src;
    const VexaImage& mapping;
    VexaImage& dst;
    platform::Stream stream;

    template <int C>
    VexaStatus operator()(ChannelCount<C>, Row<u8>) const
    {
        if (mapping.type() == VEXA_8UC1) return run(kernel_lut_8u<C, true>);
        if (mapping.type() == VEXA_8UC3) return run(kernel_lut_8u<C, false>);
        return VEXA_INVALID_ARG_ERROR;
    }

    VexaStatus operator()(ChannelCount<1>, Row<u16>) const
    {
        if (mapping.type() != VEXA_16UC1) return VEXA_INVALID_ARG_ERROR;
        return run(kernel_lut_16u<1, true>, mapping.width());
    }

    template <typename T, typename... Size>
    VexaStatus run(void (*kernel)(T*, T*, int, int, int, T*, Size...), Size... entries) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel, elementExtent<1, T>(elementsOf(src), rows), stream, src.ptr<T>(), dst.ptr<T>(), src.width(),
               rows, pitchOf<T>(src), mapping.ptr<T>(), entries...);
        return VEXA_SUCCESS;
    }
};

/// The images of blackGammaLUT, as pixels of three elements whatever their channels.
template <typename T>
VexaSize commonColors(const VexaImage& src, const VexaImage& dst)
{
    return commonSize(src.size(), 3 * sizeof(T), src.pitch(), {&src, &dst});
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus LUT(const VexaImage& src, const VexaImage& mapping, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src, mapping)) return failed;
    if (const VexaStatus failed = isMapping(mapping)) return failed;
    if (const VexaStatus failed = match(mapping, src, {same::depth})) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::type}, src.size(), src.type()))
        return failed;
    const MapByImage work{src, mapping, dst, handle(stream)};
    if (src.type() == VEXA_16UC1) return work(ChannelCount<1>{}, Row<u16>{});
    return dispatch(Table<Row<u8>>{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR, work, src);
}

VexaStatus blackGammaLUT(const VexaImage& src, VexaImage& dst, Vexa16u* redLUT, Vexa16u* greenLUT, Vexa16u* blueLUT,
                         const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    const bool creates = !dst.isInitialized();
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height}, src.size(), src.depth(), src.channels()))
        return failed;
    if (creates) {
        (void)dst.setDataBits(src.dataBits());
        if (src.channels() != 3) clear(dst, handle(stream));
    }
    if (src.depth() == 8)
        return vexaBlackGammaLUT8u(src.ptr<u8>(), dst.ptr<u8>(), redLUT, greenLUT, blueLUT, commonColors<u8>(src, dst),
                                   src.pitch(), src.dataBits(), handle(stream));
    if (src.depth() == 16)
        return vexaBlackGammaLUT16u(src.ptr<u16>(), dst.ptr<u16>(), redLUT, greenLUT, blueLUT,
                                    commonColors<u16>(src, dst), src.pitch(), src.dataBits(), handle(stream));
    return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
}

}  // namespace vexa::colorOperations
