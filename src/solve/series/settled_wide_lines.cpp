#include "solve/series/settled_wide_lines.h"

#include <algorithm>
#include <utility>

namespace varno::solve {

template <int N>
SettledLines<WideArithmetic<N>>::SettledLines(const LineOperands<WideArithmetic<N>>& operands,
                                              std::span<const LineId> lines)
    : operands(operands), kernel(&BestColumnKernel()), lines(lines), prepared(lines.size())
{}

template <int N>
void SettledLines<WideArithmetic<N>>::Begin(long newScaleExponent, bool backwards)
{
  scaleExponent = newScaleExponent;
  isBackwards = backwards;
  operands.Rearrange();
}

/// The terms of large systems are far away: they are sent for while others are made.
constexpr std::size_t kLinesAhead = 2;

// ---------------------------------------------------------------------------------------------
// The recurrences: numbers in parentheses are those of docs/solve/recurrences.md.

template <int N>
std::size_t SettledLines<WideArithmetic<N>>::StoreTerms(std::size_t first, std::size_t last, int k)
{
  order.digits[0] = k;
  // What changes in other lines meanwhile does not concern these.
  const std::int64_t arrangement = operands.Arrangement();
  for (std::size_t i = first; i < last; ++i) {
    Prepared& line = prepared[i];
    if (i + kLinesAhead < last) operands.terms[lines[i + kLinesAhead]].Prefetch(k);
    if (line.arrangement != arrangement) Prepare(line, lines[i], arrangement);
    if (!line.isUsable || !StoreTerm(line, k)) return i;
    if (line.weighted != nullptr &&
        !StoreScaled(*kernel, *line.weighted, k, order, DigitsOf(*line.s, k),
                     Dropped(line.spareOfWeighted, k)))
      return i;
  }
  return last;
}

template <int N>
bool SettledLines<WideArithmetic<N>>::StoreTerm(Prepared& line, int k)
{
  switch (line.kind) {
    case LineKind::kState:
      // (2) x' = f: term k of x is scale / k times term k-1 of f.
      return StoreScaled(*kernel, *line.s, k, scaled.Of(k), DigitsOf(*line.a, k - 1),
                         Dropped(line.spareDigits, k));
    case LineKind::kCombination:
      return StoreCombination(line, k);
    case LineKind::kProduct:
    case LineKind::kSquare:
      return StoreProduct(line, k);
    case LineKind::kQuotient:
      kernel->sumProducts(*line.b, *line.s, 1, k, k, ColumnsOf(line, k), sum.data());
      return StoreQuotient(line, k);
    case LineKind::kSquareRoot:
      kernel->sumSquare(*line.s, 1, k, ColumnsOf(line, k), sum.data());
      return StoreQuotient(line, k);
    case LineKind::kIntegralOfProduct:
      // (9) s' = +-b a': k s[k] = +-(sum over j = 1..k of j a[j] b[k-j])
      kernel->sumProducts(*line.a, *line.b, 1, k, k, ColumnsOf(line, k), sum.data());
      return StoreIntegral(line, k);
    case LineKind::kPower:
      return StorePower(line, k);
    default:
      return false;
  }
}

/// (3) s[k] = sum of factor * a[k]
template <int N>
bool SettledLines<WideArithmetic<N>>::StoreCombination(const Prepared& line, int k)
{
  std::array<RowProduct, kMostRowProducts> products;
  int count = 0;
  for (const auto& [a, factor, column] : line.operands) {
    const int leading = a->leading[k];
    products[count++] = {factor.digits.data(), factor.Count(), a->Row(k) + leading,
                         column + leading};
  }
  return kernel->storeRows(products.data(), count, ColumnsOf(line, k), *line.s, k, line.place);
}

/// (4), (5) s[k] = sum over j = 0..k of a[j] b[k-j]
template <int N>
bool SettledLines<WideArithmetic<N>>::StoreProduct(Prepared& line, int k)
{
  if (!RowsAhead::CanSum(*line.a, *line.b, k, line.columns))
    return kernel->storeProducts(*line.a, *line.b, k, ColumnsOf(line, k), *line.s, line.place);
  if (!line.ahead.Has(k)) BeginAhead(line, k);
  return line.ahead.Store(*kernel, *line.a, *line.b, k, *line.s, line.place);
}

template <int N>
void SettledLines<WideArithmetic<N>>::BeginAhead(Prepared& line, int k) const
{
  RowsAhead::Columns columns;
  for (int row = 0; row < RowsAhead::kRows; ++row)
    columns[row] = ColumnsOf(line, k - k % RowsAhead::kRows + row);
  line.ahead.Begin(*line.a, *line.b, k, columns);
}

/// (6), (7) s[k] = (a[k] - sum) / divisor
template <int N>
bool SettledLines<WideArithmetic<N>>::StoreQuotient(const Prepared& line, int k)
{
  WideDigits row;
  return MakeRow(row, line, line.a, k) &&
         StoreScaled(*kernel, *line.s, k, line.divisor, row, Dropped(line.spareDigits, k));
}

/// s[k] = +-sum / k
template <int N>
bool SettledLines<WideArithmetic<N>>::StoreIntegral(const Prepared& line, int k)
{
  WideDigits row;
  return MakeRow(row, line, nullptr, k) &&
         StoreScaled(*kernel, *line.s, k, reciprocals.Of(k), row, Dropped(line.spareDigits, k));
}

/// (8) s = a^e: s[k] = ((e + 1)/k (sum over j = 1..k of j a[j] s[k-j])
///                     - (sum over j = 1..k of a[j] s[k-j])) / a[0]
template <int N>
bool SettledLines<WideArithmetic<N>>::StorePower(Prepared& line, int k)
{
  const int columns = ColumnsOf(line, k);
  kernel->sumProducts(*line.weightedA, *line.s, 1, k, k, columns, sum.data());
  const WideDigits weighted = RowOfSum(sumRow, columns, line.exponent);
  kernel->sumProducts(*line.a, *line.s, 1, k, k, columns, sum.data());
  const WideDigits plain = RowOfSum(otherRow, columns, line.a->exponent + line.s->exponent);
  const WideRow& factor = line.exponents->Of(k);
  constexpr double kMinusOne = -1;
  const long exponent = std::max(weighted.exponent + factor.exponent, plain.exponent + 1);
  const long places[] = {exponent - weighted.exponent - factor.exponent,
                         exponent - plain.exponent - 1};
  if (std::max(places[0], places[1]) > line.s->n) return false;
  const std::array products{
      RowProduct{factor.digits.data(), factor.Count(), weighted.digits + weighted.leading,
                 static_cast<int>(places[0]) + weighted.leading},
      RowProduct{&kMinusOne, 1, plain.digits + plain.leading,
                 static_cast<int>(places[1]) + plain.leading}};
  const int last = columns + 2;
  kernel->sumRows(products.data(), 2, last, sum.data());
  return StoreScaled(*kernel, *line.s, k, line.divisor, RowOfSum(sumRow, last, exponent),
                     Dropped(line.spareDigits, k));
}

template <int N>
WideDigits SettledLines<WideArithmetic<N>>::RowOfSum(RoomForRow& room, int last,
                                                     long exponent) const
{
  std::array<std::int64_t, kMostSumDigits> digits{};
  std::copy_n(sum.begin(), last + 1, digits.begin() + 1);  // the first takes the carry
  wide::CarryUp(digits.data(), last + 1);
  double* const place0 = room.data() + WideTerms::kZeros;
  std::copy(digits.begin(), digits.end(), place0);
  int leading = 0;
  while (leading <= last && digits[leading] == 0) ++leading;
  return {place0, last + 2, leading, exponent + 1};
}

/// The sum with its sign as a row, with term k of a series added to it where there is one; false if
/// that is far larger.
template <int N>
bool SettledLines<WideArithmetic<N>>::MakeRow(WideDigits& row, const Prepared& line,
                                              const WideTerms* a, int k)
{
  const bool isAdded = a != nullptr && a->started && a->leading[k] < a->n;
  const long place = isAdded ? line.exponent - a->exponent : 0;  // of digit 0 of the term
  const long front = 1 + std::max(0L, -place);                   // the first takes the carry
  if (front > kMostDigitsBefore) return false;
  std::array<std::int64_t, kMostSumDigits> digits{};
  const int columns = ColumnsOf(line, k), count = static_cast<int>(front) + columns + 1;
  for (int i = 0; i <= columns; ++i) digits[front + i] = line.isNegative ? -sum[i] : sum[i];
  if (isAdded) {
    const double* const term = a->Row(k);
    for (long i = a->leading[k]; i < a->n && front + place + i < count; ++i)
      digits[front + place + i] += static_cast<std::int64_t>(term[i]);
  }
  wide::CarryUp(digits.data(), count - 1);
  double* const place0 = sumRow.data() + WideTerms::kZeros;
  std::copy(digits.begin(), digits.end(), place0);
  int leading = 0;
  while (leading < count && digits[leading] == 0) ++leading;
  row = {place0, count, leading, line.exponent + front};
  return true;
}

// ---------------------------------------------------------------------------------------------
// What is constant while the exponents stay

template <int N>
void SettledLines<WideArithmetic<N>>::Prepare(Prepared& line, LineId id, std::int64_t arrangement)
{
  const Line& operation = operands.tape.lines[id];
  const auto row = [this](LineId line) { return line == kNone ? nullptr : &operands.terms[line]; };
  line.s = row(id);
  line.weighted = Weighted(id);
  line.isUsable = false;
  line.ahead.Forget();
  // It may be settled after the next term.
  if (!line.s->IsSettled()) return;
  line.arrangement = arrangement;
  line.kind = operation.kind;
  line.a = row(operation.a);
  line.b = row(operation.b);
  line.isNegative = operation.negative;
  line.missing = 0;
  line.spareDigits = SpareDigits(*line.s, coarsestUnits[id]);
  if (line.weighted != nullptr)
    line.spareOfWeighted = SpareDigits(*line.weighted, coarsestUnits[id]);
  switch (operation.kind) {
    case LineKind::kState:
      line.a = row(operands.tape.rightHandSides[operation.index]);
      scaled.Use(line.s->n, scaleExponent, isBackwards);
      line.isUsable = line.a->started;
      break;
    case LineKind::kCombination:
      line.isUsable = PrepareCombination(line, id);
      break;
    case LineKind::kProduct:
      line.isUsable = PrepareProducts(line, *line.a, *line.b);
      break;
    case LineKind::kSquare:
      line.b = line.a;
      line.isUsable = PrepareProducts(line, *line.a, *line.a);
      break;
    case LineKind::kQuotient:
      line.isUsable = PrepareQuotient(line, id, *line.b);
      break;
    case LineKind::kSquareRoot:
      line.isUsable = PrepareQuotient(line, id, *line.s);
      break;
    case LineKind::kPower:
      line.isUsable = PreparePower(line, id);
      break;
    case LineKind::kIntegralOfProduct:
      line.a = Weighted(operation.a);
      reciprocals.Use(line.s->n, 0, false);
      line.isUsable = PrepareSum(line, *line.a, *line.b);
      break;
    default:
      break;
  }
}

/// Sums of products of two series, with a digit behind those of a term.
template <int N>
bool SettledLines<WideArithmetic<N>>::PrepareSum(Prepared& line, const WideTerms& a,
                                                 const WideTerms& b)
{
  line.exponent = a.exponent + b.exponent;
  line.columns = a.n + 1;
  return a.started && b.started;
}

/// The same for those that are the terms of the line.
template <int N>
bool SettledLines<WideArithmetic<N>>::PrepareProducts(Prepared& line, const WideTerms& a,
                                                      const WideTerms& b)
{
  if (!PrepareSum(line, a, b)) return false;
  const long place = line.s->exponent - line.exponent;
  if (place > line.s->n || -place > line.s->n) return false;
  line.place = static_cast<int>(place);
  line.missing = -1 - std::min(0, line.place);
  // What stands behind the digits of the line rounds them at most.
  line.columns -= std::max(0, line.place);
  return line.columns > 0;
}

/// s b, where terms of b and s are multiplied.
template <int N>
bool SettledLines<WideArithmetic<N>>::PrepareQuotient(Prepared& line, LineId id,
                                                      const WideTerms& b) const
{
  line.isNegative = true;
  line.divisor = RowOf(operands.divisors[id], line.s->n);
  return PrepareSum(line, b, *line.s);
}

/// Both sums of products of a power.
template <int N>
bool SettledLines<WideArithmetic<N>>::PreparePower(Prepared& line, LineId id)
{
  const Line& operation = operands.tape.lines[id];
  const int n = line.s->n;
  line.weightedA = Weighted(operation.a);
  line.divisor = RowOf(operands.divisors[id], n);
  // Constants stay.
  if (!line.exponents) {
    WideRow factor =
        operation.constant == kNone ? RowOf(1) : RowOf(operands.exponents[operation.constant], n);
    line.exponents.emplace(std::move(factor), n);
  }
  return line.a->started && PrepareSum(line, *line.weightedA, *line.s);
}

template <int N>
bool SettledLines<WideArithmetic<N>>::PrepareCombination(Prepared& line, LineId id) const
{
  const Line& operation = operands.tape.lines[id];
  const WideTerms& s = *line.s;
  line.operands.clear();
  long before = 0;
  for (std::uint32_t i = 0; i < operation.factorCount; ++i) {
    const Factor& factor = operands.tape.factors[operation.firstFactor + i];
    const WideTerms& a = operands.terms[factor.line];
    // One that has not started is 0.
    if (!a.started) continue;
    WideRow row =
        factor.whole != 0 ? RowOf(factor.whole) : RowOf(operands.constants[factor.constant], s.n);
    const long place = s.exponent - a.exponent - row.exponent;
    before = std::max(before, -place);
    if (place > s.n) continue;
    line.operands.push_back({&a, std::move(row), static_cast<int>(place)});
  }
  if (before > kMostDigitsBefore || line.operands.size() > kMostRowProducts) return false;
  for (Operand& operand : line.operands) operand.column += static_cast<int>(before);
  line.place = -static_cast<int>(before);
  line.columns = s.n + 1 + static_cast<int>(before);
  return !line.operands.empty();
}

template class SettledLines<WideArithmetic<8>>;
template class SettledLines<WideArithmetic<24>>;
template class SettledLines<WideArithmetic<42>>;

}  // namespace varno::solve
