#include "solve/series/settled_lines.h"

#include <algorithm>
#include <cstddef>

#include "solve/fixed/narrow_settled.h"

namespace varno::solve {

using Lines = SettledLines<NarrowArithmetic>;

Lines::SettledLines(const LineOperands<NarrowArithmetic>& operands, std::span<const LineId> lines)
    : operands(operands), lines(lines), prepared(lines.size())
{}

void Lines::Begin(long newScaleExponent, bool backwards)
{
  scaleExponent = newScaleExponent;
  isBackwards = backwards;
  operands.Rearrange();
}

// ---------------------------------------------------------------------------------------------
// The recurrences: numbers in parentheses are those of docs/solve/recurrences.md.

std::size_t Lines::StoreTerms(std::size_t first, std::size_t last, int k)
{
  // What changes in other lines meanwhile does not concern these.
  const std::int64_t arrangement = operands.Arrangement();
  for (std::size_t i = first; i < last; ++i) {
    Prepared& line = prepared[i];
    if (line.arrangement != arrangement) {
      Prepare(line, lines[i], k);
      line.arrangement = arrangement;
    }
    if (StoreTerm(line, k)) continue;
    // What is not settled yet may be so after this term, which is to be computed in another way.
    if (!line.s->inexact) line.arrangement = kUnprepared;
    return i;
  }
  return last;
}

/// Stores term k, and the weighted one; false if that is to be done in another way.
[[gnu::always_inline]] inline bool Lines::StoreTerm(const Prepared& line, int k)
{
  const NarrowRatio& byK = narrow::kReciprocals[static_cast<std::size_t>(k)];
  NarrowSums sums;
  Int128 term = 0;
  switch (line.kind) {
    case LineKind::kState:
      // (2) x' = f: term k of x is scale / k times term k-1 of f.
      sums.Add(line.a->high[k - 1], line.a->low[k - 1], byK);
      term = sums.Total();
      if (line.isNegative) term = -term;
      break;
    case LineKind::kCombination:
      term = line.sum.Term(k).Total();
      break;
    case LineKind::kProduct:
      term = NarrowSums::OfProducts(*line.a, *line.b, 0, k, k).Total();
      break;
    case LineKind::kSquare:
      term = NarrowSums::OfProducts(*line.a, 0, k).Total();
      break;
    case LineKind::kQuotient:
      // (6) s[k] = (a[k] - sum over j = 1..k of b[j] s[k-j]) / b[0]
      term = -NarrowSums::OfProducts(*line.b, *line.s, 1, k, k).Total();
      if (!Divide(line, k, term)) return false;
      break;
    case LineKind::kSquareRoot:
      // (7) s[k] = (a[k] - sum over j = 1..k-1 of s[j] s[k-j]) / (2 s[0])
      term = -NarrowSums::OfProducts(*line.s, 1, k).Total();
      if (!Divide(line, k, term)) return false;
      break;
    case LineKind::kIntegralOfProduct:
      // (9) s' = +-b a': k s[k] = +-(sum over j = 1..k of j a[j] b[k-j])
      term = NarrowSums::OfProducts(*line.a, *line.b, 1, k, k).Total();
      if (!narrow::FitsBits(term, narrow::kValueBits)) return false;
      sums.Add(term, byK);
      term = sums.Total();
      if (line.isNegative) term = -term;
      break;
    default:
      return false;
  }
  if (!narrow::StoreSettled(*line.s, k, term, line.shift)) return false;
  return line.weighted == nullptr || StoreSettledMultiple(*line.weighted, k, k, *line.s, k);
}

/// Adds term k of the operand to the products and divides; false if these are too large.
[[gnu::always_inline]] inline bool Lines::Divide(const Prepared& line, int k, Int128& products)
{
  if (!narrow::FitsBits(products, narrow::kValueBits)) return false;
  NarrowSums sums;
  sums.Add(products, line.ofProducts);
  sums.Add(line.a->high[k], line.a->low[k], line.ofOperand);
  products = sums.Total();
  return true;
}

// ---------------------------------------------------------------------------------------------
// What is constant while the exponents stay

void Lines::Prepare(Prepared& line, LineId id, int k)
{
  line.s = &operands.terms[id];
  line.weighted = Weighted(id);
  line.kind = kOtherKind;
  if (!line.s->started || !(line.s->inexact || LosesBits(id, k))) return;
  if (SetUp(line, id)) line.kind = operands.tape.lines[id].kind;
}

/// Whether term k, unless it is 0, drops bits for certain, or is made of what has.
bool Lines::LosesBits(LineId id, int k) const
{
  const Line& line = operands.tape.lines[id];
  const auto isInexact = [&](LineId a, int j) {
    const NarrowTerms& row = operands.terms[a];
    return row.IsSettled() && row.exactZero[j] == 0;
  };
  switch (line.kind) {
    case LineKind::kState: {
      const LineId derivative = operands.tape.rightHandSides[line.index];
      // Only what has no low digit is ever divided without a rest.
      return isInexact(derivative, k - 1) || (k > 1 && operands.terms[derivative].low[k - 1] != 0);
    }
    case LineKind::kCombination: {
      const Factor* const first = &operands.tape.factors[line.firstFactor];
      return std::any_of(first, first + line.factorCount,
                         [&](const Factor& factor) { return isInexact(factor.line, k); });
    }
    case LineKind::kProduct:
    case LineKind::kSquare: {
      const NarrowTerms &a = operands.terms[line.a],
                        &b = line.kind == LineKind::kSquare ? a : operands.terms[line.b];
      return a.started && b.started && (a.inexact || b.inexact || (a.hasLow && b.hasLow));
    }
    case LineKind::kQuotient:
    case LineKind::kSquareRoot:
      return operands.divisors[id].inexact;
    default:
      return false;
  }
}

/// Whether its terms are made here.
bool Lines::SetUp(Prepared& line, LineId id) const
{
  const Line& operation = operands.tape.lines[id];
  const auto row = [this](LineId line) { return line == kNone ? nullptr : &operands.terms[line]; };
  line.a = row(operation.a);
  line.b = row(operation.b);
  line.isNegative = operation.negative;
  switch (operation.kind) {
    case LineKind::kState:
      line.a = row(operands.tape.rightHandSides[operation.index]);
      line.isNegative = isBackwards;
      return SetUnits(line, line.a->exponent + scaleExponent);
    case LineKind::kCombination:
      return PrepareSum(line, id);
    case LineKind::kProduct:
      return SetUnits(line, line.a->exponent + line.b->exponent);
    case LineKind::kSquare:
      return SetUnits(line, 2 * line.a->exponent);
    case LineKind::kQuotient:
      return PrepareDivision(line, id, line.b->exponent + line.s->exponent);
    case LineKind::kSquareRoot:
      return PrepareDivision(line, id, 2 * line.s->exponent);
    case LineKind::kIntegralOfProduct:
      line.a = Weighted(operation.a);
      return SetUnits(line, line.a->exponent + line.b->exponent);
    default:
      return false;
  }
}

/// For what is computed with this exponent.
bool Lines::SetUnits(Prepared& line, long exponent)
{
  const long up = exponent - line.s->exponent;
  if (!narrow::IsShift(up)) return false;
  line.shift = narrow::TermShift(static_cast<int>(up));
  return true;
}

bool Lines::PrepareSum(Prepared& line, LineId id) const
{
  if (line.sum.IsEmpty()) {
    const Line& operation = operands.tape.lines[id];
    for (std::uint32_t i = 0; i < operation.factorCount; ++i) {
      const Factor& factor = operands.tape.factors[operation.firstFactor + i];
      line.sum.Add(operands.terms[factor.line], factor.whole != 0
                                                    ? NarrowArithmetic::ToFactor(factor.whole)
                                                    : operands.constants[factor.constant]);
    }
  }
  if (!line.sum.Prepare(*line.s)) return false;
  line.shift = narrow::TermShift(line.sum.Up());
  return true;
}

/// The reciprocal times an operand, and times products with this exponent.
bool Lines::PrepareDivision(Prepared& line, LineId id, long products) const
{
  const NarrowFactor& divisor = operands.divisors[id];
  const long exponent = line.s->exponent;
  // An operand that has not started is 0.
  const long operand = line.a->started ? line.a->exponent : products;
  const long largest = narrow::RatioBits(divisor, std::max(products, operand), exponent);
  const long up = std::max(0L, largest - NarrowRatio::kMostBits);
  if (!narrow::IsShift(up)) return false;
  line.shift = narrow::TermShift(static_cast<int>(up));
  line.ofProducts = narrow::RatioIn(divisor, products, exponent, up);
  line.ofOperand = narrow::RatioIn(divisor, operand, exponent, up);
  return true;
}

}  // namespace varno::solve
