#include "solve/series/settled_lines.h"

#include <algorithm>
#include <cstddef>

#include "solve/fixed/narrow_settled.h"

namespace varno::solve {

using Lines = SettledLines<NarrowArithmetic>;

Lines::SettledLines(const LineOperands<NarrowArithmetic>& operands)
    : operands(operands), prepared(operands.tape.lines.size())
{}

void Lines::Begin(long newScaleExponent, bool backwards)
{
  scaleExponent = newScaleExponent;
  isBackwards = backwards;
  Rearrange();
}

// ---------------------------------------------------------------------------------------------
// The recurrences: numbers in parentheses are those of docs/solve/recurrences.md.

LineId Lines::StoreTerms(LineId first, int k)
{
  Prepared *const begin = prepared.data(), *const end = begin + prepared.size();
  Prepared* line = begin + first;
  for (; line != end; ++line) {
    if (line->arrangement != arrangement) Prepare(static_cast<LineId>(line - begin));
    const std::optional<NarrowSums> sums = Term(*line, k);
    if (!sums) break;
    const Int128 term = sums->Total();
    if (!narrow::StoreSettled(*line->s, k, line->isNegative ? -term : term, line->up)) break;
    if (line->weighted != nullptr && !StoreSettledMultiple(*line->weighted, k, k, *line->s, k))
      break;
  }
  return static_cast<LineId>(line - begin);
}

/// Term k as sums of digits, in units of 2^up units of the line, but for its sign; none where they
/// do not hold it.
[[gnu::always_inline]] inline std::optional<NarrowSums> Lines::Term(const Prepared& line, int k)
{
  const NarrowRatio& byK = narrow::kReciprocals[static_cast<std::size_t>(k)];
  NarrowSums sums;
  switch (line.kind) {
    case LineKind::kState:
      // (2) x' = f: term k of x is scale / k times term k-1 of f.
      sums.Add(line.a->high[k - 1], line.a->low[k - 1], byK);
      return sums;
    case LineKind::kCombination:
      return line.sum.Term(k);
    case LineKind::kProduct:
      return NarrowSums::OfProducts(*line.a, *line.b, 0, k, k);
    case LineKind::kSquare:
      return NarrowSums::OfProducts(*line.a, 0, k);
    case LineKind::kQuotient:
      return Quotient(line, k, NarrowSums::OfProducts(*line.b, *line.s, 1, k, k));
    case LineKind::kSquareRoot:
      return Quotient(line, k, NarrowSums::OfProducts(*line.s, 1, k));
    case LineKind::kIntegralOfProduct: {
      // (9) s' = +-b a': k s[k] = +-(sum over j = 1..k of j a[j] b[k-j])
      const Int128 products = NarrowSums::OfProducts(*line.a, *line.b, 1, k, k).Total();
      if (!narrow::FitsBits(products, narrow::kValueBits)) return std::nullopt;
      sums.Add(products, byK);
      return sums;
    }
    default:
      return std::nullopt;
  }
}

/// (6), (7) s[k] = (a[k] - products) / divisor
std::optional<NarrowSums> Lines::Quotient(const Prepared& line, int k, const NarrowSums& products)
{
  const Int128 total = -products.Total();
  if (!narrow::FitsBits(total, narrow::kValueBits)) return std::nullopt;
  NarrowSums sums;
  sums.Add(total, line.ofProducts);
  sums.Add(line.a->high[k], line.a->low[k], line.ofOperand);
  return sums;
}

// ---------------------------------------------------------------------------------------------
// What is constant while the exponents stay

void Lines::Prepare(LineId id)
{
  Prepared& line = prepared[id];
  line.s = &operands.terms[id];
  line.weighted = Weighted(id);
  line.kind = kOtherKind;
  // It may be settled after the next term.
  if (!line.s->IsSettled()) return;
  line.arrangement = arrangement;
  if (SetUp(line, id)) line.kind = operands.tape.lines[id].kind;
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
  line.up = static_cast<int>(up);
  return narrow::IsShift(up);
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
  line.up = line.sum.Up();
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
  line.up = static_cast<int>(up);
  line.ofProducts = narrow::RatioIn(divisor, products, exponent, up);
  line.ofOperand = narrow::RatioIn(divisor, operand, exponent, up);
  return true;
}

}  // namespace varno::solve
