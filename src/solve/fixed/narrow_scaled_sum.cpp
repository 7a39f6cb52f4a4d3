#include "solve/fixed/narrow_scaled_sum.h"

#include <algorithm>
#include <bit>

namespace varno::solve {

using namespace narrow;

namespace {

/// log2 of what the sum of all ratios stays below: times terms below 2^119 it fits 126 bits.
constexpr long kMostSumBits = 6;

}  // namespace

void NarrowScaledSum::Add(const NarrowTerms& a, const NarrowFactor& factor)
{
  operands.push_back({&a, factor, {}});
}

bool NarrowScaledSum::Prepare(const NarrowTerms& sum)
{
  if (operands.size() > kMostOperands) return false;
  const auto countBits = static_cast<long>(std::bit_width(operands.size()));
  const long most = std::min(NarrowRatio::kMostBits, kMostSumBits - countBits);
  long largest = most;
  for (const Operand& operand : operands) {
    // One that has not started is 0.
    if (!operand.terms->started) continue;
    largest = std::max(largest, RatioBits(operand.factor, operand.terms->exponent, sum.exponent));
  }
  if (!IsShift(largest - most)) return false;
  up = static_cast<int>(largest - most);
  for (Operand& operand : operands) {
    operand.ratio = {};
    if (operand.terms->started)
      operand.ratio = RatioIn(operand.factor, operand.terms->exponent, sum.exponent, up);
  }
  const auto longOnes = std::partition(operands.begin(), operands.end(),
                                       [](const Operand& a) { return a.ratio.low == 0; });
  shortCount = static_cast<std::size_t>(longOnes - operands.begin());
  return true;
}

}  // namespace varno::solve
