#pragma once

#include "solve/integration/domains.h"
#include "solve/number/moment.h"

namespace varno::solve {

/// The time of a root that lies ahead of `start`, in units of 2^scaleExponent: a simple fraction
/// where one lies so near that this cannot be by chance.
Moment TimeOfRoot(const RootAhead& root, const Moment& start, bool backwards, long scaleExponent);

}  // namespace varno::solve
