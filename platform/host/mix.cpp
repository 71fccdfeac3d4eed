/// @file
/// Linear maps of pixels by AVX-512: 16 pixels at a time.

#include "mix.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "lookup.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vexa::platform {

#if defined(__x86_64__)

namespace {

#define VEXA_MIXES_ROWS __attribute__((target("avx512f,avx512bw,avx512vbmi,avx512vl")))
#define VEXA_INSIDE VEXA_MIXES_ROWS __attribute__((always_inline))

constexpr std::size_t pixelsAtOnce = 16;

/// GCC 12 warns of what its forms without a mask leave undefined; the code is the same.
constexpr __mmask16 all = 0xffff;

/// The first `count` bits.
std::uint64_t bits(std::size_t count)
{
    return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

/// The weights of one slot of the result.
struct Weights {
    __m512 weight[3];
    __m512 offset;
};

VEXA_INSIDE inline Weights weightsOf(const float (&row)[4])
{
    return {{_mm512_set1_ps(row[0]), _mm512_set1_ps(row[1]), _mm512_set1_ps(row[2])}, _mm512_set1_ps(row[3])};
}

/// The slots of 16 pixels as integers.
struct Slots {
    __m512i slot[3];
};

VEXA_INSIDE inline __m512i mixed(const Weights& w, __m512 s0, __m512 s1, __m512 s2)
{
    const __m512 two = _mm512_fmadd_ps(w.weight[0], s0, _mm512_mul_ps(w.weight[1], s1));
    return _mm512_maskz_cvttps_epi32(all, _mm512_add_ps(_mm512_fmadd_ps(w.weight[2], s2, two), w.offset));
}

VEXA_INSIDE inline Slots mixed(const Weights (&weights)[3], const Slots& from)
{
    const __m512 s0 = _mm512_maskz_cvtepi32_ps(all, from.slot[0]);
    const __m512 s1 = _mm512_maskz_cvtepi32_ps(all, from.slot[1]);
    const __m512 s2 = _mm512_maskz_cvtepi32_ps(all, from.slot[2]);
    return {{mixed(weights[0], s0, s1, s2), mixed(weights[1], s0, s1, s2), mixed(weights[2], s0, s1, s2)}};
}

/// How 16 pixels of T are taken apart and put together.
template <typename T>
struct Pixels;

template <>
struct Pixels<std::uint8_t> {
    /// Where the bytes of a slot lie among those of the pixels: one in four of the result.
    __m512i apart[3];
    /// Where a byte of the pixels lies after packing, which leaves four of each slot side by side.
    __m512i together;
    __m512i highest;

    VEXA_INSIDE explicit Pixels(std::uint8_t highestValue)
    {
        alignas(64) std::uint8_t from[3][64] = {};
        alignas(64) std::uint8_t packed[64] = {};
        for (std::size_t pixel = 0; pixel < 16; ++pixel)
            for (std::size_t slot = 0; slot < 3; ++slot) {
                from[slot][4 * pixel] = static_cast<std::uint8_t>(3 * pixel + slot);
                packed[3 * pixel + slot] = static_cast<std::uint8_t>(pixel / 4 * 16 + slot * 4 + pixel % 4);
            }
        for (std::size_t slot = 0; slot < 3; ++slot) apart[slot] = _mm512_load_si512(from[slot]);
        together = _mm512_load_si512(packed);
        highest = _mm512_set1_epi8(static_cast<char>(highestValue));
    }

    VEXA_INSIDE Slots load(const std::uint8_t* from, std::size_t available) const
    {
        const __m512i pixels =
            available < 64 ? _mm512_maskz_loadu_epi8(bits(available), from) : _mm512_loadu_si512(from);
        constexpr __mmask64 lowBytes = 0x1111111111111111;
        return {{_mm512_maskz_permutexvar_epi8(lowBytes, apart[0], pixels),
                 _mm512_maskz_permutexvar_epi8(lowBytes, apart[1], pixels),
                 _mm512_maskz_permutexvar_epi8(lowBytes, apart[2], pixels)}};
    }

    VEXA_INSIDE void store(std::uint8_t* to, std::size_t elements, const Slots& slots) const
    {
        const __m512i words = _mm512_packs_epi32(slots.slot[0], slots.slot[1]);
        const __m512i bytes = _mm512_packus_epi16(words, _mm512_packs_epi32(slots.slot[2], slots.slot[2]));
        const __m512i pixels = _mm512_maskz_permutexvar_epi8(~__mmask64{0}, together, _mm512_min_epu8(bytes, highest));
        // Masked stores take many times as long, and so do masked loads of what is not in the caches.
        if (elements < 48) return _mm512_mask_storeu_epi8(to, bits(elements), pixels);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_maskz_extracti64x4_epi64(0xf, pixels, 0));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 32), _mm512_maskz_extracti32x4_epi32(0xf, pixels, 2));
    }
};

template <>
struct Pixels<std::uint16_t> {
    __m512i apart[3];
    __m512i together[2];
    __m512i highest;

    VEXA_INSIDE explicit Pixels(std::uint16_t highestValue)
    {
        alignas(64) std::uint16_t from[3][32] = {};
        alignas(64) std::uint16_t packed[64] = {};
        for (std::size_t pixel = 0; pixel < 16; ++pixel)
            for (std::size_t slot = 0; slot < 3; ++slot) {
                from[slot][2 * pixel] = static_cast<std::uint16_t>(3 * pixel + slot);
                const std::size_t lane = pixel / 4 * 8 + pixel % 4;
                packed[3 * pixel + slot] = static_cast<std::uint16_t>(slot == 2 ? 32 + lane : lane + slot * 4);
            }
        for (std::size_t slot = 0; slot < 3; ++slot) apart[slot] = _mm512_load_si512(from[slot]);
        for (std::size_t half = 0; half < 2; ++half) together[half] = _mm512_load_si512(packed + 32 * half);
        highest = _mm512_set1_epi16(static_cast<short>(highestValue));
    }

    VEXA_INSIDE Slots load(const std::uint16_t* from, std::size_t available) const
    {
        constexpr __mmask32 lowWords = 0x55555555;
        const std::uint64_t mask = bits(available);
        const bool whole = available >= 64;
        const __m512i low =
            whole ? _mm512_loadu_si512(from) : _mm512_maskz_loadu_epi16(static_cast<__mmask32>(mask), from);
        const __m512i high = whole ? _mm512_loadu_si512(from + 32)
                                   : _mm512_maskz_loadu_epi16(static_cast<__mmask32>(mask >> 32), from + 32);
        return {{_mm512_maskz_permutex2var_epi16(lowWords, low, apart[0], high),
                 _mm512_maskz_permutex2var_epi16(lowWords, low, apart[1], high),
                 _mm512_maskz_permutex2var_epi16(lowWords, low, apart[2], high)}};
    }

    VEXA_INSIDE void store(std::uint16_t* to, std::size_t elements, const Slots& slots) const
    {
        const __m512i two = _mm512_min_epu16(_mm512_packus_epi32(slots.slot[0], slots.slot[1]), highest);
        const __m512i third = _mm512_min_epu16(_mm512_packus_epi32(slots.slot[2], slots.slot[2]), highest);
        const __m512i low = _mm512_permutex2var_epi16(two, together[0], third);
        const __m512i high = _mm512_permutex2var_epi16(two, together[1], third);
        if (elements < 48) {
            _mm512_mask_storeu_epi16(to, static_cast<__mmask32>(bits(elements)), low);
            _mm512_mask_storeu_epi16(to + 32, static_cast<__mmask32>(bits(elements) >> 32), high);
            return;
        }
        _mm512_storeu_si512(to, low);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 32), _mm512_maskz_extracti64x4_epi64(0xf, high, 0));
    }
};

template <typename T>
VEXA_MIXES_ROWS void mixPixels(const MixRows& rows, T highest, const T* from, T* to, std::size_t pixels)
{
    const Pixels<T> format(highest);
    const Weights weights[] = {weightsOf(rows[0]), weightsOf(rows[1]), weightsOf(rows[2])};
    const std::size_t count = 3 * pixels;
    constexpr std::size_t step = 3 * pixelsAtOnce;
    // Loads run ahead of stores: large images lie alike in their pages, where a load of the bytes behind a store looks
    // to the processor like one of what was stored, and waits for it.
    Slots ahead = format.load(from, count);
    for (std::size_t i = 0; i < count; i += step) {
        const Slots current = ahead;
        if (count - i > step) ahead = format.load(from + i + step, count - i - step);
        format.store(to + i, std::min(step, count - i), mixed(weights, current));
    }
}

}  // namespace

bool mixesRows(const MixRows& rows, float highestElement)
{
    constexpr float limit = 1 << 30;
    for (const auto& row : rows)
        if (!(highestElement * (std::fabs(row[0]) + std::fabs(row[1]) + std::fabs(row[2])) + std::fabs(row[3]) < limit))
            return false;
    return permutesBytes();
}

template <typename T>
void mixRow(const MixRows& rows, T highest, const T* from, T* to, std::size_t pixels)
{
    mixPixels(rows, highest, from, to, pixels);
}

#else

bool mixesRows(const MixRows& /*rows*/, float /*highestElement*/)
{
    return false;
}

template <typename T>
void mixRow(const MixRows& /*rows*/, T /*highest*/, const T* /*from*/, T* /*to*/, std::size_t /*pixels*/)
{}

#endif

template void mixRow(const MixRows&, std::uint8_t, const std::uint8_t*, std::uint8_t*, std::size_t);
template void mixRow(const MixRows&, std::uint16_t, const std::uint16_t*, std::uint16_t*, std::size_t);

}  // namespace vexa::platform
