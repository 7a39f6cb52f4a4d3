#pragma once

#include <limits>

#include <mpfr.h>

namespace varno::solve {

/// How exactly one run computes.
struct RunSettings {
  double toleranceBits;  ///< -log2 of the relative error that a step may make in a line
  int order;             ///< of the series, usually
  int raisedOrder;       ///< where the terms of all states fall over the step from the start
  mpfr_prec_t bits;      ///< of the arithmetic
  /// Of these, so many must be right of the terms of a step, but for the bits that Series allows it
  /// to lose.
  mpfr_prec_t bitsOfTerms;
  bool disturbed;  ///< whether it moves what it rounds, so that unstable solutions show
  /// Whether its zeros count as such where the way goes on only if they are: else ZeroInDoubt.
  bool mayDeclareZero;
  double placeBits;  ///< a step shorter than 2^-placeBits of the way is the end of the way
  /// Steps or switches that come to no end before a place (SlowApproach) end the way when it is
  /// nearer than 2^-approachBits of that.
  double approachBits = std::numeric_limits<double>::infinity();
  /// A switch nearer to a time than 2^-onTimeBits of the way counts as at that time.
  double onTimeBits = std::numeric_limits<double>::infinity();
  /// Where a way ends at a place that depends on the states, what they are there is known when it
  /// is no farther than 2^-landingBits of their sizes.
  double landingBits = std::numeric_limits<double>::infinity();
  /// log2 of what counts as 0 in a row: of smaller states nobody sees the digits.
  double tinyLog2 = -std::numeric_limits<double>::infinity();
  long mostBits = 1L << 20;  ///< what the arithmetic may take where a step needs more
  int threads = 1;           ///< that may share the work of a step: the numbers are the same
};

inline constexpr double kLeastDecimals = 12;

/// The settings of a run with a relative error of about 10^-decimals in each step, which follows
/// shrinking steps until they are 10^-placeDecimals of the way.
///
/// Order 1 - ln(tol)/2 needs the least work for a tolerance when a term costs the sum of those
/// before it (Jorba and Zou, A software package for the numerical integration of ODEs by means of
/// high-order Taylor methods, Experimental Mathematics 14, 2005). Below kLeastDecimals and order 12
/// nothing is saved: fewer decimals are taken for as many.
RunSettings SettingsFor(double decimals, double placeDecimals);

}  // namespace varno::solve
