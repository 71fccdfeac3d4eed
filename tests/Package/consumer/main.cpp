/// @file
/// What a newcomer writes first: an image up, inverted and down again.

#include <vexaCore.h>

int main()
{
    if (vexa::device::getDeviceCount() < 1) return 0;  // built for a GPU, on a machine without one
    const unsigned char pixels[] = {0, 1, 2, 253, 254, 255};
    unsigned char inverted[6] = {};
    VexaImage src(2, 1, VEXA_8UC3);
    VexaImage dst;
    if (src.upload(pixels, 6) || vexa::arithmeticLogical::NOT(src, dst) || dst.download(inverted, 6)) return 1;
    for (int i = 0; i < 6; ++i)
        if (inverted[i] != 255 - pixels[i]) return 2;
    return dst.type() == getType(8, 3, false) ? 0 : 3;
}
