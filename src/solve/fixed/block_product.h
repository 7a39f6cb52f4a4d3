#pragma once

#include <functional>
#include <span>

#include <gmp.h>

#include "solve/fixed/long_terms.h"

namespace varno::solve {

/// Terms first..first+count-1 of a series.
struct TermBlock {
  const LongTerms* terms;
  int first, count;
};

/// Two blocks with at most half as many terms as twice `half`: term u of one times term v of the
/// other belongs to sum u + v.
struct BlockPair {
  TermBlock x, y;
};

/// The sums u + v = half + first..half + first+count-1, first + count <= half: rows of
/// LongSum::Size(n) limbs, one behind the other.
struct SumBlock {
  mp_limb_t* limbs;
  int first, count;
};

/// Adds to sums the products of all pairs, twice if asked for. Each product may be wrong by two
/// units of the limb behind the last one of a term.
///
/// Terms are cut into digits; a product of two series of such polynomials is one of their values,
/// at roots of unity modulo some primes (docs/solve/fixed-point.md). `poll` is called every few
/// milliseconds.
void AddBlockProducts(int n, std::span<const BlockPair> pairs, int half, bool twice, SumBlock sums,
                      const std::function<void()>& poll);

}  // namespace varno::solve
