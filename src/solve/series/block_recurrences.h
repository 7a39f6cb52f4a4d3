#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "solve/series/line_operands.h"
#include "solve/series/poll.h"
#include "solve/series/settled_lines.h"
#include "solve/series/settled_wide_lines.h"

namespace varno::solve {

/// The recurrences of BlockSeries, by which one thread makes the terms k > 0 of some lines. The
/// numbers in parentheses are those of docs/solve/recurrences.md.
template <class Arithmetic>
class BlockRecurrences {
 public:
  /// Of these lines, in the order in which their terms are made. `operands` are those of all lines,
  /// and shared by several objects on as many threads: LineSchedule keeps these apart.
  BlockRecurrences(const LineOperands<Arithmetic>& operands, std::span<const LineId> lines,
                   mpfr_prec_t bits, Poll poll)
      : operands(operands),
        lines(lines),
        arithmetic(bits),
        settled(operands, lines),
        poll(std::move(poll))
  {}

  /// A step with this scale.
  void Begin(long newScaleExponent, bool backwards)
  {
    scaleExponent = newScaleExponent;
    isBackwards = backwards;
    settled.Begin(newScaleExponent, backwards);
  }
  /// For settled lines: SettledLines.
  void DropBits(double bits, std::span<const double> coarsest) { settled.DropBits(bits, coarsest); }
  /// Stores term k > 0 of the lines first..last-1 in their order, weighted ones, too.
  void StoreTerms(std::size_t first, std::size_t last, int k);
  /// The same, as long as what is known of series beside their terms stays: else false, and not all
  /// are stored.
  bool StoreSteadyTerms(std::size_t first, std::size_t last, int k);

 private:
  using Value = typename Arithmetic::Value;
  using Terms = typename Arithmetic::Terms;

  /// So many products of terms may pass between two polls: some milliseconds at most.
  static constexpr int kBlockProductsPerPoll = 4096;

  void CountProducts(int count);
  void StoreTerm(LineId id, int k);
  bool StoreSteadyTerm(LineId id, int k);
  bool StoreSteady(Terms& row, int k, const Value& value);
  void StoreAndNote(Terms& row, int k, const Value& value);
  void StoreWeighted(LineId id, int k);
  Value StateTerm(const Line& line, int k);
  Value TermOf(const Line& line, LineId id, int k);
  Value Combination(const Line& line, int k);
  Value Scaled(const Factor& factor, int k);
  Value IntegralOfQuotient(const Line& line, LineId id, int k);
  Value Angle(const Line& line, LineId id, int k);
  Value Power(const Line& line, LineId id, int k);
  Value Difference(Value a, Value b) const
  {
    arithmetic.Negate(b);
    arithmetic.Add(a, b);
    return a;
  }
  /// The sum over j = first..last of a[j] b[k-j] that stands at place `which` of a recurrence
  Value Convolve(LineId id, int which, const Terms& a, const Terms& b, int first, int last, int k)
  {
    if constexpr (kIsRelaxed<Arithmetic>) {
      return arithmetic.Convolve(operands.convolutions[id][static_cast<std::size_t>(which)], a, b,
                                 first, last, k, poll);
    } else {
      return arithmetic.Convolve(a, b, first, last, k);
    }
  }
  /// The sum over j = first..k-first of a[j] a[k-j] of a recurrence
  Value ConvolveSelf(LineId id, const Terms& a, int first, int k)
  {
    if constexpr (kIsRelaxed<Arithmetic>) {
      return Convolve(id, 0, a, a, first, k - first, k);
    } else {
      return arithmetic.ConvolveSelf(a, first, k);
    }
  }
  Terms& TermsOf(LineId id) { return operands.terms[id]; }
  Terms& Weighted(LineId id) { return operands.weighted[operands.weightedRows[id]]; }

  LineOperands<Arithmetic> operands;
  std::span<const LineId> lines;
  Arithmetic arithmetic;
  SettledLines<Arithmetic> settled;
  Poll poll;
  int products = 0;  // since the latest poll
  long scaleExponent = 0;
  bool isBackwards = false;
};

template <class Arithmetic>
void BlockRecurrences<Arithmetic>::StoreTerms(std::size_t first, std::size_t last, int k)
{
  for (;; ++first) {
    const std::size_t next = settled.StoreTerms(first, last, k);
    CountProducts(static_cast<int>(next - first + 1) * (k + 1));
    if (next == last) return;
    first = next;
    StoreTerm(lines[first], k);
    if (operands.weightedRows[lines[first]] != kNone) StoreWeighted(lines[first], k);
  }
}

template <class Arithmetic>
void BlockRecurrences<Arithmetic>::StoreTerm(LineId id, int k)
{
  StoreAndNote(TermsOf(id), k,
               operands.leftOut[id] ? Value() : TermOf(operands.tape.lines[id], id, k));
}

template <class Arithmetic>
bool BlockRecurrences<Arithmetic>::StoreSteadyTerms(std::size_t first, std::size_t last, int k)
{
  for (;; ++first) {
    const std::size_t next = settled.StoreTerms(first, last, k);
    CountProducts(static_cast<int>(next - first + 1) * (k + 1));
    if (next == last) return true;
    first = next;
    if (!StoreSteadyTerm(lines[first], k)) return false;
  }
}

template <class Arithmetic>
bool BlockRecurrences<Arithmetic>::StoreSteadyTerm(LineId id, int k)
{
  Terms& row = TermsOf(id);
  if (!StoreSteady(row, k, operands.leftOut[id] ? Value() : TermOf(operands.tape.lines[id], id, k)))
    return false;
  if (operands.weightedRows[id] == kNone) return true;
  Value weighted = arithmetic.Load(row, k);
  arithmetic.MultiplyBy(weighted, k);
  return StoreSteady(Weighted(id), k, weighted);
}

template <class Arithmetic>
bool BlockRecurrences<Arithmetic>::StoreSteady(Terms& row, int k, const Value& value)
{
  if (!arithmetic.Fits(row, value)) return false;
  arithmetic.Store(row, k, value);
  return true;
}

/// Stores a term; what is prepared for lines that are settled depends on exponents.
template <class Arithmetic>
void BlockRecurrences<Arithmetic>::StoreAndNote(Terms& row, int k, const Value& value)
{
  const bool hadExponent = row.started;
  const long exponent = row.exponent;
  arithmetic.Store(row, k, value);
  if (!hadExponent || row.exponent != exponent) operands.Rearrange();
}

template <class Arithmetic>
void BlockRecurrences<Arithmetic>::StoreWeighted(LineId id, int k)
{
  Value weighted = arithmetic.Load(TermsOf(id), k);
  arithmetic.MultiplyBy(weighted, k);
  StoreAndNote(Weighted(id), k, weighted);
}

template <class Arithmetic>
void BlockRecurrences<Arithmetic>::CountProducts(int count)
{
  products += count;
  if (products < kBlockProductsPerPoll) return;
  products = 0;
  if (poll) poll();
}

template <class Arithmetic>
auto BlockRecurrences<Arithmetic>::TermOf(const Line& line, LineId id, int k) -> Value
{
  switch (line.kind) {
    case LineKind::kConstant:
      return {};
    case LineKind::kState:
      return StateTerm(line, k);
    case LineKind::kTime: {
      if (k > 1) return {};
      Real scale(2);
      mpfr_set_si_2exp(scale, isBackwards ? -1 : 1, scaleExponent, MPFR_RNDN);
      return arithmetic.FromNumber(scale);
    }
    case LineKind::kCombination:
      return Combination(line, k);
    case LineKind::kProduct:
      return Convolve(id, 0, TermsOf(line.a), TermsOf(line.b), 0, k, k);
    case LineKind::kSquare:
      return ConvolveSelf(id, TermsOf(line.a), 0, k);
    case LineKind::kQuotient: {
      // (6) s b = a: s[k] = (a[k] - sum over j = 1..k of b[j] s[k-j]) / b[0]
      Value s = Difference(arithmetic.Load(TermsOf(line.a), k),
                           Convolve(id, 0, TermsOf(line.b), TermsOf(id), 1, k, k));
      arithmetic.Multiply(s, operands.divisors[id]);
      return s;
    }
    case LineKind::kSquareRoot: {
      // (7) s^2 = a: s[k] = (a[k] - sum over j = 1..k-1 of s[j] s[k-j]) / (2 s[0])
      Value s =
          Difference(arithmetic.Load(TermsOf(line.a), k), ConvolveSelf(id, TermsOf(id), 1, k));
      arithmetic.Multiply(s, operands.divisors[id]);
      return s;
    }
    case LineKind::kPower:
      return Power(line, id, k);
    case LineKind::kIntegralOfProduct: {
      // (9) s' = +-b a': k s[k] = +-(sum over j = 1..k of j a[j] b[k-j])
      Value s = Convolve(id, 0, Weighted(line.a), TermsOf(line.b), 1, k, k);
      arithmetic.DivideBy(s, k);
      if (line.negative) arithmetic.Negate(s);
      return s;
    }
    case LineKind::kIntegralOfQuotient:
      return IntegralOfQuotient(line, id, k);
    case LineKind::kAngle:
      return Angle(line, id, k);
  }
  return {};
}

/// (2) x' = f: term k of x is scale / k times term k-1 of f.
template <class Arithmetic>
auto BlockRecurrences<Arithmetic>::StateTerm(const Line& line, int k) -> Value
{
  Value x = arithmetic.Load(TermsOf(operands.tape.rightHandSides[line.index]), k - 1);
  arithmetic.Shift(x, scaleExponent);
  if (isBackwards) arithmetic.Negate(x);
  arithmetic.DivideBy(x, k);
  return x;
}

/// (3) s[k] = sum of factor * a[k]
template <class Arithmetic>
auto BlockRecurrences<Arithmetic>::Combination(const Line& line, int k) -> Value
{
  if (line.factorCount == 0) return {};
  const auto* factor = &operands.tape.factors[line.firstFactor];
  Value sum = Scaled(*factor, k);
  for (std::uint32_t i = 1; i < line.factorCount; ++i) arithmetic.Add(sum, Scaled(*++factor, k));
  return sum;
}

/// factor * a[k]
template <class Arithmetic>
inline auto BlockRecurrences<Arithmetic>::Scaled(const Factor& factor, int k) -> Value
{
  Value a = arithmetic.Load(TermsOf(factor.line), k);
  if (factor.whole == 1 || a.IsExactZero()) return a;
  if (factor.whole == -1) {
    arithmetic.Negate(a);
  } else if (factor.whole != 0) {
    arithmetic.MultiplyByWhole(a, factor.whole);
  } else {
    arithmetic.Multiply(a, operands.constants[factor.constant]);
  }
  return a;
}

/// (8) a s' = e s a': k a[0] s[k] = sum over j = 1..k of ((e + 1) j - k) a[j] s[k-j]
template <class Arithmetic>
auto BlockRecurrences<Arithmetic>::Power(const Line& line, LineId id, int k) -> Value
{
  Value s = Convolve(id, 0, Weighted(line.a), TermsOf(id), 1, k, k);
  if (line.constant != kNone) arithmetic.Multiply(s, operands.exponents[line.constant]);
  arithmetic.DivideBy(s, k);
  s = Difference(s, Convolve(id, 1, TermsOf(line.a), TermsOf(id), 1, k, k));
  arithmetic.Multiply(s, operands.divisors[id]);
  return s;
}

/// (10) b s' = +-a': k b[0] s[k] = +-k a[k] - sum over j = 1..k-1 of j s[j] b[k-j]
template <class Arithmetic>
auto BlockRecurrences<Arithmetic>::IntegralOfQuotient(const Line& line, LineId id, int k) -> Value
{
  Value s = arithmetic.Load(TermsOf(line.a), k);
  arithmetic.MultiplyBy(s, k);
  if (line.negative) arithmetic.Negate(s);
  s = Difference(s, Convolve(id, 0, Weighted(id), TermsOf(line.b), 1, k - 1, k));
  arithmetic.Multiply(s, operands.divisors[id]);
  arithmetic.DivideBy(s, k);
  return s;
}

/// (11) c s' = b a' - a b' with c = a^2 + b^2: k c[0] s[k] =
/// sum over j = 1..k of (j a[j] b[k-j] - j b[j] a[k-j]) - sum over j = 1..k-1 of j s[j] c[k-j]
template <class Arithmetic>
auto BlockRecurrences<Arithmetic>::Angle(const Line& line, LineId id, int k) -> Value
{
  Value s = Difference(Convolve(id, 0, Weighted(line.a), TermsOf(line.b), 1, k, k),
                       Convolve(id, 1, Weighted(line.b), TermsOf(line.a), 1, k, k));
  s = Difference(s, Convolve(id, 2, Weighted(id), TermsOf(line.c), 1, k - 1, k));
  arithmetic.Multiply(s, operands.divisors[id]);
  arithmetic.DivideBy(s, k);
  return s;
}

}  // namespace varno::solve
