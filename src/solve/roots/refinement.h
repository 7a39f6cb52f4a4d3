#pragma once

#include "solve/roots/isolation.h"

namespace varno::solve {

/// The place of the root in an interval that IsolateRoots found, with a bound for its error that
/// holds while the polynomial is monotone around it.
///
/// Newton's method. Where there may be m > 1 roots, the place is the root of derivative m - 1,
/// which lies between them: it is known to full digits where the roots themselves are blurred.
UncertainValue RefineRoot(const UncertainPolynomial& polynomial, const RootInterval& interval);

}  // namespace varno::solve
