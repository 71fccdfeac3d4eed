/// @file
/// Enhancement of pictures taken under water: a mix that takes the colour cast off, then a stretch of each channel
/// between the ends of its histogram.

#include <array>

#include "checks.h"
#include "clip.h"
#include "colorCast.h"
#include "count.h"
#include "streams.h"
#include "vexaCore.h"

VexaEnhancementParams::VexaEnhancementParams(bool autoColor, Vexa32u filterStrength, Vexa64f deGalreAmount)
    : autoColor(autoColor), filterStrength(filterStrength), deGalreAmount(deGalreAmount)
{}

VexaEnhancementParams::~VexaEnhancementParams() {}

using namespace vexa;

namespace {

using Table256 = std::array<Vexa8u, byteValues>;

/// The values between which a channel is stretched.
struct Limits {
    int lowest;
    int highest;

    bool haveRange() const { return highest > lowest; }
};

/// Where the counts up to a value exceed `low` first and are still not above `high`.
Limits limitsOf(const Vexa32u* counts, float low, float high)
{
    float upTo[byteValues];
    float sum = 0.0F;
    for (int i = 0; i < byteValues; ++i) upTo[i] = sum += static_cast<float>(counts[i]);
    Limits limits{0, byteValues - 1};
    while (limits.lowest < byteValues - 1 && !(upTo[limits.lowest] > low)) ++limits.lowest;
    while (limits.highest >= 0 && upTo[limits.highest] > high) --limits.highest;
    return limits;
}

/// The fraction of the range is taken a half wider than it is, so that the highest value alone becomes 255.
Table256 stretchOf(Limits limits)
{
    Table256 table;
    for (int i = 0; i < byteValues; ++i) {
        const double stretched = (i - limits.lowest) * 255 / (limits.highest - limits.lowest + 0.5);
        table[static_cast<std::size_t>(i)] = i < limits.lowest    ? 0
                                             : i < limits.highest ? static_cast<Vexa8u>(stretched)
                                                                  : 255;
    }
    return table;
}

/// The slot of the result that a channel goes to: the merged image may have the other order.
int slotOf(int channel, VexaChannelSeq sequence)
{
    return sequence == VEXA_CHANNEL_SEQ_RGB ? 2 - channel : channel;
}

/// Takes the cast off, with the channels in the slots of `sequence`. The mix addresses both images by the pitch of
/// `src`.
void balance(const VexaImage& src, VexaImage& balanced, VexaChannelSeq sequence)
{
    (void)balanced.create(src.width(), src.height(), src.pitch(), src.depth(), src.channels());
    const LinearCoefficients ofChannels = balanceOf(src);
    LinearCoefficients ofSlots;
    for (int channel = 0; channel < 3; ++channel)
        std::copy_n(ofChannels.row[channel], 4, ofSlots.row[slotOf(channel, sequence)]);
    (void)colorOperations::channelMix(src, balanced, ofSlots.row[0], VexaStream(false));
}

/// Stretches the contrast of each channel.
/// @return false where one of them has no range: then `dst` is left alone, which is meant
bool stretch(VexaImage& image, VexaImage& dst, VexaChannelSeq sequence, const VexaStream& stream)
{
    VexaHistogram counts(VEXA_8UC3, VEXA_PTR_HOST);
    (void)imageStatistics::calcHist(image, counts, stream);
    const auto pixels = static_cast<float>(static_cast<long long>(image.width()) * image.height());
    // A pixel of a table holds the entries of all channels. LUT wants three times as many of them as it reads.
    std::array<Vexa8u, 3 * 3 * byteValues> entries = {};
    for (int channel = 0; channel < 3; ++channel) {
        const int slot = slotOf(channel, sequence);
        const float high = channel == 2 ? 0.9899F : 0.9699F;
        const Limits limits = limitsOf(counts.hist() + slot * byteValues, pixels * 1.01F / 100.0F, pixels * high);
        if (!limits.haveRange()) return false;
        const Table256 table = stretchOf(limits);
        for (std::size_t i = 0; i < table.size(); ++i) entries[3 * i + static_cast<std::size_t>(slot)] = table[i];
    }
    VexaImage mapping(3 * byteValues, 1, VEXA_8UC3);
    (void)mapping.upload(entries.data(), static_cast<int>(entries.size()), stream);
    // LUT addresses both images by the pitch of its source.
    const bool direct = image.pitch() == dst.pitch();
    (void)colorOperations::LUT(image, mapping, direct ? dst : image, stream);
    if (!direct) (void)image.copyTo(dst, {0, 0}, {0, 0, image.width(), image.height()}, stream);
    return true;
}

/// @return false if `dst` is left alone
bool enhance(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    const VexaChannelSeq sequence = dst.channelSeq();
    if (sequence != VEXA_CHANNEL_SEQ_RGB && sequence != VEXA_CHANNEL_SEQ_BGR) return false;
    VexaImage balanced;
    balance(src, balanced, sequence);
    return stretch(balanced, dst, sequence, stream);
}

}  // namespace

namespace vexa::imageFiltering {

VexaStatus underwaterFilter(const VexaImage& src, VexaImage& dst, VexaEnhancementParams /*p*/, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.type() != VEXA_8UC3) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    const bool creates = !dst.isInitialized();
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::type}, src.size(), src.type()))
        return failed;
    if (!enhance(src, dst, stream) && creates) clear(dst, handle(stream));
    return VEXA_SUCCESS;
}

}  // namespace vexa::imageFiltering
