#include "solve/integration/run.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <limits>
#include <span>
#include <utility>

#include "solve/evaluation/disturbance.h"
#include "solve/evaluation/size.h"
#include "solve/integration/common_roots.h"
#include "solve/integration/resolution.h"
#include "solve/number/simplest_rational.h"

namespace varno::solve {

namespace {

double Log2Moment(const Moment& moment)
{
  Real value(53);
  moment.Evaluate(value);
  return Log2Size(value);
}

/// A step that must not reach a place goes this part of the way (log2).
const double kPartOfWayLog2 = std::log2(0.9);
constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// Steps shrink when they do so by this much (log2) over so many of them.
constexpr std::size_t kStepsLookedAt = 8;
constexpr double kLeastShrinkingLog2 = 1;
/// A root is taken for a simple fraction near it when that has no more than this part of the bits
/// that it is known to.
constexpr double kMostBitsOfFraction = 1.0 / 3;

/// When a step needs more precision, some more is taken at once, so that this is rare.
constexpr double kSpareBits = 64;

/// Where in a step its defect is tested: sqrt(5) - 2, 2 - sqrt(2), (sqrt(3) + 1)/3, the end. No
/// period of the problem's has all of them in step.
constexpr std::array<double, 4> kTestedParts = {0.2360679775, 0.5857864376, 0.9106836025, 1};
/// Steps alike differ by less than this factor (log2).
constexpr double kAlikeLog2 = 0.6;
/// A step that fails its test as often as this, halved each time, is as good as gone.
constexpr int kMostHalvings = 200;

bool HasTimeLine(const Tape& tape)
{
  return std::ranges::any_of(tape.lines,
                             [](const Line& line) { return line.kind == LineKind::kTime; });
}

bool Contains(const std::vector<LineId>& lines, LineId line)
{
  return std::ranges::find(lines, line) != lines.end();
}

/// Whether a root cannot be told from the start of the step.
bool IsAtStart(const RootAhead& root)
{
  return mpfr_cmp(root.place, root.error) <= 0;
}

Moment ToMoment(const StepLength& length)
{
  Rational value = length.mantissa;
  if (length.exponent >= 0) {
    mpq_mul_2exp(value.get_mpq_t(), value.get_mpq_t(), static_cast<mp_bitcnt_t>(length.exponent));
  } else {
    mpq_div_2exp(value.get_mpq_t(), value.get_mpq_t(), static_cast<mp_bitcnt_t>(-length.exponent));
  }
  return Moment(value);
}

}  // namespace

Run::Run(const Tape& tape, const RunSettings& settings, const Moment& start,
         std::vector<Real> initial, const Moment& reach, Poll poll)
    : tape(tape),
      settings(settings),
      control(tape, settings),
      poll(std::move(poll)),
      bits(settings.bits),
      domains(tape),
      start(start),
      reach(reach),
      usesTime(HasTimeLine(tape)),
      latest{.begin = start,
             .end = start,
             .backwards = reach < start,
             .states = std::move(initial),
             .stateSizes = {}}
{
  const double forTime = usesTime ? BitsForTime(Log2Moment(reach - start)) : 0;
  RequireBits(static_cast<double>(settings.bits) + forTime);
  for (const Real& state : latest.states) latest.stateSizes.push_back(Log2Size(state));
  latest.bits = bits;
}

/// How many bits the time takes more than a step of this length.
double Run::BitsForTime(double lengthLog2) const
{
  const double time = std::max(Log2Moment(latest.end), Log2Moment(reach));
  if (!std::isfinite(time) || !std::isfinite(lengthLog2)) return 0;
  return std::ceil(std::max(0.0, time - lengthLog2));
}

/// Computes with at least this precision from now on.
void Run::RequireBits(double wanted)
{
  if (pool != nullptr && wanted <= static_cast<double>(bits)) return;
  if (wanted > static_cast<double>(settings.mostBits)) throw PrecisionExhausted{latest.end};
  bits = std::max(bits, static_cast<mpfr_prec_t>(std::ceil(wanted)));
  pool = std::make_shared<SeriesPool>([this, precision = bits] {
    return MakeSeries(tape, precision, settings.order, settings.disturbed, poll);
  });
  series = pool->Take();
  exemptionRule.emplace(tape, settings, bits);
  defectCheck.emplace(tape, settings, bits);
}

/// The precision that a step of this length needs.
double Run::NeededBits(const StepBound& bound) const
{
  if (std::isinf(bound.log2) && bound.log2 < 0) return 0;
  const double forTime =
      usesTime ? static_cast<double>(settings.bits) + BitsForTime(bound.log2) : 0;
  const StepStart begin{latest.states, latest.stateSizes, control.Sizes(),
                        ChooseLength(bound).Log2()};
  return std::max(forTime, BitsForDerivatives(tape, Current(), begin, settings, bits));
}

/// The series about the end of the latest step with enough bits, and what it allows.
StepBound Run::PrepareStep()
{
  for (;;) {
    const StepBound bound = PrepareSeries();
    const double needed = NeededBits(bound);
    if (needed <= static_cast<double>(bits)) return bound;
    RequireBits(needed + kSpareBits);
  }
}

/// Adds the lines that must be 0 where an operation has no value or no series; false if that is not
/// why, or was known.
bool Run::NoteZeroLines(const DomainError& error)
{
  if (error.outcome != Outcome::kUndefined && error.outcome != Outcome::kNoSeries) return false;
  bool isNew = false;
  for (const Line& line : tape.lines) {
    const LineId domain = DomainOf(line);
    if (line.node != error.node || domain == kNone || Contains(zeroLines, domain)) continue;
    zeroLines.push_back(domain);
    isNew = true;
  }
  return isNew;
}

/// The end of a way that cannot go on where a line is 0: all states are there.
Singularity Run::EndAt(LineId zeroLine) const
{
  const auto user = std::ranges::find(tape.lines, zeroLine, DomainOf);
  const NodeId node = (user != tape.lines.end() ? *user : tape.lines[zeroLine]).node;
  return {.time = latest.end, .node = node, .kind = SingularityKind::kDomainEdge, .bits = bits};
}

/// Begins the series where some lines are 0. Throws Singularity where none can go on from there.
void Run::BeginAtRoot(mpfr_srcptr time)
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
      if (!NoteZeroLines(error)) throw;
    }
  }
}

void Run::BeginLines(mpfr_srcptr time, const std::vector<bool>& leftOut)
{
  atRoot.reset();
  if (!zeroLines.empty()) {
    BeginAtRoot(time);
    return;
  }
  try {
    series->LeaveOut(leftOut);
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

/// What the series about the end of the latest step allows.
StepBound Run::ChooseBound(const std::vector<bool>& leftOut)
{
  StepBound bound = control.Choose(Current(), leftOut);
  bound.log2 += static_cast<double>(scaleExponent);
  return bound;
}

/// Whether the series is as exact as asked for over the step that it allows.
bool Run::IsExactFor(const StepBound& bound)
{
  const double step = bound.log2 > -kInfinity ? ChooseLength(bound).Log2() : bound.log2;
  return Current().IsExactFor(step - static_cast<double>(scaleExponent));
}

/// The series about the end of the latest step without some lines, exact enough for the step that
/// it allows, and that step: with a scale near the step if it was far, as it is in the first step
/// mostly, else with each term as exact as can be.
StepBound Run::BeginSeries(mpfr_srcptr time, const std::vector<bool>& leftOut)
{
  BeginLines(time, leftOut);
  if (!arithmeticChoice.IsWorthTrying()) {
    Current().Refine();
    return ChooseBound(leftOut);
  }
  StepBound bound = ChooseBound(leftOut);
  if (IsExactFor(bound)) return bound;
  if (latest.steps == 0) {
    Current().Refine();
    bound = ChooseBound(leftOut);
  }
  if (std::isfinite(bound.log2)) {
    scaleExponent = ScaleFor(ChooseLength(bound).Log2());
    BeginLines(time, leftOut);
    bound = ChooseBound(leftOut);
    if (IsExactFor(bound)) return bound;
  }
  Current().Refine();
  return ChooseBound(leftOut);
}

/// The series about the end of the latest step, and what it allows.
StepBound Run::PrepareSeries()
{
  Real time(bits);
  latest.end.Evaluate(time);
  exemption.reset();
  const StepBound bound = BeginSeries(time, std::vector<bool>(tape.lines.size(), false));
  if (atRoot) return bound;
  exemption = exemptionRule->Find(*series, control,
                                  {.time = time,
                                   .states = latest.states,
                                   .backwards = latest.backwards,
                                   .scaleExponent = scaleExponent,
                                   .longestLog2 = LongestStepLog2()});
  if (!exemption) return bound;
  const StepBound longer = BeginSeries(time, exemption->leftOut);
  return {std::min(longer.log2, exemption->longestLog2), bound.line};
}

/// Where nothing bounds the step it may go well beyond the end, but not for ever: a power of 2, so
/// that it does not depend on where exactly the rows end.
double Run::LongestStepLog2() const
{
  const double remaining = Log2Moment(reach - latest.end);
  return std::isfinite(remaining) ? std::ceil(remaining) + 1 : 0;
}

StepLength Run::ChooseLength(const StepBound& bound) const
{
  return StepLength::AtMost(std::min(bound.log2, LongestStepLog2()));
}

/// The time of a root: a simple fraction where one lies so near that this cannot be by chance.
Moment Run::PlaceOf(const RootAhead& root) const
{
  Rational distance, error;
  mpfr_get_q(distance.get_mpq_t(), root.place);
  mpfr_get_q(error.get_mpq_t(), root.error);
  error *= 2;
  const Moment unit = ToMoment({.mantissa = 1, .exponent = scaleExponent});
  const Moment ahead = unit * distance;
  Moment place = latest.backwards ? latest.end - ahead : latest.end + ahead;
  const Rational around = (unit * error).RationalPart();
  if (sgn(around) == 0) return place;
  if (!place.IsRational()) {
    const bool isZero = place <= Moment(around) && place >= Moment(-around);
    return isZero ? Moment(Rational(0)) : place;
  }
  const Rational& exact = place.RationalPart();
  const Rational simple = SimplestBetween(exact - around, exact + around);
  const double known = std::max(Log2Moment(place), Log2Moment(ahead)) - Log2Moment(Moment(around));
  const std::size_t size =
      mpz_sizeinbase(simple.get_num_mpz_t(), 2) + mpz_sizeinbase(simple.get_den_mpz_t(), 2);
  return static_cast<double>(size) <= kMostBitsOfFraction * known ? Moment(simple) : place;
}

/// The step that ends at a root.
Run::Stride Run::StrideTo(const RootAhead& root)
{
  const Moment place = PlaceOf(root);
  const Moment advance = latest.backwards ? latest.end - place : place - latest.end;
  Real offset(bits);
  advance.Evaluate(offset);
  mpfr_mul_2si(offset, offset, -scaleExponent, MPFR_RNDN);
  return {std::move(offset), advance, Log2Moment(advance)};
}

/// The lines that the step at hand leaves out; null: none.
const std::vector<bool>* Run::LeftOut() const
{
  return exemption ? &exemption->leftOut : nullptr;
}

/// How far the step goes: as far as its terms allow, and not over a root.
Run::Stride Run::ChooseStride(StepBound& bound)
{
  for (;;) {
    if (bound.log2 == -kInfinity) RequireProgress(bound);
    const StepLength length = ChooseLength(bound);
    Stride stride{Real(64), ToMoment(length), length.Log2()};
    length.InUnits(scaleExponent, stride.offset);
    const Domains::Step step{Current(), control.Sizes(), stride.offset, settings, LeftOut()};
    std::optional<RootAhead> root = domains.FirstRoot(step);
    if (root) {
      // Its place is worth all digits.
      Current().Refine();
      root = domains.FirstRoot(step);
    }
    if (root && IsAtStart(*root)) {
      BeginAgainAt(*root);
      bound = PrepareStep();
      continue;
    }
    zeroLines.clear();
    if (!root) return stride;
    if (root->mayGoOn) {
      zeroLines = std::move(root->lines);
      return StrideTo(*root);
    }
    const double distance = Log2Size(root->place) + static_cast<double>(scaleExponent);
    bound = {distance + kPartOfWayLog2, root->lines.front()};
  }
}

/// Whether the series is a solution over a step of this length, as far as points can tell.
///
/// Only one of two runs is tested, the one that is printed: the other one is compared with it at
/// the end of every step. A step like the one before is tested at one of four points, another one
/// each time: a fault of a formula shows everywhere, and terms that are too few for one step are so
/// for its neighbours. Where something is new, because the step is longer, its order higher or
/// lines are left out, it is tested at all of them; but for the end of one that lands on a root,
/// where the expressions may have no value.
bool Run::PassesDefectCheck(const Stride& stride)
{
  if (settings.disturbed) return true;
  const bool isLikeLast = latest.steps > 0 && stride.log2 < stepLog2 + kAlikeLog2 &&
                          Current().Order() == settings.order && !exemption && !atRoot;
  const std::size_t turn = static_cast<std::size_t>(latest.steps) % kTestedParts.size();
  const DefectCheck::Step step{
      .series = Current(),
      .begin = latest.end,
      .backwards = latest.backwards,
      .scaleExponent = scaleExponent,
      .lengthLog2 = stride.log2 - static_cast<double>(scaleExponent),
      .leftOut = exemption ? std::span<const Real>(exemption->deviation.rightHandSides)
                           : std::span<const Real>()};
  const std::span<const double> parts = kTestedParts;
  if (!zeroLines.empty()) return defectCheck->Passes(step, parts.first(parts.size() - 1));
  return defectCheck->Passes(step, isLikeLast ? parts.subspan(turn, 1) : parts);
}

/// The step, halved as long as it fails the test of its defect.
Run::Stride Run::ShortenToPass(StepBound& bound)
{
  const std::vector<LineId> zeroLinesAtStart = zeroLines;
  for (int halvings = 0; halvings < kMostHalvings; ++halvings) {
    Stride stride = ChooseStride(bound);
    if (PassesDefectCheck(stride)) return stride;
    bound.log2 = stride.log2 - 1;
    zeroLines = zeroLinesAtStart;
  }
  throw EndBefore(bound);
}

/// Makes the lines that are 0 at the start of the step known as such. Throws Singularity where they
/// do not go on, or were known.
void Run::BeginAgainAt(const RootAhead& root)
{
  bool isNew = false;
  for (const LineId line : root.lines) {
    if (Contains(zeroLines, line)) continue;
    zeroLines.push_back(line);
    isNew = true;
  }
  if (!isNew || !root.mayGoOn) throw EndAt(root.lines.front());
}

/// The end of a way on which steps become too short.
Singularity Run::EndBefore(const StepBound& bound)
{
  Current().Refine();
  Rational unit = ToMoment({.mantissa = 1, .exponent = scaleExponent}).RationalPart();
  if (latest.backwards) unit = -unit;
  const NodeId node = bound.line == kNone ? 0 : tape.lines[bound.line].node;
  return Classify(tape, Current(), latest.end, unit, node, bits);
}

/// Whether the steps have been shrinking to this one: those towards a singularity become shorter by
/// a tenth or more each, while others are short because everything is fast.
bool Run::IsShrinking(double log2) const
{
  if (log2 == -kInfinity) return true;
  return latestBounds.size() == kStepsLookedAt && log2 < latestBounds.back() - kLeastShrinkingLog2;
}

/// Ends the run where the steps shrink to nothing beside the way behind it.
void Run::RequireProgress(const StepBound& bound)
{
  const double way = Log2Moment(latest.end - start);
  if (bound.log2 <= way - settings.placeBits && IsShrinking(bound.log2)) {
    throw EndBefore(bound);
  }
  latestBounds.push_front(bound.log2);
  if (latestBounds.size() > kStepsLookedAt) latestBounds.pop_back();
}

/// The states at the end of a step; those that were rounded are moved where that is asked for.
std::vector<Real> Run::SumToEnd(mpfr_srcptr offset) const
{
  std::vector<Real> sums;
  for (LineId state = 0; state < latest.states.size(); ++state) {
    Real& sum = sums.emplace_back(bits);
    mpfr_clear_inexflag();
    Current().Sum(state, offset, sum);
    if (!settings.disturbed || mpfr_inexflag_p() == 0) continue;
    Disturb(sum, static_cast<std::uint64_t>(latest.steps) * latest.states.size() + state);
  }
  return sums;
}

/// What was exempt is an error, not 0: the disturbed run and the other one move by its bound to
/// either side, so that they show what becomes of it.
void Run::ShiftByExemption()
{
  for (std::size_t i = 0; i < latest.states.size(); ++i) {
    const Real& bound = exemption->deviation.states[i];
    if (bound.IsZero()) continue;
    Real& state = latest.states[i];
    if (settings.disturbed) {
      mpfr_add(state, state, bound, MPFR_RNDU);
    } else {
      mpfr_sub(state, state, bound, MPFR_RNDD);
    }
  }
}

/// Keeps what the next series wants to know of this one.
void Run::NoteArithmetic()
{
  largestTerms = series->LargestTerms();
  if (arithmeticChoice.IsWorthTrying()) {
    arithmeticChoice.StepTried(!Current().IsRefined());
  } else {
    arithmeticChoice.StepSkipped();
  }
}

void Run::Step()
{
  // Where nobody else holds it, the series of the latest step is the next one's.
  latest.series = nullptr;
  if (series == nullptr) series = pool->Take();
  series->Expect(largestTerms);
  StepBound bound = PrepareStep();
  const Stride stride = ShortenToPass(bound);
  RequireProgress(bound);

  latest.states = SumToEnd(stride.offset);
  control.StepMade();
  NoteArithmetic();
  if (exemption) ShiftByExemption();
  latest.begin = latest.end;
  latest.end = latest.backwards ? latest.begin - stride.advance : latest.begin + stride.advance;
  latest.stateSizes = StateSizes(stride.log2);
  // Of a step that began at a root, the other series stays for the next one.
  latest.series = atRoot ? std::shared_ptr<Series>(std::move(atRoot)) : std::move(series);
  latest.scaleExponent = scaleExponent;
  latest.order = latest.series->Order();
  latest.bits = bits;
  ++latest.steps;
  stepLog2 = stride.log2;
  // A step that ends at a root says little about the next one.
  if (zeroLines.empty()) scaleExponent = ScaleFor(stride.log2);
}

std::vector<double> Run::StateSizes(double lengthLog2) const
{
  std::vector<double> sizes;
  const double offset = lengthLog2 - static_cast<double>(scaleExponent);
  for (LineId state = 0; state < latest.states.size(); ++state) {
    double size = control.Sizes()[tape.rightHandSides[state]] + lengthLog2;
    for (int k = 0; k <= Current().Order(); ++k)
      size = std::max(size, Current().Log2(state, k) + k * offset);
    sizes.push_back(size);
  }
  return sizes;
}

}  // namespace varno::solve
