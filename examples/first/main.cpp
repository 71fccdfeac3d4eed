#include <cstdio>

#include "vexaCore.h"

int main(int argc, char** argv)
{
    VexaImage photo(argc > 1 ? argv[1] : "photo.png", VEXA_LOAD_IMAGE_COLOR);
    VexaImage negative;
    VexaStatus status = vexa::arithmeticLogical::NOT(photo, negative);
    if (status == VEXA_SUCCESS) status = vexa::io::saveImage(negative, "negative.png");
    std::puts(vexaStatusString(status));
    return status == VEXA_SUCCESS ? 0 : 1;
}
