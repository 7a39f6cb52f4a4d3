#include "solve/integration/step_series.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <numbers>
#include <span>
#include <utility>

#include "solve/evaluation/size.h"
#include "solve/integration/common_roots.h"
#include "solve/integration/domains.h"
#include "solve/integration/edge_leap.h"
#include "solve/integration/resolution.h"
#include "solve/series/line_schedule.h"

namespace varno::solve {

namespace {

/// When a step needs more precision, some more is taken at once, so that this is rare.
constexpr double kSpareBits = 64;
/// The same where only block arithmetic needs it, as a part of the bits there are; and as many bits
/// as are few for it, which costs about a digit more.
constexpr double kSparePartOfBlocks = 1.0 / 16, kFewBits = 48;
/// What an exact time may take beyond the way, in bits: enough for steps of 10^-300 000 of it, or
/// twice as many as the arithmetic may take.
constexpr double kLeastBitsOfTimes = 1 << 20;
/// log2 of what the next step may be longer than the latest one, and than one before which there
/// was none: less than that is seldom.
constexpr double kScaleMargin = 0.125, kUnknownGrowth = 0.375;
/// A part of a run's digits is enough to tell about how long its first step becomes, and so many at
/// most.
constexpr double kPartOfDigits = 0.25, kMostCoarseDecimals = 40;

/// Digits of terms that a longer step needs are left out of a short one, and make what it allows
/// seem too short by less each time.
constexpr int kMostScalesTried = 2;
/// Where more bits are missing in a first step, its terms may not tell how long it is.
constexpr double kMostBitsOfScale = 64;

/// So many bits may cancel in a difference of times.
constexpr mpfr_exp_t kClearBits = 20;

bool HasTimeLine(const Tape& tape)
{
  return std::ranges::any_of(tape.lines,
                             [](const Line& line) { return line.kind == LineKind::kTime; });
}

}  // namespace

StepSeries::StepSeries(const Tape& tape, const RunSettings& settings, const DenseStep& latest,
                       const Moment& reach, Poll poll)
    : tape(tape),
      settings(settings),
      latest(latest),
      reach(reach),
      poll(std::move(poll)),
      usesTime(HasTimeLine(tape)),
      none(tape.lines.size(), false),
      bits(settings.bits),
      control(tape, settings)
{
  const double forTime = usesTime ? BitsForTime(Log2Size(reach - latest.end)) : 0;
  RequireBits(static_cast<double>(settings.bits) + forTime);
}

/// How many bits the time takes more than a step of this length.
double StepSeries::BitsForTime(double lengthLog2) const
{
  const double time = std::max(Log2Size(latest.end), Log2Size(reach));
  if (!std::isfinite(time) || !std::isfinite(lengthLog2)) return 0;
  return std::ceil(std::max(0.0, time - lengthLog2));
}

/// Computes with at least this precision from now on.
void StepSeries::RequireBits(double wanted)
{
  if (pool != nullptr && wanted <= static_cast<double>(bits)) return;
  if (wanted > static_cast<double>(settings.mostBits)) throw PrecisionExhausted{latest.end};
  bits = std::max(bits, static_cast<mpfr_prec_t>(std::ceil(wanted)));
  if (team == nullptr && IsWorthSharing(tape, bits, settings.order, settings.threads))
    team = std::make_shared<Team>(settings.threads);
  pool = std::make_shared<SeriesPool>([this, precision = bits] {
    return MakeSeries(tape, precision, settings.raisedOrder, settings.disturbed, poll, team);
  });
  series = pool->Take();
  exemptionRule.emplace(tape, settings, bits);
}

/// The precision that a step of this length needs.
double StepSeries::NeededBits(const StepBound& bound) const
{
  if (std::isinf(bound.log2) && bound.log2 < 0) return 0;
  const double more = BitsForTime(bound.log2);
  // Exact times have that many, whatever the arithmetic has, and each is held several times.
  if (more > std::max(kLeastBitsOfTimes, 2 * static_cast<double>(settings.mostBits)))
    throw PrecisionExhausted{latest.end};
  const double forTime = usesTime ? static_cast<double>(settings.bits) + more : 0;
  const StepStart begin{latest.states, latest.stateSizes, control.Sizes(),
                        ChooseLength(bound).Log2()};
  return std::max(forTime, BitsForDerivatives(tape, Current(), begin, settings, bits));
}

/// The precision with which block arithmetic is exact enough again where it is not because lines
/// cancel: that is faster than MPFR. Where much is missing, only after this was so in two steps in
/// a row. As many bits more as a run has do for any line that is above the rounding of its size.
double StepSeries::BitsForBlocks() const
{
  if (missingBits == 0 || (missingBits > kFewBits && !arithmeticChoice.HasFailed())) return 0;
  const double wanted = static_cast<double>(bits) * (1 + kSparePartOfBlocks) + missingBits;
  const double most = std::min(2 * static_cast<double>(settings.bits) + kSpareBits,
                               static_cast<double>(settings.mostBits) - kSpareBits);
  if (!(wanted <= most)) return 0;
  return static_cast<double>(MostBitsAsCheapAs(static_cast<mpfr_prec_t>(std::ceil(wanted))));
}

StepBound StepSeries::Begin()
{
  if (series == nullptr) series = pool->Take();
  for (;;) {
    series->Expect(largestTerms);
    const StepBound bound = BeginWithBits();
    const double needed = NeededBits(bound), forBlocks = BitsForBlocks();
    const bool isEnough = needed <= static_cast<double>(bits);
    if (isEnough && forBlocks == 0) return bound;
    RequireBits(std::max(isEnough ? 0 : needed + kSpareBits, forBlocks));
  }
}

std::shared_ptr<Series> StepSeries::Release()
{
  // Of a step that began at a root, the other series stays for the next one.
  return atRoot ? std::shared_ptr<Series>(std::move(atRoot)) : std::move(series);
}

void StepSeries::StepMade(double lengthLog2, bool endsAtRoot)
{
  const double expectedLog2 = control.StepMade(Current(), scaleExponent, lengthLog2);
  const std::span<const long> found = Current().LargestTerms();
  largestTerms.assign(found.begin(), found.end());
  if (atRoot) {
    // It has an arithmetic of its own.
  } else if (arithmeticChoice.IsWorthTrying()) {
    arithmeticChoice.StepTried(!series->IsRefined());
  } else {
    arithmeticChoice.StepSkipped();
  }
  // A step that ends at a root says little about the next one.
  if (!zeroLines.empty() || endsAtRoot) return;
  SetScale(expectedLog2, latest.steps == 0 ? kUnknownGrowth : lengthLog2 - latestLog2);
  latestLog2 = expectedLog2;
}

/// For a step of about this length, or one that grows as the latest one did: a scale that is not
/// below, so that all terms fall.
void StepSeries::SetScale(double lengthLog2, double growth)
{
  expectedStepLog2 = lengthLog2 + std::max(0.0, growth) + kScaleMargin;
  scaleExponent = static_cast<long>(std::ceil(expectedStepLog2));
}

bool StepSeries::AddZeroLines(std::span<const LineId> lines)
{
  bool isNew = false;
  for (const LineId line : lines) {
    if (std::ranges::find(zeroLines, line) != zeroLines.end()) continue;
    zeroLines.push_back(line);
    isNew = true;
  }
  return isNew;
}

/// Adds the lines that must be 0 where an operation has no value or no series; false if that is not
/// why, or was known.
bool StepSeries::NoteZeroLines(const DomainError& error)
{
  if (error.outcome != Outcome::kUndefined && error.outcome != Outcome::kNoSeries) return false;
  std::vector<LineId> domains;
  for (const Line& line : tape.lines) {
    const LineId domain = DomainOf(line);
    if (line.node == error.node && domain != kNone) domains.push_back(domain);
  }
  return AddZeroLines(domains);
}

Singularity StepSeries::EndAt(LineId zeroLine) const
{
  const auto user = std::ranges::find(tape.lines, zeroLine, DomainOf);
  const NodeId node = (user != tape.lines.end() ? *user : tape.lines[zeroLine]).node;
  return {.time = latest.end, .node = node, .kind = SingularityKind::kDomainEdge, .bits = bits};
}

/// Begins the series where some lines are 0. Throws Singularity where none can go on from there.
void StepSeries::BeginAtRoot(mpfr_srcptr time)
{
  for (;;) {
    const auto continuation = FindContinuation(
        tape, settings, bits, {time, latest.states, latest.backwards, scaleExponent}, zeroLines);
    if (!continuation) throw EndAt(zeroLines.front());
    if (!continuation->isExact && !settings.mayDeclareZero) throw ZeroInDoubt{latest.end};
    atRoot =
        MakeSeriesAtRoot(tape, bits, settings.order, settings.disturbed, continuation->roots, poll);
    try {
      atRoot->Begin(time, latest.states, latest.backwards, scaleExponent);
      return;
    } catch (const DomainError& error) {
      if (!continuation->roots.empty() && continuation->roots.front().feedsItself)
        throw EndAt(zeroLines.front());
      if (!NoteZeroLines(error)) throw;
    }
  }
}

void StepSeries::BeginLines(mpfr_srcptr time, const std::vector<bool>& leftOut,
                            const HeldLines& held)
{
  atRoot.reset();
  if (!zeroLines.empty()) {
    BeginAtRoot(time);
    return;
  }
  try {
    hasLeftOut |= &leftOut != &none;
    if (hasLeftOut) series->LeaveOut(leftOut, held);
    series->ExpectStep(expectedStepLog2 - static_cast<double>(scaleExponent));
    series->Begin(time, latest.states, latest.backwards, scaleExponent);
  } catch (const DomainError& error) {
    if (!NoteZeroLines(error)) throw;
    const std::exception_ptr first = std::current_exception();
    try {
      BeginAtRoot(time);
    } catch (const Singularity&) {
      std::rethrow_exception(first);
    }
  }
}

/// What the series begun allows.
StepBound StepSeries::ChooseBound(const std::vector<bool>& leftOut)
{
  StepBound bound = control.Choose(Current(), leftOut, scaleExponent);
  bound.log2 += static_cast<double>(scaleExponent);
  return bound;
}

/// What the series lacks to be as exact as asked for over the step that it allows. What is below
/// the rounding of a line's size counts as little in its terms as it does for the step.
double StepSeries::MissingBits(const StepBound& bound)
{
  const double step = std::isfinite(bound.log2) ? ChooseLength(bound).Log2() : bound.log2;
  const auto wanted = static_cast<double>(settings.bitsOfTerms);
  leastSizes.assign(control.Sizes().begin(), control.Sizes().end());
  for (double& size : leastSizes) size -= static_cast<double>(settings.bits);
  return Current().MissingBits(step - static_cast<double>(scaleExponent), {wanted, leastSizes});
}

/// The series without some lines, exact enough for the step that it allows, and what that is: with
/// a scale near the step if it was far, else with every term as exact as can be, unless it is to be
/// begun again with more bits.
StepBound StepSeries::BeginWithout(mpfr_srcptr time, const std::vector<bool>& leftOut,
                                   const HeldLines& held, bool mayUseBlocks)
{
  missingBits = 0;
  BeginLines(time, leftOut, held);
  if (!mayUseBlocks) {
    Current().Refine();
    return ChooseBound(leftOut);
  }
  StepBound bound = ChooseBound(leftOut);
  missingBits = MissingBits(bound);
  if (missingBits == 0) return bound;
  if (latest.steps == 0 && missingBits > kMostBitsOfScale) {
    Current().Refine();
    bound = ChooseBound(leftOut);
  }
  for (int tries = 0; tries < kMostScalesTried && std::isfinite(bound.log2); ++tries) {
    SetScale(ChooseLength(bound).Log2());
    BeginLines(time, leftOut, held);
    bound = ChooseBound(leftOut);
    missingBits = MissingBits(bound);
    if (missingBits == 0) return bound;
    // A shorter step than was expected has not lost its bits by the scale.
    if (bound.log2 < expectedStepLog2) break;
  }
  if (BitsForBlocks() > 0) return bound;
  Current().Refine();
  return ChooseBound(leftOut);
}

/// Finds the scale that the first step needs. A series of low order tells: for a radius of
/// convergence all orders allow about the same step, each at its own tolerance.
void StepSeries::SetFirstScale(mpfr_srcptr time)
{
  expectedStepLog2 = static_cast<double>(scaleExponent);
  const double decimals = settings.toleranceBits * std::numbers::ln2 / std::numbers::ln10;
  const double part = std::clamp(kPartOfDigits * decimals, kLeastDecimals, kMostCoarseDecimals);
  const RunSettings coarse = SettingsFor(part, part);
  if (settings.order <= coarse.order || !zeroLines.empty()) return;
  try {
    const auto shortSeries = MakeSeriesAtRoot(tape, coarse.bits, coarse.order, false, {}, poll);
    shortSeries->Begin(time, latest.states, latest.backwards, scaleExponent);
    const StepBound bound =
        StepControl(tape, coarse)
            .Choose(*shortSeries, std::vector<bool>(tape.lines.size(), false), scaleExponent);
    const double log2 = bound.log2 + static_cast<double>(scaleExponent);
    if (!std::isfinite(log2)) return;
    const double length = ChooseLength({log2, bound.line}).Log2();
    SetScale(control.Expect(*shortSeries, scaleExponent, length), kUnknownGrowth);
  } catch (const DomainError&) {
    // Whatever it is, the series itself meets it.
  }
}

/// The series at the present precision, and what it allows.
StepBound StepSeries::BeginWithBits()
{
  if (beginTime.Bits() != bits) beginTime = Real(bits);
  mpfr_ptr time = beginTime;
  latest.end.Evaluate(time);
  longestStepLog2 = LongestStepAhead(time);
  const bool mayUseBlocks = arithmeticChoice.IsWorthTrying();
  if (latest.steps == 0) SetFirstScale(time);
  // What is left out is chosen by terms with all their digits.
  StepBound bound = BeginWhole(time, mayUseBlocks && !exemption);
  if (atRoot || exemption) return bound;
  const ExemptionRule::Point point = PointAt(time);
  if (!exemptionRule->IsWorthTrying(*series, control, point)) return bound;
  if (!series->IsRefined()) {
    series->Refine();
    bound = ChooseBound(none);
  }
  if (!FindLeapOntoEdge(point)) exemption = exemptionRule->Find(*series, control, point);
  if (!exemption) return bound;
  const StepBound longer = BeginExempt(time, mayUseBlocks);
  return {longer.log2, bound.line};
}

ExemptionRule::Point StepSeries::PointAt(mpfr_srcptr time) const
{
  return {.time = time,
          .states = latest.states,
          .backwards = latest.backwards,
          .scaleExponent = scaleExponent,
          .longestLog2 = longestStepLog2};
}

/// The series without anything exempt; but where it has none, because lines of the time alone are
/// 0, the one for a leap from there.
StepBound StepSeries::BeginWhole(mpfr_srcptr time, bool mayUseBlocks)
{
  exemption.reset();
  try {
    return BeginWithout(time, none, {}, mayUseBlocks);
  } catch (const DomainError&) {
    if (!FindLeap(time)) throw;
  } catch (const Singularity&) {
    if (!FindLeap(time)) throw;
  }
  return BeginExempt(time, mayUseBlocks);
}

/// Finds what may be left out where the zero lines let no series begin.
bool StepSeries::FindLeap(mpfr_srcptr time)
{
  if (zeroLines.empty()) return false;
  exemption = LeapFromEdge(tape, exemptionRule->Ranges(), settings, PointAt(time), zeroLines);
  if (!exemption) return false;
  if (!settings.mayDeclareZero) throw ZeroInDoubt{latest.end};
  zeroLines.clear();
  return true;
}

/// Finds what may be left out of a step to the time watched, if functions have an edge there.
bool StepSeries::FindLeapOntoEdge(const ExemptionRule::Point& point)
{
  if (!watchedTime) return false;
  Real end(bits);
  watchedTime->Evaluate(end);
  exemption = LeapOntoEdge(tape, exemptionRule->Ranges(), settings, point, end);
  return exemption.has_value();
}

/// The series without what is exempt, and what it allows.
StepBound StepSeries::BeginExempt(mpfr_srcptr time, bool mayUseBlocks)
{
  SetScale(std::min(exemption->longestLog2, longestStepLog2));
  const StepBound bound = BeginWithout(time, exemption->leftOut, exemption->held, mayUseBlocks);
  return {std::min(bound.log2, exemption->longestLog2), bound.line};
}

/// Where nothing bounds the step it may go well beyond the end, but not for ever: a power of 2, so
/// that it does not depend on where exactly the rows end.
double StepSeries::LongestStepAhead(mpfr_srcptr time)
{
  if (reachTime.Bits() != bits) {
    reachTime = Real(bits);
    reach.Evaluate(reachTime);
  }
  mpfr_sub(way, reachTime, time, MPFR_RNDN);
  // What cancels needs exact times, which take longer.
  const bool isClear = !way.IsZero() && (reachTime.IsZero() ||
                                         mpfr_get_exp(way) + kClearBits > mpfr_get_exp(reachTime));
  const double remaining = isClear ? Log2Size(way) : Log2Size(reach - latest.end);
  return std::isfinite(remaining) ? std::ceil(remaining) + 1 : 0;
}

StepLength StepSeries::ChooseLength(const StepBound& bound) const
{
  return StepLength::AtMost(std::min(bound.log2, longestStepLog2));
}

}  // namespace varno::solve
