/// @file
/// Whether a JPEG file is all there. The decoder fills up a picture that was cut off and calls it a success.

#pragma once

#include <istream>

namespace vexa {

/// Whether the stream starts as a JPEG does. Leaves it at its start.
bool isJpeg(std::istream& stream);

/// Whether the segments of a JPEG, from its start on, lead to its end-of-image marker (ITU-T T.81, annex B).
bool endsAsJpeg(std::istream& stream);

}  // namespace vexa
