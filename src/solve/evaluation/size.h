#pragma once

#include <mpfr.h>

#include "solve/graph/operation.h"
#include "solve/number/moment.h"

namespace varno::solve {

/// log2 |x|: -infinity for 0, +infinity for what is no number.
double Log2Size(mpfr_srcptr x);
double Log2Size(const Moment& moment);

/// An operand or a result, with log2 of its size: how large it would be if nothing cancelled.
///
/// A relative error of 2^-b anywhere above a value shows in it as about size * 2^-b. What is
/// smaller than that cannot be told from 0 by b bits.
struct SizedValue {
  mpfr_srcptr value;
  double size;
};

/// log2 of the size of an operation's result:
///     size(a + b) = max(size a, size b),  size(a b) = max(size(a) |b|, |a| size(b)),
///     size(f(u)) = max(|f|, |f'| size(u)).
/// What is constant between jumps has its own magnitude, min and max the size of what they take.
/// `b` is looked at by binary operations only.
double SizeOfResult(Operation operation, mpfr_srcptr result, const SizedValue& a,
                    const SizedValue& b);

}  // namespace varno::solve
