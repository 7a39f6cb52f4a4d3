#include "solve/integration/run_settings.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "solve/series/series.h"

namespace varno::solve {

namespace {

/// More than any run can hold, and no more than an order can count: what asks for more is refused
/// for its bits.
constexpr double kMostDecimals = 1e9;
constexpr int kLeastOrder = 12;
/// What a step costs beside the sums of products is worth so many orders more, where they are no
/// more than this part of the order.
constexpr int kMostRaise = 64;
constexpr double kRaise = 0.6;
/// The recurrences of quotients, roots and logarithms lose some bits with the order. Those of
/// higher ones are taken only where numbers have room for them.
constexpr int kMostOrderToGuard = 27;

/// What a run with this order has beyond its tolerance.
double GuardBits(int order)
{
  return 30 + 0.15 * order;
}

}  // namespace

RunSettings SettingsFor(double decimals, double placeDecimals)
{
  const double logTolerance =
      -std::clamp(decimals, kLeastDecimals, kMostDecimals) * std::numbers::ln10;
  const int order = std::max(kLeastOrder, static_cast<int>(std::ceil(1 - logTolerance / 2)));
  const double toleranceBits = -logTolerance / std::numbers::ln2;
  const auto most = static_cast<mpfr_prec_t>(std::ceil(toleranceBits + GuardBits(order)));
  const auto least = static_cast<mpfr_prec_t>(
      std::ceil(toleranceBits + GuardBits(std::min(order, kMostOrderToGuard))));
  return {.toleranceBits = toleranceBits,
          .order = order,
          .raisedOrder = order + std::min(kMostRaise, static_cast<int>(kRaise * order)),
          .bits = std::min(most, MostBitsAsCheapAs(least)),
          .bitsOfTerms = least,
          .disturbed = false,
          .mayDeclareZero = true,
          .placeBits = placeDecimals * std::numbers::ln10 / std::numbers::ln2};
}

}  // namespace varno::solve
