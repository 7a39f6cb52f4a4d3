#pragma once

#include <optional>
#include <span>
#include <vector>

#include "solve/integration/run_settings.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// Where a series begins.
struct SeriesPoint {
  mpfr_srcptr time;
  std::span<const Real> states;
  bool backwards;
  long scaleExponent;
};

/// How lines go on from a point where their divisors and radicands are 0.
struct Continuation {
  std::vector<CommonRoot> roots;
  bool isExact;  ///< whether all that counts as 0 is 0 without rounding
};

/// The lines that divide by one of these lines, or take its root, as they go on from a point where
/// it is 0; none where one of them cannot: a pole, an odd root, or
/// - a quotient that its own operands depend on at once, or beside others that do not. Where it
/// does
///   so by way of derivatives, as y in y' = y/t, its series tells whether what goes on is unique;
/// - a root whose radicand changes linearly with a state, as in h' = -sqrt(h): beyond the kink of
///   the root, the solution depends on how it is approached.
/// A term counts as 0 when it is below the tolerance beside what it is made of.
std::optional<Continuation> FindContinuation(const Tape& tape, const RunSettings& settings,
                                             mpfr_prec_t bits, const SeriesPoint& point,
                                             const std::vector<LineId>& zeroLines);

}  // namespace varno::solve
