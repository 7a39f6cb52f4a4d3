#pragma once

#include <limits>
#include <optional>

#include "solve/number/real.h"

namespace varno::solve {

/// A number of a row as one run gives it: none where a definition is undefined. `size` is log2 of
/// how large it would be if nothing cancelled.
struct SizedNumber {
  std::optional<Real> value;
  double size;
  bool isInDoubt = false;   ///< more digits must tell whether there is a value, and which
  bool isAtJump = false;    ///< whether an argument that is not exact counts as at a jump
  double bitsForDoubt = 0;  ///< how many bits a run needs at least to tell it
};

enum class Verdict {
  kAgree,  ///< to a quarter of the last digit's unit
  kZero,   ///< both are nothing beside their size: 0 to the unit of a verified zero
  kTiny,   ///< they differ, but both and their sizes are below what counts as 0
  kDiffer,
  kBlurred,  ///< so small beside their size that they may be zero, or wrong alike
};

/// How far two runs agree on a number.
struct Agreement {
  Verdict verdict;
  /// Of a difference: how many decimals the runs have in common, counted from the number's size or,
  /// if that is larger, from the number.
  double commonDecimals;
};

/// What rows ask of two runs.
struct AgreementRule {
  int digits;           ///< significant digits that must agree
  bool mayDeclareZero;  ///< whether the runs are exact enough to call a number zero
  /// How many decimals below its size a number still has all its digits: what lies deeper may be
  /// what the roundings of both runs have in common, and agrees for that reason only.
  double clearDecimals;
  /// log2 of what counts as 0: of smaller numbers no digits are asked for.
  double tinyLog2 = -std::numeric_limits<double>::infinity();
};

/// A number below 10^-(digits + kZeroGuardDigits) of its size is not chased further.
inline constexpr int kZeroGuardDigits = 15;
/// Of the decimals of a run, those that errors of steps and roundings may have eaten.
inline constexpr double kNoiseDecimals = 4;
inline constexpr double kLog2Of10 = 3.3219280948873626;

Agreement Compare(const SizedNumber& a, const SizedNumber& b, const AgreementRule& rule);

/// The power of ten to which a number of this size (log2) is a verified zero.
long ZeroUnit(double size, int digits);

}  // namespace varno::solve
