/// @file
/// Nothing here reads videos.

#include "video.h"

std::unique_ptr<Video> openVideo(const std::string& /*file*/)
{
    return nullptr;
}
