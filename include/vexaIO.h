/// @file
/// vexa::io and the windows: the bridge between images, files and the screen, by way of OpenCV's codecs and highgui.
/// Channels keep the order of the decoder: blue, green, red. All calls block; windows belong to the main thread.

#pragma once

#include <string>

#include "vexaCore.h"

namespace vexa {
namespace io {

/// A new image from a file; empty if its format can't be held or allocated.
/// @throw const char* "Image Not Found" if the file can't be read or decoded
VEXA_API VexaImage loadImage(const std::string& file, VexaLoadType load);

/// Writes a file in the format that its name tells. Float images of 1 or 3 channels hold values from 0 to 1 and are
/// written as 8-bit, times 255 and truncated.
/// @return VEXA_IMAGE_NOT_INITIALIZED; VEXA_DEPTH_NOT_SUPPORTED_ERROR for signed integers; VEXA_UNKNOWN_ERROR if the
///         file can't be encoded or written
VEXA_API VexaStatus saveImage(VexaImage& image, const std::string& file);

}  // namespace io

/// Opens a window, on an X server. @return always VEXA_SUCCESS
VEXA_API VexaStatus createWindow(const std::string& name, bool resizable);

/// Shows 8u and 16u images of 1 or 3 channels and float ones (values from 0 to 1) in a window; other formats look
/// garbled. The window paints itself in waitKeyPress.
/// @return VEXA_IMAGE_NOT_INITIALIZED; VEXA_UNKNOWN_ERROR where there is no display
VEXA_API VexaStatus showImage(const std::string& name, const VexaImage& image);

/// Waits `delay` milliseconds, for ever if 0, for a key. @return its code, -1 if none was pressed
VEXA_API int waitKeyPress(int delay);

}  // namespace vexa
