/// @file
/// Whether windows can be opened. Asked first, because the toolkit below OpenCV's highgui ends the process where there
/// is no display.

#pragma once

namespace vexa {

/// Whether a window system answers.
bool hasDisplay();

}  // namespace vexa
