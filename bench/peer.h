/// @file
/// The opponents: OpenCV on the host. On a GPU operations are measured against the device-to-device copy alone.

#pragma once

#include "bench.h"
#include "images.h"

namespace bench {

/// A call that has the same meaning for the library and its opponent.
struct Call {
    std::string operation;
    std::vector<Shared> sources;
    Shared dst;
    std::vector<double> parameters = {};
};

/// The opponent's work and name; both empty where there is no opponent.
struct Peer {
    Work work;
    std::string name;
};

/// The opponent of a call. It writes to `dst`.
Peer peerOf(const Call& call);

}  // namespace bench
