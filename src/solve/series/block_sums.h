#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>

#include <mpfr.h>

#include "solve/evaluation/size.h"
#include "solve/fixed/narrow.h"
#include "solve/fixed/narrow_powers.h"
#include "solve/fixed/wide_sums.h"
#include "solve/number/real.h"
#include "solve/series/line_operands.h"

namespace varno::solve {

/// Sums over a step of lines whose terms are block fixed-point numbers
/// (docs/solve/fixed-point.md, Zeros). An object serves one thread: it keeps the powers of the
/// offset summed at last.
template <class Arithmetic>
class BlockSums {
 public:
  using Terms = typename Arithmetic::Terms;

  /// What is summed of a line: its first term with all its digits, and the others.
  struct Line {
    const Terms& terms;
    std::span<const double> logs;  ///< log2 of all terms
    mpfr_srcptr first;

    int Order() const { return static_cast<int>(logs.size()) - 1; }
  };

  explicit BlockSums(mpfr_prec_t bits) : arithmetic(bits), sumOfOthers(bits + 64), roundedSum(bits)
  {}

  /// Sets result to the sum of term k offset^k; raises MPFR's flag if it is rounded.
  void Sum(const Line& line, mpfr_srcptr offset, mpfr_ptr result);
  /// The same with the derivative by the offset.
  void SumWithDerivative(const Line& line, mpfr_srcptr offset, mpfr_ptr value, mpfr_ptr derivative);

  /// The last term that is not exactly 0, or 0.
  static int LastTerm(std::span<const double> logs);

 private:
  using Value = typename Arithmetic::Value;
  using Factor = typename Arithmetic::Factor;

  static constexpr bool kIsNarrow = std::is_same_v<Arithmetic, NarrowArithmetic>;
  static constexpr bool kIsWide = std::is_same_v<Terms, WideTerms>;

  Value SumBehindFirst(const Line& line, mpfr_srcptr offset);
  Value SumByHorner(const Line& line, mpfr_srcptr offset) const;
  Value SlopeByHorner(const Line& line, mpfr_srcptr offset) const;
  void PreparePowers(mpfr_srcptr offset, int order);
  void PrepareSlopes();
  void AddFirstTerm(const Line& line, const Value& others, mpfr_ptr result);

  Arithmetic arithmetic;
  // The powers of an offset, and their derivatives, as terms: each sum over a step is one of
  // products with these.
  Real powersOffset;
  int powersOrder = -1;
  Terms powers;  // term powersOrder - j is offset^j
  bool hasSlopes = false;
  Terms slopes;                  // term powersOrder - j is j offset^(j - 1)
  NarrowPowers ofFraction;       // the same of an offset that has few digits
  Real sumOfOthers, roundedSum;  // scratch, with more bits than numbers have, and as many
};

template <class Arithmetic>
void BlockSums<Arithmetic>::Sum(const Line& line, mpfr_srcptr offset, mpfr_ptr result)
{
  const bool isByHorner = kIsRelaxed<Arithmetic> || !line.terms.inexact;
  AddFirstTerm(line, isByHorner ? SumByHorner(line, offset) : SumBehindFirst(line, offset), result);
}

/// The sum of a line that has lost bits, but for its first term.
template <class Arithmetic>
auto BlockSums<Arithmetic>::SumBehindFirst(const Line& line, mpfr_srcptr offset) -> Value
{
  const int order = line.Order();
  if constexpr (kIsNarrow) {
    if (ofFraction.Set(offset, order)) return ofFraction.Sum(line.terms, order);
  }
  if constexpr (kIsWide) {
    const std::int64_t fraction = wide::FractionOf(offset);
    if (fraction != 0) return arithmetic.SumAt(fraction, line.terms, order);
  }
  PreparePowers(offset, order);
  return arithmetic.Convolve(line.terms, powers, 1, order, order);
}

template <class Arithmetic>
void BlockSums<Arithmetic>::SumWithDerivative(const Line& line, mpfr_srcptr offset, mpfr_ptr value,
                                              mpfr_ptr derivative)
{
  const int order = line.Order();
  if constexpr (kIsNarrow) {
    if (order <= NarrowPowers::kMostTermsOfSlopes && ofFraction.Set(offset, order)) {
      const auto [sum, slope] = ofFraction.SumAndSlope(line.terms, order);
      AddFirstTerm(line, sum, value);
      arithmetic.ToNumber(slope, derivative);
      return;
    }
  }
  if constexpr (kIsWide) {
    const std::int64_t fraction = wide::FractionOf(offset);
    if (fraction != 0 && line.terms.inexact) {
      const auto [sum, slope] = arithmetic.SumAndSlopeAt(fraction, line.terms, order);
      AddFirstTerm(line, sum, value);
      arithmetic.ToNumber(slope, derivative);
      return;
    }
  }
  Sum(line, offset, value);
  if (kIsRelaxed<Arithmetic>) {
    arithmetic.ToNumber(SlopeByHorner(line, offset), derivative);
    return;
  }
  PreparePowers(offset, order);
  PrepareSlopes();
  arithmetic.ToNumber(arithmetic.Convolve(line.terms, slopes, 1, order, order), derivative);
}

/// Horner's scheme on the terms behind the first. Where these are exact the sum may be, too: those
/// few that are not 0 with an offset of few bits. Of powers the highest, not needed, are not. Where
/// numbers are long, an offset of few bits makes short products.
template <class Arithmetic>
auto BlockSums<Arithmetic>::SumByHorner(const Line& line, mpfr_srcptr offset) const -> Value
{
  const Factor r = arithmetic.ToFactor(arithmetic.FromNumber(offset));
  Value sum;
  for (int k = LastTerm(line.logs); k > 0; --k) {
    arithmetic.Add(sum, arithmetic.Load(line.terms, k));
    arithmetic.Multiply(sum, r);
  }
  return sum;
}

/// The same for the derivative.
template <class Arithmetic>
auto BlockSums<Arithmetic>::SlopeByHorner(const Line& line, mpfr_srcptr offset) const -> Value
{
  const Factor r = arithmetic.ToFactor(arithmetic.FromNumber(offset));
  Value sum;
  for (int k = LastTerm(line.logs); k > 0; --k) {
    arithmetic.Multiply(sum, r);
    Value slope = arithmetic.Load(line.terms, k);
    arithmetic.MultiplyBy(slope, k);
    arithmetic.Add(sum, slope);
  }
  return sum;
}

template <class Arithmetic>
void BlockSums<Arithmetic>::PreparePowers(mpfr_srcptr offset, int order)
{
  if (powersOrder == order && mpfr_equal_p(powersOffset, offset) != 0) return;
  powersOffset.SetBits(mpfr_get_prec(offset));
  mpfr_set(powersOffset, offset, MPFR_RNDN);
  powersOrder = order;
  hasSlopes = false;
  const double size = Log2Size(offset);
  const double largestPower =
      mpfr_zero_p(offset) != 0 ? 0 : std::ceil(std::max(size, size * order));
  arithmetic.Reserve(powers, order + 1);
  arithmetic.Reset(powers, arithmetic.ExponentFor(static_cast<long>(largestPower)));
  const Value first = arithmetic.FromNumber(offset);
  const Factor r = arithmetic.ToFactor(first);
  arithmetic.Store(powers, order - 1, first);
  // That they may be exact changes nothing for sums with lines that are not.
  powers.inexact = true;
  const int stored = StoreSettledPowers(powers, order - 1, r);
  for (int k = order - 2 - stored; k >= 0; --k) {
    // From the line, where the exponent is that of the largest: a product has one of its own, which
    // grows with each factor above 1, and leaves less behind the point.
    Value power = arithmetic.Load(powers, k + 1);
    arithmetic.Multiply(power, r);
    arithmetic.Store(powers, k, power);
  }
}

/// The derivatives of the powers that are there.
template <class Arithmetic>
void BlockSums<Arithmetic>::PrepareSlopes()
{
  if (hasSlopes) return;
  hasSlopes = true;
  const int order = powersOrder;
  const double largestPower = std::max(0.0, Log2Size(powersOffset) * (order - 1));
  const double largestSlope = std::ceil(largestPower + std::log2(order));
  arithmetic.Reserve(slopes, order + 1);
  arithmetic.Reset(slopes, arithmetic.ExponentFor(static_cast<long>(largestSlope)));
  Real one(2);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  arithmetic.Store(slopes, order - 1, arithmetic.FromNumber(one));
  slopes.inexact = true;
  for (int j = 2; j <= order; ++j) {
    if (StoreSettledMultiple(slopes, order - j, j, powers, order - j + 1)) continue;
    Value slope = arithmetic.Load(powers, order - j + 1);
    arithmetic.MultiplyBy(slope, j);
    arithmetic.Store(slopes, order - j, slope);
  }
}

template <class Arithmetic>
void BlockSums<Arithmetic>::AddFirstTerm(const Line& line, const Value& others, mpfr_ptr result)
{
  mpfr_ptr sum = sumOfOthers;
  // With operands of the same precision MPFR takes a third of the time.
  if constexpr (kIsNarrow) sum = roundedSum;
  arithmetic.ToNumber(others, sum);
  mpfr_add(result, line.first, sum, MPFR_RNDN);
  if (others.lost || others.inexact) mpfr_set_inexflag();
}

template <class Arithmetic>
int BlockSums<Arithmetic>::LastTerm(std::span<const double> logs)
{
  for (std::size_t k = logs.size() - 1; k > 0; --k) {
    if (logs[k] > -std::numeric_limits<double>::infinity()) return static_cast<int>(k);
  }
  return 0;
}

}  // namespace varno::solve
