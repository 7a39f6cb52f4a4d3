#include "solve/integration/run_settings.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace varno::solve {

namespace {

/// More than any run can hold, and no more than an order can count: what asks for more is refused
/// for its bits.
constexpr double kMostDecimals = 1e9;
constexpr int kLeastOrder = 12;
/// What a step costs beside the sums of products is worth so many orders more, where they are no
/// more than this part of the order.
constexpr int kMostRaise = 48;
constexpr double kRaise = 0.6;

}  // namespace

RunSettings SettingsFor(double decimals, double placeDecimals)
{
  const double logTolerance =
      -std::clamp(decimals, kLeastDecimals, kMostDecimals) * std::numbers::ln10;
  const int order = std::max(kLeastOrder, static_cast<int>(std::ceil(1 - logTolerance / 2)));
  const double toleranceBits = -logTolerance / std::numbers::ln2;
  // The recurrences of quotients, roots and logarithms lose some bits with the order.
  const double guardBits = 30 + 0.15 * order;
  return {.toleranceBits = toleranceBits,
          .order = order,
          .raisedOrder = order + std::min(kMostRaise, static_cast<int>(kRaise * order)),
          .bits = static_cast<mpfr_prec_t>(std::ceil(toleranceBits + guardBits)),
          .disturbed = false,
          .mayDeclareZero = true,
          .placeBits = placeDecimals * std::numbers::ln10 / std::numbers::ln2};
}

}  // namespace varno::solve
