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
  operands.push_back({&a, factor});
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
  products.clear();
  for (const auto& [terms, factor] : operands) {
    if (!terms->started) continue;
    products.push_back({terms->high.data(), terms->low.data(),
                        RatioIn(factor, terms->exponent, sum.exponent, up)});
  }
  const auto behindShortOnes = std::partition(products.begin(), products.end(),
                                              [](const Product& a) { return a.ratio.low == 0; });
  longOnes = products.data() + (behindShortOnes - products.begin());
  return true;
}

}  // namespace varno::solve
