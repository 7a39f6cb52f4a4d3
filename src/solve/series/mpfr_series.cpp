#include "solve/series/mpfr_series.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/disturbance.h"
#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/elementary.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"
#include "solve/series/line_schedule.h"
#include "solve/series/weighted_lines.h"
#include "solve/tape/below.h"
#include "solve/team/team.h"

namespace varno::solve {

namespace {

constexpr mpfr_rnd_t kNearest = MPFR_RNDN;

}  // namespace

MpfrSeries::MpfrSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder, bool disturbed,
                       Poll poll, const std::vector<CommonRoot>& roots)
    : tape(tape),
      bits(bits),
      leftOut(tape.lines.size(), false),
      terms(tape.lines.size(), usualOrder + 2, bits),
      derivativeRows(tape.lines.size(), kNone),
      derivatives(0, usualOrder + 2, bits),
      scale(2),
      zero(2),
      product(bits),
      sum(bits),
      weighted(bits),
      poll(std::move(poll)),
      logs(tape.lines.size()),
      rootOrders(tape.lines.size(), 0),
      headStarts(tape.lines.size(), 0)
{
  for (const CommonRoot& root : roots) {
    rootOrders[root.line] = root.order;
    if (root.feedsItself) AddFedQuotient(root.line);
  }
  if (!roots.empty() && fedQuotients.empty()) SetHeadStarts();
  if (!fedQuotients.empty()) longestHeadStart = 1;
  terms.Grow(usualOrder + 2 + longestHeadStart);
  AssignDerivatives();
  ComputeConstants(disturbed);
  FindLogsOfConstants();
}

void MpfrSeries::AssignDerivatives()
{
  const std::vector<bool> needed = LinesNeedingWeights(tape);
  std::uint32_t count = 0;
  for (LineId id = 0; id < needed.size(); ++id) {
    if (needed[id]) derivativeRows[id] = count++;
  }
  derivatives = TermStore(count, terms.TermCount(), bits);
}

/// A line must be as many terms ahead as those that are made of it, and by the order of the common
/// root more where it is an operand of one.
void MpfrSeries::SetHeadStarts()
{
  bool changed = true;
  const auto require = [&](LineId id, int headStart) {
    if (id == kNone || headStarts[id] >= headStart) return;
    headStarts[id] = headStart;
    longestHeadStart = std::max(longestHeadStart, headStart);
    changed = true;
  };
  while (changed) {
    changed = false;
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const int needed = headStarts[id] + rootOrders[id];
      if (needed == 0) continue;
      for (const LineId operand : Operands(tape, id)) require(operand, needed);
    }
  }
}

void MpfrSeries::ComputeConstants(bool disturbed)
{
  for (const NodeId constant : tape.constants) {
    if (poll) poll();
    constants.push_back(EvaluateConstant(tape.graph, constant, bits));
    if (disturbed && !IsExact(tape.graph, constant, bits)) {
      Disturb(constants.back(), DisturbanceKey(tape.graph, constant));
    }
  }
  powerExponentsPlusOne.assign(constants.size(), Real(bits));
  for (const Line& line : tape.lines) {
    if (line.kind != LineKind::kPower || line.constant == kNone) continue;
    mpfr_add_ui(powerExponentsPlusOne[line.constant], constants[line.constant], 1, kNearest);
  }
}

/// Once, since each step asks for them.
void MpfrSeries::FindLogsOfConstants()
{
  for (const Real& constant : constants) constantLogs.push_back(Log2Size(constant));
  for (const Factor& factor : tape.factors) {
    factorLogs.push_back(factor.whole != 0 ? std::log2(std::abs(static_cast<double>(factor.whole)))
                                           : constantLogs[factor.constant]);
  }
}

mpfr_srcptr MpfrSeries::Constant(ConstantId constant) const
{
  return constant == kNone ? zero : constants[constant];
}

void MpfrSeries::CountProduct() const
{
  if (++products < kProductsPerPoll) return;
  products = 0;
  if (poll) poll();
}

// ---------------------------------------------------------------------------------------------
// Term 0

void MpfrSeries::Begin(mpfr_srcptr time, std::span<const Real> states, bool backwards,
                       long scaleExponent)
{
  Forget(backwards, scaleExponent);
  try {
    StartLines(time, states);
  } catch (const DomainError& error) {
    // Some functions take several lines, such as the root of 1 - u^2 in asin(u): then the error of
    // a line tells of an operand that nobody has written.
    if (error.outcome == Outcome::kUndefined && longestHeadStart == 0)
      Evaluator(tape.graph, {error.node}, bits).Evaluate(time, states);
    throw;
  }
}

void MpfrSeries::BeginTogether(mpfr_srcptr time, std::span<const Real> states, bool backwards,
                               long scaleExponent, Team& team, const LineSchedule& schedule)
{
  Forget(backwards, scaleExponent);
  std::vector<Real> scratch(static_cast<std::size_t>(schedule.MemberCount()), Real(bits));
  const auto start = [&](int member, std::size_t phase) {
    for (const LineId id : schedule.Lines(member, phase))
      StartLine(id, time, states, scratch[static_cast<std::size_t>(member)]);
  };
  try {
    team.Run(schedule.PhaseCount(), start);
  } catch (const DomainError&) {
    // Of several errors that of the first line counts.
    Begin(time, states, backwards, scaleExponent);
  }
}

void MpfrSeries::Forget(bool backwards, long scaleExponent)
{
  mpfr_set_si_2exp(scale, backwards ? -1 : 1, scaleExponent, kNearest);
  order = 0;
  for (std::vector<double>& line : logs) line.clear();
}

void MpfrSeries::StartLines(mpfr_srcptr time, std::span<const Real> states)
{
  if (!fedQuotients.empty()) {
    SolveFedQuotients(0, [&] {
      for (LineId id = 0; id < tape.lines.size(); ++id) StartLine(id, time, states, product);
    });
    return;
  }
  for (int k = -longestHeadStart; k <= 0; ++k) {
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const int term = k + headStarts[id];
      if (term > 0) ComputeTerm(id, term);
      if (term == 0) StartLine(id, time, states, product);
    }
  }
}

void MpfrSeries::StartLine(LineId id, mpfr_srcptr time, std::span<const Real> states,
                           mpfr_ptr scratch)
{
  if (leftOut[id]) {
    const auto constant = held.find(id);
    if (constant == held.end()) {
      mpfr_set_zero(Terms(id), 1);
    } else {
      mpfr_set(Terms(id), constant->second, kNearest);
    }
    return;
  }
  mpfr_clear_underflow();
  Start(id, time, states, scratch);
  Check(tape.lines[id], Terms(id));
}

void MpfrSeries::Start(LineId id, mpfr_srcptr time, std::span<const Real> states, mpfr_ptr scratch)
{
  const Line& line = tape.lines[id];
  mpfr_ptr s = Terms(id);
  switch (line.kind) {
    case LineKind::kConstant:
      mpfr_set(s, Constant(line.constant), kNearest);
      return;
    case LineKind::kTime:
      mpfr_set(s, time, kNearest);
      return;
    case LineKind::kState:
      mpfr_set(s, states[line.index], kNearest);
      return;
    case LineKind::kCombination:
      Combination(line, s, 0, scratch);
      if (line.constant != kNone) mpfr_add(s, s, constants[line.constant], kNearest);
      return;
    case LineKind::kProduct:
      mpfr_mul(s, Terms(line.a), Terms(line.b), kNearest);
      return;
    case LineKind::kSquare:
      mpfr_sqr(s, Terms(line.a), kNearest);
      return;
    case LineKind::kQuotient:
      StartQuotient(line, rootOrders[id], s);
      return;
    case LineKind::kSquareRoot:
    case LineKind::kPower:
      StartRoot(line, rootOrders[id], s);
      return;
    case LineKind::kIntegralOfProduct:
    case LineKind::kIntegralOfQuotient:
    case LineKind::kAngle:
      if (!StartPair(id)) StartFunction(line, s);
      return;
  }
}

void MpfrSeries::StartQuotient(const Line& line, int rootOrder, mpfr_ptr s)
{
  if (!fedQuotients.empty() && rootOrder > 0) return;
  mpfr_srcptr b = Terms(line.b) + rootOrder;
  if (mpfr_zero_p(b) != 0) throw DomainError{Outcome::kUndefined, line.node, Real(bits)};
  mpfr_div(s, Terms(line.a) + rootOrder, b, kNearest);
}

/// Roots and powers have no Taylor series about 0, but for the square root of an even power.
void MpfrSeries::StartRoot(const Line& line, int rootOrder, mpfr_ptr s)
{
  if (rootOrder > 0) {
    mpfr_set_zero(s, 1);
    return;
  }
  mpfr_srcptr a = Terms(line.a);
  const Operation function = line.kind == LineKind::kSquareRoot ? Operation::kSqrt : line.function;
  RequireValue(
      mpfr_zero_p(a) != 0 ? Outcome::kNoSeries : Apply(function, s, a, Constant(line.constant)),
      line);
}

void MpfrSeries::StartFunction(const Line& line, mpfr_ptr s)
{
  mpfr_srcptr a = Terms(line.a);
  const bool isAngle = line.kind == LineKind::kAngle;
  RequireValue(
      Apply(isAngle ? Operation::kAtan2 : line.function, s, a, isAngle ? Terms(line.b) : a), line);
}

/// Starts a sine together with the cosine that is its derivative, hyperbolic ones, too, whichever
/// comes first on the tape. False where the line stands alone.
bool MpfrSeries::StartPair(LineId id)
{
  const Line& line = tape.lines[id];
  if (line.kind != LineKind::kIntegralOfProduct) return false;
  const bool isSine = line.function == Operation::kSin || line.function == Operation::kSinh;
  const bool isCosine = line.function == Operation::kCos || line.function == Operation::kCosh;
  if (!isSine && !isCosine) return false;
  // At roots one of them may be ahead of the other.
  if (leftOut[line.b] || longestHeadStart > 0) return false;
  if (line.b < id) return true;  // with that one
  const LineId sine = isSine ? id : line.b, cosine = isSine ? line.b : id;
  RequireValue(ApplyPair(tape.lines[sine].function, Terms(sine), Terms(cosine), Terms(line.a)),
               line);
  return true;
}

void MpfrSeries::RequireValue(Outcome outcome, const Line& line) const
{
  if (outcome == Outcome::kValue) return;
  Real argument(bits);
  mpfr_set(argument, Terms(line.a), kNearest);
  throw DomainError{outcome, line.node, argument};
}

/// A number too small for the arithmetic would be 0, and with it all terms: a bell that rises later
/// would never be seen.
void MpfrSeries::Check(const Line& line, mpfr_srcptr s) const
{
  if (mpfr_number_p(s) == 0) throw DomainError{Outcome::kOutOfRange, line.node, Real(bits)};
  if (mpfr_underflow_p() != 0) throw DomainError{Outcome::kTooSmall, line.node, Real(bits)};
}

// ---------------------------------------------------------------------------------------------
// Term k > 0

void MpfrSeries::ExtendTo(int wanted)
{
  terms.Grow(wanted + 1 + longestHeadStart);
  derivatives.Grow(wanted + 1 + longestHeadStart);
  for (int k = order + 1; k <= wanted; ++k) {
    if (fedQuotients.empty()) {
      ComputeTerms(k);
    } else {
      SolveFedQuotients(k, [this, k] { ComputeTerms(k); });
    }
    order = k;
  }
}

void MpfrSeries::ComputeTerms(int k)
{
  for (LineId id = 0; id < tape.lines.size(); ++id) ComputeTerm(id, k + headStarts[id]);
}

/// (2) x' = f: term k of x is scale / k times term k-1 of f.
void MpfrSeries::AdvanceState(const Line& line, mpfr_ptr x, int k)
{
  mpfr_mul(x + k, Terms(tape.rightHandSides[line.index]) + (k - 1), scale, kNearest);
  mpfr_div_si(x + k, x + k, k, kNearest);
}

void MpfrSeries::ComputeTerm(LineId id, int k)
{
  mpfr_ptr s = Terms(id);
  if (leftOut[id]) {
    mpfr_set_zero(s + k, 1);
  } else if (!IsFed(id)) {
    Recurrence(id, s, k);
  }
  if (derivativeRows[id] != kNone) mpfr_mul_si(DerivativeTerms(id) + k, s + k, k, kNearest);
}

void MpfrSeries::Recurrence(LineId id, mpfr_ptr s, int k)
{
  const Line& line = tape.lines[id];
  switch (line.kind) {
    case LineKind::kConstant:
      mpfr_set_zero(s + k, 1);
      return;
    case LineKind::kTime:
      if (k == 1) {
        mpfr_set(s + k, scale, kNearest);
      } else {
        mpfr_set_zero(s + k, 1);
      }
      return;
    case LineKind::kState:
      AdvanceState(line, s, k);
      return;
    case LineKind::kCombination:
      Combination(line, s + k, k, product);
      return;
    case LineKind::kProduct:
      Convolve(Terms(line.a), Terms(line.b), 0, k, k, s + k);
      return;
    case LineKind::kSquare:
      Square(Terms(line.a), s, k);
      return;
    case LineKind::kQuotient:
      Quotient(line, rootOrders[id], s, k);
      return;
    case LineKind::kSquareRoot:
      SquareRoot(line, rootOrders[id], s, k);
      return;
    case LineKind::kPower:
      Power(line, s, k);
      return;
    case LineKind::kIntegralOfProduct:
      IntegralOfProduct(line, s, k);
      return;
    case LineKind::kIntegralOfQuotient:
      IntegralOfQuotient(line, id, s, k);
      return;
    case LineKind::kAngle:
      Angle(line, id, s, k);
      return;
  }
}

void MpfrSeries::Convolve(mpfr_srcptr a, mpfr_srcptr b, int first, int last, int k, mpfr_ptr result)
{
  mpfr_set_zero(result, 1);
  for (int j = first; j <= last; ++j) {
    if (mpfr_zero_p(a + j) != 0 || mpfr_zero_p(b + (k - j)) != 0) continue;
    mpfr_mul(product, a + j, b + (k - j), kNearest);
    mpfr_add(result, result, product, kNearest);
    CountProduct();
  }
}

/// factor * a, which is not 0
void MpfrSeries::SetScaled(const Factor& factor, mpfr_ptr result, mpfr_srcptr a)
{
  switch (factor.whole) {
    case 1:
      mpfr_set(result, a, kNearest);
      return;
    case -1:
      mpfr_neg(result, a, kNearest);
      return;
    case 0:
      mpfr_mul(result, a, constants[factor.constant], kNearest);
      return;
    default:
      mpfr_mul_si(result, a, factor.whole, kNearest);
      return;
  }
}

void MpfrSeries::AddScaled(const Factor& factor, mpfr_ptr result, int k, mpfr_ptr scratch)
{
  mpfr_srcptr a = Terms(factor.line) + k;
  if (mpfr_zero_p(a) != 0) return;
  if (mpfr_zero_p(result) != 0) {
    SetScaled(factor, result, a);
    return;
  }
  switch (factor.whole) {
    case 1:
      mpfr_add(result, result, a, kNearest);
      return;
    case -1:
      mpfr_sub(result, result, a, kNearest);
      return;
    case 0:
      mpfr_mul(scratch, a, constants[factor.constant], kNearest);
      break;
    default:
      mpfr_mul_si(scratch, a, factor.whole, kNearest);
      break;
  }
  mpfr_add(result, result, scratch, kNearest);
}

/// (3) s[k] = sum of factor * a[k]; the constant belongs to term 0 only.
void MpfrSeries::Combination(const Line& line, mpfr_ptr s, int k, mpfr_ptr scratch)
{
  mpfr_set_zero(s, 1);
  for (std::uint32_t i = 0; i < line.factorCount; ++i)
    AddScaled(tape.factors[line.firstFactor + i], s, k, scratch);
}

/// (5) s[k] = 2 (sum over j < k/2 of a[j] a[k-j]) + a[k/2]^2, the last for even k
void MpfrSeries::Square(mpfr_srcptr a, mpfr_ptr s, int k)
{
  Convolve(a, a, 0, (k - 1) / 2, k, s + k);
  mpfr_mul_2ui(s + k, s + k, 1, kNearest);
  if (k % 2 != 0) return;
  mpfr_sqr(product, a + k / 2, kNearest);
  mpfr_add(s + k, s + k, product, kNearest);
}

/// (6) s b = a: s[k] = (a[k] - sum over j = 1..k of b[j] s[k-j]) / b[0], from term m of a and b on
/// at a common root of order m
void MpfrSeries::Quotient(const Line& line, int rootOrder, mpfr_ptr s, int k)
{
  mpfr_srcptr a = Terms(line.a) + rootOrder, b = Terms(line.b) + rootOrder;
  Convolve(b, s, 1, k, k, sum);
  mpfr_sub(sum, a + k, sum, kNearest);
  mpfr_div(s + k, sum, b, kNearest);
}

/// (7) s^2 = a: s[k] = (a[k] - sum over j = 1..k-1 of s[j] s[k-j]) / (2 s[0]), the sum by halves;
/// where a begins with term 2 m, s begins with term m
void MpfrSeries::SquareRoot(const Line& line, int rootOrder, mpfr_ptr s, int k)
{
  mpfr_srcptr a = Terms(line.a) + std::ptrdiff_t{2} * rootOrder;
  s += rootOrder;
  k -= rootOrder;
  if (k < 0) {
    mpfr_set_zero(s + k, 1);
    return;
  }
  if (k == 0) {
    mpfr_sqrt(s, a, kNearest);
    return;
  }
  Convolve(s, s, 1, (k - 1) / 2, k, sum);
  mpfr_mul_2ui(sum, sum, 1, kNearest);
  if (k % 2 == 0) {
    mpfr_sqr(product, s + k / 2, kNearest);
    mpfr_add(sum, sum, product, kNearest);
  }
  mpfr_sub(sum, a + k, sum, kNearest);
  mpfr_div_2ui(sum, sum, 1, kNearest);
  mpfr_div(s + k, sum, s, kNearest);
}

/// (8) a s' = e s a': k a[0] s[k] = sum over j = 1..k of ((e + 1) j - k) a[j] s[k-j]
void MpfrSeries::Power(const Line& line, mpfr_ptr s, int k)
{
  mpfr_srcptr a = Terms(line.a);
  Convolve(DerivativeTerms(line.a), s, 1, k, k, weighted);
  Convolve(a, s, 1, k, k, sum);
  if (line.constant != kNone)
    mpfr_mul(weighted, weighted, powerExponentsPlusOne[line.constant], kNearest);
  mpfr_div_si(weighted, weighted, k, kNearest);
  mpfr_sub(sum, weighted, sum, kNearest);
  mpfr_div(s + k, sum, a, kNearest);
}

/// (9) s' = +-b a': k s[k] = +-(sum over j = 1..k of j a[j] b[k-j])
void MpfrSeries::IntegralOfProduct(const Line& line, mpfr_ptr s, int k)
{
  Convolve(DerivativeTerms(line.a), Terms(line.b), 1, k, k, sum);
  mpfr_div_si(s + k, sum, line.negative ? -k : k, kNearest);
}

/// (10) b s' = +-a': k b[0] s[k] = +-k a[k] - sum over j = 1..k-1 of j s[j] b[k-j], from term m of
/// b and of a' on at a common root of order m
void MpfrSeries::IntegralOfQuotient(const Line& line, LineId id, mpfr_ptr s, int k)
{
  const int m = rootOrders[id];
  mpfr_srcptr b = Terms(line.b) + m;
  Convolve(DerivativeTerms(id), b, 1, k - 1, k, sum);
  mpfr_mul_si(product, Terms(line.a) + k + m, line.negative ? -(k + m) : k + m, kNearest);
  mpfr_sub(sum, product, sum, kNearest);
  mpfr_div(sum, sum, b, kNearest);
  mpfr_div_si(s + k, sum, k, kNearest);
}

/// (11) c s' = b a' - a b' with c = a^2 + b^2: k c[0] s[k] =
/// sum over j = 1..k of (j a[j] b[k-j] - j b[j] a[k-j]) - sum over j = 1..k-1 of j s[j] c[k-j]
void MpfrSeries::Angle(const Line& line, LineId id, mpfr_ptr s, int k)
{
  mpfr_srcptr c = Terms(line.c);
  Convolve(DerivativeTerms(line.a), Terms(line.b), 1, k, k, sum);
  Convolve(DerivativeTerms(line.b), Terms(line.a), 1, k, k, weighted);
  mpfr_sub(sum, sum, weighted, kNearest);
  Convolve(DerivativeTerms(id), c, 1, k - 1, k, weighted);
  mpfr_sub(sum, sum, weighted, kNearest);
  mpfr_div(sum, sum, c, kNearest);
  mpfr_div_si(s + k, sum, k, kNearest);
}

// ---------------------------------------------------------------------------------------------
// What others ask

double MpfrSeries::Log2(LineId line, int k) const
{
  return Log2Size(Terms(line) + k);
}

std::span<const double> MpfrSeries::Logs(LineId line) const
{
  std::vector<double>& known = logs[line];
  for (int k = static_cast<int>(known.size()); k <= order; ++k) known.push_back(Log2(line, k));
  return known;
}

double MpfrSeries::Log2Constant(ConstantId constant) const
{
  return constant == kNone ? -std::numeric_limits<double>::infinity() : constantLogs[constant];
}

void MpfrSeries::Term(LineId line, int k, mpfr_ptr result) const
{
  mpfr_set(result, Terms(line) + k, kNearest);
}

void MpfrSeries::Sum(LineId line, mpfr_srcptr offset, mpfr_ptr result) const
{
  // Horner's scheme, from the highest term down
  mpfr_srcptr a = Terms(line);
  Real value(bits);
  for (int k = order; k >= 0; --k) {
    mpfr_mul(value, value, offset, kNearest);
    CountProduct();
    mpfr_add(value, value, a + k, kNearest);
  }
  mpfr_set(result, value, kNearest);
}

}  // namespace varno::solve
