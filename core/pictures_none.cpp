/// @file
/// Pictures in a build without OpenCV: no file can be decoded or encoded, and there is no display.

#include "pictures.h"

namespace vexa {

bool decode(const std::string& /*file*/, VexaLoadType /*load*/, Picture& /*picture*/)
{
    return false;
}

bool encode(const std::string& /*file*/, const Picture& /*picture*/)
{
    return false;
}

void openWindow(const std::string& /*name*/, bool /*resizable*/) {}

bool showPicture(const std::string& /*name*/, const Picture& /*picture*/)
{
    return false;
}

int waitKey(int /*delay*/)
{
    return -1;
}

}  // namespace vexa
