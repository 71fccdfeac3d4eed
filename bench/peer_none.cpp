/// @file
/// No opponent: operations are measured against the copy alone.

#include "peer.h"

namespace bench {

Peer peerOf(const Call& /*call*/)
{
    return {};
}

}  // namespace bench
