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

/// An operation on images of these types and its parameters, the same for the library and the opponent.
struct Case {
    std::string name;
    std::string opponent;  ///< the operation of its Call
    std::vector<VexaType> sources;
    VexaType dst;
    std::function<VexaStatus(const std::vector<Shared>& sources, VexaImage& dst)> call;
    std::vector<double> parameters = {};
    double tolerance = 0;  ///< negative if the results can't be compared
};

/// The benchmark of a case on noise, or on the sources given.
Benchmark pair(const Case& pairing, VexaSize size, std::vector<Shared> sources = {});

}  // namespace bench
