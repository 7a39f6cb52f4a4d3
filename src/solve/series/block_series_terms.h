#pragma once

// The members of BlockSeries, for block_series.h only.

namespace varno::solve {

template <class Arithmetic>
void BlockSeries<Arithmetic>::Reserve(int count)
{
  if (count <= reserved) return;
  reserved = count;
  for (Terms& row : terms) arithmetic.Reserve(row, count);
  for (Terms& row : weightedTerms) arithmetic.Reserve(row, count);
  settled.Rearrange();
  for (std::vector<double>& row : logs) row.resize(std::max<std::size_t>(row.size(), count));
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::ConvertConstants()
{
  for (ConstantId id = 0; id < tape.constants.size(); ++id) {
    constants.push_back(arithmetic.ToFactor(arithmetic.FromNumber(precise.Constant(id))));
    exponentsPlusOne.push_back(
        arithmetic.ToFactor(arithmetic.FromNumber(precise.ExponentPlusOne(id))));
  }
}

// ---------------------------------------------------------------------------------------------
// Term 0

template <class Arithmetic>
void BlockSeries<Arithmetic>::StartLines()
{
  isStarted = true;
  settled.Begin(scaleExponent, isBackwards);
  if constexpr (Arithmetic::kDropsDigits) {
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const double most = kMostLostBits - kSparedBits - Arithmetic::kErrorBits;
      coarsest[id] = largest[id] == kUnknown
                         ? -kInfinity
                         : static_cast<double>(largest[id] - 1) + most - static_cast<double>(bits);
    }
    settled.DropBits(rise, coarsest);
  }
  Reserve(1);
  for (LineId id = 0; id < tape.lines.size(); ++id) StartLine(id);
}

/// log2 |x| as of other terms.
inline double Log2OfFirst(mpfr_srcptr x)
{
  if (mpfr_regular_p(x) == 0) return Log2Size(x);
  const auto* const limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  const std::uint64_t first = limbs[(mpfr_get_prec(x) - 1) / GMP_NUMB_BITS];
  constexpr int kDoubleBits = 53;
  return FastLog2(static_cast<double>(static_cast<std::int64_t>(first >> (64 - kDoubleBits))),
                  mpfr_get_exp(x) - kDoubleBits);
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::StartLine(LineId id)
{
  const Line& line = tape.lines[id];
  const Value first = arithmetic.FromNumber(precise.Number(id, 0));
  const long least = largest[id] == kUnknown ? kUnknown : arithmetic.ExponentFor(largest[id]);
  arithmetic.Reset(terms[id], least);
  if constexpr (kIsNarrow) {
    arithmetic.Start(terms[id], first);
  } else {
    arithmetic.Store(terms[id], 0, first);
  }
  logs[id][0] = sizes[id] = Log2OfFirst(precise.Number(id, 0));
  if (weightedRows[id] != kNone) {
    arithmetic.Reset(Weighted(id), least);
    arithmetic.Store(Weighted(id), 0, Value());
  }
  if constexpr (kIsRelaxed) {
    for (auto& product : convolutions[id]) product.Reset();
  }
  if (!leftOut[id]) StartDivisor(line, id);
  if (std::abs(first.exponent) > Arithmetic::kMostExponent) Refine();
}

/// The reciprocal of term 0 of a divisor, of twice the root, of a base.
template <class Arithmetic>
void BlockSeries<Arithmetic>::StartDivisor(const Line& line, LineId id)
{
  LineId divisor = kNone;
  switch (line.kind) {
    case LineKind::kQuotient:
    case LineKind::kIntegralOfQuotient:
      divisor = line.b;
      break;
    case LineKind::kSquareRoot:
      divisor = id;
      break;
    case LineKind::kPower:
      divisor = line.a;
      break;
    case LineKind::kAngle:
      divisor = line.c;
      break;
    default:
      return;
  }
  // More bits than the number has: its conversion rounds at once to what a factor holds.
  Real& reciprocal = latest.sum;
  mpfr_ui_div(reciprocal, 1, precise.Number(divisor, 0), MPFR_RNDN);
  if (line.kind == LineKind::kSquareRoot) mpfr_div_2ui(reciprocal, reciprocal, 1, MPFR_RNDN);
  divisors[id] = arithmetic.ToFactor(arithmetic.FromNumber(reciprocal));
}

// ---------------------------------------------------------------------------------------------
// Term k > 0

template <class Arithmetic>
void BlockSeries<Arithmetic>::ComputeTerms(int k)
{
  const auto count = static_cast<LineId>(tape.lines.size());
  for (LineId id = 0;; ++id) {
    const LineId next = settled.StoreTerms(id, k);
    CountProducts(static_cast<int>(next - id + 1) * (k + 1));
    if (next == count) return;
    id = next;
    ComputeTerm(id, k);
    if (weightedRows[id] != kNone) StoreWeighted(id, k);
  }
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::ComputeTerm(LineId id, int k)
{
  StoreAndNote(terms[id], k, leftOut[id] ? Value() : TermOf(tape.lines[id], id, k));
}

/// Stores a term; what is prepared for lines that are settled depends on exponents.
template <class Arithmetic>
void BlockSeries<Arithmetic>::StoreAndNote(Terms& row, int k, const Value& value)
{
  const bool hadExponent = row.started;
  const long exponent = row.exponent;
  arithmetic.Store(row, k, value);
  if (!hadExponent || row.exponent != exponent) settled.Rearrange();
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::StoreWeighted(LineId id, int k)
{
  Value weighted = arithmetic.Load(terms[id], k);
  arithmetic.MultiplyBy(weighted, k);
  StoreAndNote(Weighted(id), k, weighted);
}

/// The logs of the terms from the first on, and the largest of all.
template <class Arithmetic>
void BlockSeries<Arithmetic>::FindLogs(LineId id, int first)
{
  const auto begin = static_cast<std::size_t>(first), end = static_cast<std::size_t>(order) + 1;
  const std::span found = std::span(logs[id]).subspan(begin, end - begin);
  if constexpr (requires { arithmetic.FindLogs(terms[id], first, found); }) {
    sizes[id] = std::max(sizes[id], arithmetic.FindLogs(terms[id], first, found));
  } else {
    for (double& log : found) {
      log = arithmetic.Log2(terms[id], first++);
      sizes[id] = std::max(sizes[id], log);
    }
  }
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::CountProducts(int count)
{
  products += count;
  if (products < kBlockProductsPerPoll) return;
  products = 0;
  if (poll) poll();
}

template <class Arithmetic>
auto BlockSeries<Arithmetic>::TermOf(const Line& line, LineId id, int k) -> Value
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
      return Convolve(id, 0, terms[line.a], terms[line.b], 0, k, k);
    case LineKind::kSquare:
      return ConvolveSelf(id, terms[line.a], 0, k);
    case LineKind::kQuotient: {
      // (6) s b = a: s[k] = (a[k] - sum over j = 1..k of b[j] s[k-j]) / b[0]
      Value s = Difference(arithmetic.Load(terms[line.a], k),
                           Convolve(id, 0, terms[line.b], terms[id], 1, k, k));
      arithmetic.Multiply(s, divisors[id]);
      return s;
    }
    case LineKind::kSquareRoot: {
      // (7) s^2 = a: s[k] = (a[k] - sum over j = 1..k-1 of s[j] s[k-j]) / (2 s[0])
      Value s = Difference(arithmetic.Load(terms[line.a], k), ConvolveSelf(id, terms[id], 1, k));
      arithmetic.Multiply(s, divisors[id]);
      return s;
    }
    case LineKind::kPower:
      return Power(line, id, k);
    case LineKind::kIntegralOfProduct: {
      // (9) s' = +-b a': k s[k] = +-(sum over j = 1..k of j a[j] b[k-j])
      Value s = Convolve(id, 0, Weighted(line.a), terms[line.b], 1, k, k);
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
auto BlockSeries<Arithmetic>::StateTerm(const Line& line, int k) -> Value
{
  Value x = arithmetic.Load(terms[tape.rightHandSides[line.index]], k - 1);
  arithmetic.Shift(x, scaleExponent);
  if (isBackwards) arithmetic.Negate(x);
  arithmetic.DivideBy(x, k);
  return x;
}

/// (3) s[k] = sum of factor * a[k]
template <class Arithmetic>
auto BlockSeries<Arithmetic>::Combination(const Line& line, int k) -> Value
{
  if (line.factorCount == 0) return {};
  const auto* factor = &tape.factors[line.firstFactor];
  Value sum = Scaled(*factor, k);
  for (std::uint32_t i = 1; i < line.factorCount; ++i) arithmetic.Add(sum, Scaled(*++factor, k));
  return sum;
}

/// factor * a[k]
template <class Arithmetic>
inline auto BlockSeries<Arithmetic>::Scaled(const varno::solve::Factor& factor, int k) -> Value
{
  Value a = arithmetic.Load(terms[factor.line], k);
  if (factor.whole == 1 || a.IsExactZero()) return a;
  if (factor.whole == -1) {
    arithmetic.Negate(a);
  } else if (factor.whole != 0) {
    arithmetic.MultiplyByWhole(a, factor.whole);
  } else {
    arithmetic.Multiply(a, constants[factor.constant]);
  }
  return a;
}

/// (8) a s' = e s a': k a[0] s[k] = sum over j = 1..k of ((e + 1) j - k) a[j] s[k-j]
template <class Arithmetic>
auto BlockSeries<Arithmetic>::Power(const Line& line, LineId id, int k) -> Value
{
  Value s = Convolve(id, 0, Weighted(line.a), terms[id], 1, k, k);
  if (line.constant != kNone) arithmetic.Multiply(s, exponentsPlusOne[line.constant]);
  arithmetic.DivideBy(s, k);
  s = Difference(s, Convolve(id, 1, terms[line.a], terms[id], 1, k, k));
  arithmetic.Multiply(s, divisors[id]);
  return s;
}

/// (10) b s' = +-a': k b[0] s[k] = +-k a[k] - sum over j = 1..k-1 of j s[j] b[k-j]
template <class Arithmetic>
auto BlockSeries<Arithmetic>::IntegralOfQuotient(const Line& line, LineId id, int k) -> Value
{
  Value s = arithmetic.Load(terms[line.a], k);
  arithmetic.MultiplyBy(s, k);
  if (line.negative) arithmetic.Negate(s);
  s = Difference(s, Convolve(id, 0, Weighted(id), terms[line.b], 1, k - 1, k));
  arithmetic.Multiply(s, divisors[id]);
  arithmetic.DivideBy(s, k);
  return s;
}

/// (11) c s' = b a' - a b' with c = a^2 + b^2: k c[0] s[k] =
/// sum over j = 1..k of (j a[j] b[k-j] - j b[j] a[k-j]) - sum over j = 1..k-1 of j s[j] c[k-j]
template <class Arithmetic>
auto BlockSeries<Arithmetic>::Angle(const Line& line, LineId id, int k) -> Value
{
  Value s = Difference(Convolve(id, 0, Weighted(line.a), terms[line.b], 1, k, k),
                       Convolve(id, 1, Weighted(line.b), terms[line.a], 1, k, k));
  s = Difference(s, Convolve(id, 2, Weighted(id), terms[line.c], 1, k - 1, k));
  arithmetic.Multiply(s, divisors[id]);
  arithmetic.DivideBy(s, k);
  return s;
}

// ---------------------------------------------------------------------------------------------
// What others ask

template <class Arithmetic>
void BlockSeries<Arithmetic>::Sum(LineId line, mpfr_srcptr offset, mpfr_ptr result) const
{
  if (isRefined) {
    precise.Sum(line, offset, result);
  } else if (kIsRelaxed || !terms[line].inexact) {
    AddFirstTerm(line, SumByHorner(line, offset), result);
  } else {
    AddFirstTerm(line, SumBehindFirst(line, offset), result);
  }
}

/// The sum of a line that has lost bits, but for its first term.
template <class Arithmetic>
auto BlockSeries<Arithmetic>::SumBehindFirst(LineId line, mpfr_srcptr offset) const -> Value
{
  if constexpr (kIsNarrow) {
    if (latest.ofFraction.Set(offset, order)) return latest.ofFraction.Sum(terms[line], order);
  }
  PreparePowers(offset);
  return arithmetic.Convolve(terms[line], latest.powers, 1, order, order);
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::SumWithDerivative(LineId line, mpfr_srcptr offset, mpfr_ptr value,
                                                mpfr_ptr derivative) const
{
  if (isRefined) {
    Series::SumWithDerivative(line, offset, value, derivative);
    return;
  }
  if constexpr (kIsNarrow) {
    if (order <= NarrowPowers::kMostTermsOfSlopes && latest.ofFraction.Set(offset, order)) {
      const auto [sum, slope] = latest.ofFraction.SumAndSlope(terms[line], order);
      AddFirstTerm(line, sum, value);
      arithmetic.ToNumber(slope, derivative);
      return;
    }
  }
  Sum(line, offset, value);
  if (kIsRelaxed) {
    arithmetic.ToNumber(SlopeByHorner(line, offset), derivative);
    return;
  }
  PreparePowers(offset);
  PrepareSlopes();
  arithmetic.ToNumber(arithmetic.Convolve(terms[line], latest.slopes, 1, order, order), derivative);
}

/// Horner's scheme on the terms behind the first. Where these are exact the sum may be, too: those
/// few that are not 0 with an offset of few bits. Of powers the highest, not needed, are not. Where
/// numbers are long, an offset of few bits makes short products.
template <class Arithmetic>
auto BlockSeries<Arithmetic>::SumByHorner(LineId line, mpfr_srcptr offset) const -> Value
{
  const Factor r = arithmetic.ToFactor(arithmetic.FromNumber(offset));
  Value sum;
  for (int k = LastTerm(line); k > 0; --k) {
    arithmetic.Add(sum, arithmetic.Load(terms[line], k));
    arithmetic.Multiply(sum, r);
  }
  return sum;
}

/// The same for the derivative.
template <class Arithmetic>
auto BlockSeries<Arithmetic>::SlopeByHorner(LineId line, mpfr_srcptr offset) const -> Value
{
  const Factor r = arithmetic.ToFactor(arithmetic.FromNumber(offset));
  Value sum;
  for (int k = LastTerm(line); k > 0; --k) {
    arithmetic.Multiply(sum, r);
    Value slope = arithmetic.Load(terms[line], k);
    arithmetic.MultiplyBy(slope, k);
    arithmetic.Add(sum, slope);
  }
  return sum;
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::PreparePowers(mpfr_srcptr offset) const
{
  if (latest.order == order && mpfr_equal_p(latest.offset, offset) != 0) return;
  latest.offset.SetBits(mpfr_get_prec(offset));
  mpfr_set(latest.offset, offset, MPFR_RNDN);
  latest.order = order;
  latest.hasSlopes = false;
  const double size = Log2Size(offset);
  const double largestPower =
      mpfr_zero_p(offset) != 0 ? 0 : std::ceil(std::max(size, size * order));
  arithmetic.Reserve(latest.powers, order + 1);
  arithmetic.Reset(latest.powers, arithmetic.ExponentFor(static_cast<long>(largestPower)));
  const Value first = arithmetic.FromNumber(offset);
  const Factor r = arithmetic.ToFactor(first);
  arithmetic.Store(latest.powers, order - 1, first);
  // That they may be exact changes nothing for sums with lines that are not.
  latest.powers.inexact = true;
  const int stored = StoreSettledPowers(latest.powers, order - 1, r);
  for (int k = order - 2 - stored; k >= 0; --k) {
    // From the line, where the exponent is that of the largest: a product has one of its own, which
    // grows with each factor above 1, and leaves less behind the point.
    Value power = arithmetic.Load(latest.powers, k + 1);
    arithmetic.Multiply(power, r);
    arithmetic.Store(latest.powers, k, power);
  }
}

/// The derivatives of the powers that are there.
template <class Arithmetic>
void BlockSeries<Arithmetic>::PrepareSlopes() const
{
  if (latest.hasSlopes) return;
  latest.hasSlopes = true;
  const double largestPower = std::max(0.0, Log2Size(latest.offset) * (order - 1));
  const double largestSlope = std::ceil(largestPower + std::log2(order));
  arithmetic.Reserve(latest.slopes, order + 1);
  arithmetic.Reset(latest.slopes, arithmetic.ExponentFor(static_cast<long>(largestSlope)));
  Real one(2);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  arithmetic.Store(latest.slopes, order - 1, arithmetic.FromNumber(one));
  latest.slopes.inexact = true;
  for (int j = 2; j <= order; ++j) {
    if (StoreSettledMultiple(latest.slopes, order - j, j, latest.powers, order - j + 1)) continue;
    Value slope = arithmetic.Load(latest.powers, order - j + 1);
    arithmetic.MultiplyBy(slope, j);
    arithmetic.Store(latest.slopes, order - j, slope);
  }
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::AddFirstTerm(LineId line, const Value& others, mpfr_ptr result) const
{
  mpfr_ptr sum = latest.sum;
  // With operands of the same precision MPFR takes a third of the time.
  if constexpr (kIsNarrow) sum = latest.roundedSum;
  arithmetic.ToNumber(others, sum);
  mpfr_add(result, precise.Number(line, 0), sum, MPFR_RNDN);
  if (others.lost || others.inexact) mpfr_set_inexflag();
}

/// The last term that is not exactly 0, or 0.
template <class Arithmetic>
int BlockSeries<Arithmetic>::LastTerm(LineId line) const
{
  for (int k = order; k > 0; --k) {
    if (logs[line][k] > -kInfinity) return k;
  }
  return 0;
}

template <class Arithmetic>
bool BlockSeries<Arithmetic>::IsExactFor(double log2)
{
  if (isRefined) return true;
  const bool isExact = std::isfinite(log2) && FindLargest(log2);
  // What was found with a scale too far off says nothing about the next terms.
  if (!isExact) std::ranges::fill(largest, kUnknown);
  return isExact;
}

/// The largest of logs[i] + begin + i slope and of what is known to be met; no log is above `most`.
inline double LargestAt(std::span<const double> logs, double begin, double slope, double most,
                        double known)
{
  for (const double log : logs) {
    if (slope <= 0 && most + begin <= known) break;
    known = std::max(known, log + begin);
    begin += slope;
  }
  return known;
}

/// Finds the largest terms over a step, and whether all lines are exact enough beside these.
template <class Arithmetic>
bool BlockSeries<Arithmetic>::FindLargest(double log2)
{
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (!terms[id].started) {
      largest[id] = kUnknown;
      continue;
    }
    if (std::abs(terms[id].exponent) > Arithmetic::kMostExponent) return false;
    const std::span sizesOfTerms = std::span(logs[id]).first(static_cast<std::size_t>(order) + 1);
    const auto half = static_cast<std::size_t>(order / 2) + 1;
    const double early = LargestAt(sizesOfTerms.first(half), 0, log2, sizes[id], -kInfinity);
    const double size = LargestAt(sizesOfTerms.subspan(half), static_cast<double>(half) * log2,
                                  log2, sizes[id], early);
    // Terms that rise are no measure for errors.
    if (size > early + kMostRiseBits) return false;
    largest[id] = static_cast<long>(std::floor(size)) + 1;
    const double error = OwnResolution(id) + std::max(0.0, LastTerm(id) * (log2 + rise));
    if (error - size > kMostLostBits - static_cast<double>(bits)) return false;
    // A line of which little is left: MPFR rounds each of its terms less than this one all.
    if (Resolution(id) - size > mostCancelledBits - static_cast<double>(bits)) return false;
  }
  return true;
}

/// What errors of the operands make of the terms of a line, beside its own rounding.
template <class Arithmetic>
double BlockSeries<Arithmetic>::ResolutionOf(const Line& line, LineId id) const
{
  const auto product = [this](LineId a, LineId b) {
    return std::max(resolutions[a] + sizes[b], sizes[a] + resolutions[b]);
  };
  switch (line.kind) {
    case LineKind::kConstant:
    case LineKind::kTime:
      return -kInfinity;
    case LineKind::kState:
      return resolutions[tape.rightHandSides[line.index]] + static_cast<double>(scaleExponent);
    case LineKind::kCombination: {
      double sum = -kInfinity;
      for (std::uint32_t i = 0; i < line.factorCount; ++i) {
        const std::uint32_t factor = line.firstFactor + i;
        sum = std::max(sum, precise.FactorLogs()[factor] + resolutions[tape.factors[factor].line]);
      }
      return sum;
    }
    case LineKind::kProduct:
    case LineKind::kIntegralOfProduct:
      return product(line.a, line.b);
    case LineKind::kSquare:
      return product(line.a, line.a) + 1;
    case LineKind::kQuotient:
    case LineKind::kIntegralOfQuotient:
      return std::max(resolutions[line.a], product(id, line.b)) - Log2(line.b, 0);
    case LineKind::kSquareRoot:
      return resolutions[line.a] - 1 - Log2(id, 0);
    case LineKind::kPower:
      return product(id, line.a) - Log2(line.a, 0) +
             std::max(0.0, precise.Log2Constant(line.constant));
    case LineKind::kAngle:
      return std::max({product(line.a, line.b), product(id, line.c)}) - Log2(line.c, 0);
  }
  return -kInfinity;
}

/// What rounding leaves open of a line itself.
template <class Arithmetic>
double BlockSeries<Arithmetic>::OwnResolution(LineId id) const
{
  if (!terms[id].started) return -kInfinity;
  double unit = arithmetic.UnitLog2(terms[id].exponent);
  if constexpr (Arithmetic::kDropsDigits) {
    const double spare = SpareDigits(terms[id], coarsest[id]);
    if (spare + order * rise / Arithmetic::kDigitBits >= 1) unit += Arithmetic::kDigitBits * spare;
  }
  return unit + Arithmetic::kErrorBits;
}

/// Errors go round: those of a derivative into its state, and from there into the next term.
template <class Arithmetic>
void BlockSeries<Arithmetic>::FindResolutions() const
{
  for (LineId id = 0; id < tape.lines.size(); ++id) resolutions[id] = OwnResolution(id);
  constexpr int kPasses = 2;
  for (int pass = 0; pass < kPasses; ++pass) {
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const double passed = leftOut[id] ? -kInfinity : ResolutionOf(tape.lines[id], id);
      resolutions[id] = std::max(OwnResolution(id), std::isnan(passed) ? -kInfinity : passed);
    }
  }
  resolvedOrder = order;
}

}  // namespace varno::solve
