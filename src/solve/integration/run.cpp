#include "solve/integration/run.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <utility>

#include "solve/evaluation/disturbance.h"
#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/integration/root_place.h"

namespace varno::solve {

namespace {

/// A step that must not reach a place goes this part of the way (log2).
const double kPartOfWayLog2 = std::log2(0.9);
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Where in a step its defect is tested: sqrt(5) - 2, 2 - sqrt(2), (sqrt(3) + 1)/3, the end. No
/// period of the problem's has all of them in step.
constexpr std::array<double, 4> kTestedParts = {0.2360679775, 0.5857864376, 0.9106836025, 1};
/// Steps alike differ by less than this factor (log2).
constexpr double kAlikeLog2 = 0.6;
/// A step that fails its test as often as this, halved each time, is as good as gone.
constexpr int kMostHalvings = 200;

/// A branch point is not followed nearer than so many times the bits of the tolerance.
constexpr double kMostLandingFactor = 12;

/// Times at which states take a value are known to about so many bits less than the tolerance has.
constexpr double kNoiseBits = 14;

/// Whether a root cannot be told from the start of the step.
bool IsAtStart(const RootAhead& root)
{
  return mpfr_cmp(root.place, root.error) <= 0;
}

/// Whether a place within the error of a root is meant by it.
bool IsAt(const RootAhead& root, mpfr_srcptr place)
{
  Real distance(kErrorBits);
  mpfr_sub(distance, root.place, place, MPFR_RNDZ);
  return mpfr_cmpabs(distance, root.error) <= 0;
}

/// Whether a root comes before another one, for all that their errors tell.
bool IsBefore(const RootAhead& a, const RootAhead& b)
{
  Real distance(kErrorBits);
  mpfr_sub(distance, b.place, a.place, MPFR_RNDD);
  mpfr_sub(distance, distance, a.error, MPFR_RNDD);
  return mpfr_cmp(distance, b.error) > 0;
}

}  // namespace

Run::Run(const Tape& tape, const RunSettings& settings, const Moment& start,
         std::vector<Real> initial, const Moment& reach, Poll poll)
    : tape(tape),
      settings(settings),
      start(start),
      latest{.begin = start,
             .end = start,
             .backwards = reach < start,
             .states = std::move(initial),
             .stateSizes = {}},
      series(tape, settings, latest, reach, std::move(poll)),
      domains(tape),
      approach(start, reach, settings.approachBits)
{
  for (const Real& state : latest.states) latest.stateSizes.push_back(Log2Size(state));
  largest = latest.stateSizes;
  latest.bits = series.Bits();
}

void Run::Watch(std::vector<WatchedLine> lines, const Moment& begin)
{
  watched = std::move(lines);
  wayBegin = begin;
  rootsAtEnd.clear();
}

/// The step that ends at a root.
Run::Stride Run::StrideTo(const RootAhead& root) const
{
  const Moment place = TimeOfRoot(root, latest.end, latest.backwards, series.ScaleExponent());
  return StrideOf(latest.backwards ? latest.end - place : place - latest.end);
}

Run::Stride Run::StrideOf(const Moment& advance) const
{
  Real offset(series.Bits());
  advance.Evaluate(offset);
  mpfr_mul_2si(offset, offset, -series.ScaleExponent(), MPFR_RNDN);
  return {std::move(offset), advance, Log2Size(advance)};
}

/// The step that its terms allow, at most to the time watched.
Run::Stride Run::LongestStride(const StepBound& bound) const
{
  const StepLength length = series.ChooseLength(bound);
  Stride stride{Real(64), length.ToMoment(), length.Log2()};
  if (watchedTime) {
    const Moment toTime = latest.backwards ? latest.end - *watchedTime : *watchedTime - latest.end;
    if (toTime <= stride.advance) return StrideOf(toTime);
  }
  length.InUnits(series.ScaleExponent(), stride.offset);
  return stride;
}

/// What the error of the states leaves open about roots in the step.
Nearness Run::NearnessOfRoots(const Stride& longest) const
{
  const double way = std::max(Log2Size(latest.end - wayBegin), longest.log2) -
                     static_cast<double>(series.ScaleExponent());
  const double doubt =
      settings.mayDeclareZero ? -kInfinity : way - settings.toleranceBits + kNoiseBits;
  return {way - settings.onTimeBits, doubt};
}

/// The step to the first root of a watched line, if there is one that does not come behind the edge
/// of a domain.
std::optional<Run::Stride> Run::StrideToWatched(const Stride& longest, const RootAhead* domainEdge)
{
  rootsAtEnd.clear();
  if (watched.empty()) return std::nullopt;
  const SeriesStep step{series.Current(), series.Sizes(), longest.offset, settings};
  // Most steps have none, however near to one another they may be.
  if (!FirstWatchedRoots(tape, step, watched, {-kInfinity, -kInfinity})) return std::nullopt;
  series.Current().Refine();
  std::optional<WatchedRootsAhead> ahead =
      FirstWatchedRoots(tape, step, watched, NearnessOfRoots(longest));
  if (!ahead) return std::nullopt;
  if (ahead->isInDoubt) throw ZeroInDoubt{latest.end};
  const RootAhead root{{}, std::move(ahead->place), std::move(ahead->error), true};
  if (domainEdge != nullptr && IsBefore(*domainEdge, root)) return std::nullopt;
  rootsAtEnd = std::move(ahead->roots);
  const bool mayBeEnd = watchedTime && IsAt(root, longest.offset);
  return mayBeEnd ? longest : StrideTo(root);
}

/// How far the step goes: as far as its terms allow, and not over a root.
Run::Stride Run::ChooseStride(StepBound& bound)
{
  for (;;) {
    if (bound.log2 == -kInfinity) RequireProgress(bound);
    Stride stride = LongestStride(bound);
    const std::optional<Exemption>& leftOut = series.LeftOut();
    const Domains::Step step{{series.Current(), series.Sizes(), stride.offset, settings},
                             leftOut ? &leftOut->leftOut : nullptr};
    std::optional<RootAhead> root = domains.FirstRoot(step);
    if (root && !series.Current().IsRefined()) {
      // Its place is worth all digits.
      series.Current().Refine();
      root = domains.FirstRoot(step);
    }
    if (root && IsAtStart(*root)) {
      BeginAgainAt(*root);
      bound = series.Begin();
      continue;
    }
    series.SetZeroLines({});
    if (auto toWatched = StrideToWatched(stride, root ? &*root : nullptr)) {
      if (root && root->mayGoOn && IsAt(*root, toWatched->offset)) series.SetZeroLines(root->lines);
      return *std::move(toWatched);
    }
    if (!root) return stride;
    if (root->mayGoOn) {
      series.SetZeroLines(root->lines);
      return StrideTo(*root);
    }
    const double distance = Log2Size(root->place) + static_cast<double>(series.ScaleExponent());
    bound = {distance + kPartOfWayLog2, root->lines.front()};
  }
}

/// Makes the lines that are 0 at the start of the step known as such. Throws Singularity where they
/// do not go on, or were known.
void Run::BeginAgainAt(const RootAhead& root)
{
  const bool isNew = series.AddZeroLines(root.lines);
  if (!isNew || !root.mayGoOn) throw series.EndAt(root.lines.front());
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
  // One of no length lands on a root at its start.
  if (settings.disturbed || stride.log2 == -kInfinity) return true;
  if (!defectCheck || defectCheck->Bits() != series.Bits()) {
    defectCheck.emplace(tape, settings, series.Bits(), series.Sharing());
  }
  const std::optional<Exemption>& leftOut = series.LeftOut();
  const int order = series.Current().Order();
  const bool isOrdinary = order == settings.order || order == settings.raisedOrder;
  const bool isLikeLast = latest.steps > 0 && stride.log2 < latest.lengthLog2 + kAlikeLog2 &&
                          isOrdinary && !leftOut && !series.IsAtRoot();
  const std::size_t turn = static_cast<std::size_t>(latest.steps) % kTestedParts.size();
  const DefectCheck::Step step{
      .series = series.Current(),
      .begin = latest.end,
      .backwards = latest.backwards,
      .scaleExponent = series.ScaleExponent(),
      .lengthLog2 = stride.log2 - static_cast<double>(series.ScaleExponent()),
      .leftOut = leftOut ? std::span<const Real>(leftOut->deviation.rightHandSides)
                         : std::span<const Real>()};
  const std::span<const double> parts = kTestedParts;
  const bool endsAtEdge = leftOut && leftOut->endsAtEdge;
  if (endsAtEdge || !series.ZeroLines().empty() || !rootsAtEnd.empty())
    return defectCheck->Passes(step, parts.first(parts.size() - 1));
  return defectCheck->Passes(step, isLikeLast ? parts.subspan(turn, 1) : parts);
}

/// The step, halved as long as it fails the test of its defect.
Run::Stride Run::ShortenToPass(StepBound& bound)
{
  const std::vector<LineId> zeroLinesAtStart = series.ZeroLines();
  for (int halvings = 0; halvings < kMostHalvings; ++halvings) {
    Stride stride = ChooseStride(bound);
    if (PassesDefectCheck(stride)) return stride;
    // What is small beside the terms of a line may be all that there is in another one.
    if (series.Current().IsRefined()) bound.log2 = stride.log2 - 1;
    series.Current().Refine();
    series.SetZeroLines(zeroLinesAtStart);
  }
  throw EndBefore(bound);
}

/// The end of a way on which steps become too short.
Singularity Run::EndBefore(const StepBound& bound)
{
  series.Current().Refine();
  const StepLength unit{.mantissa = 1, .exponent = series.ScaleExponent()};
  Rational signedUnit = unit.ToMoment().RationalPart();
  if (latest.backwards) signedUnit = -signedUnit;
  const NodeId node = bound.line == kNone ? 0 : tape.lines[bound.line].node;
  return Classify(tape, series.Current(), latest.end, signedUnit, node, series.Bits());
}

/// Whether the steps have shrunk to nothing beside the way behind them.
bool Run::IsNearEnd(const StepBound& bound) const
{
  if (!trend.IsShrinking(bound.log2)) return false;
  return bound.log2 <= Log2Size(latest.end - start) - settings.placeBits;
}

/// Where a way on which steps become too short may be followed onto its end.
std::optional<Landing> Run::LandingBefore(const Singularity& end) const
{
  const LandingStep step{series.Current(), latest.end, latest.backwards, series.ScaleExponent(),
                         series.Bits()};
  return FindLanding(step, end, latest.states.size(), watchedTime, watched);
}

/// Whether what is not known of the states at the end is nothing beside what they were on the way.
bool Run::IsExact(const Landing& landing) const
{
  const double bits = landing.roots.empty() ? settings.toleranceBits : settings.landingBits;
  for (std::size_t i = 0; i < largest.size(); ++i) {
    if (landing.tails[i] > largest[i] - bits) return false;
  }
  return true;
}

/// Makes the step onto the end of a way.
void Run::Land(Landing landing, const Singularity& end)
{
  rootsAtEnd = std::move(landing.roots);
  const double length = Log2Size(landing.advance);
  GoOn({std::move(landing.offset), landing.advance, length});
  Real bound(kErrorBits);
  for (std::size_t i = 0; i < largest.size(); ++i) {
    // Right-hand sides may be infinite there, and 1 - t is known to all digits.
    latest.stateSizes[i] = largest[i];
    if (landing.tails[i] == -kInfinity) continue;
    mpfr_set_d(bound, landing.tails[i], MPFR_RNDU);
    mpfr_exp2(bound, bound, MPFR_RNDU);
    Shift(i, bound);
  }
  wayEnd = end;
}

/// Ends the run where the steps shrink to nothing. Nearer to a branch point at a known time they go
/// on; where it depends on the states, they agree no nearer, and it takes more digits.
void Run::RequireProgress(const StepBound& bound)
{
  const bool isGone = bound.log2 == -kInfinity;
  if (!isGone && !IsNearEnd(bound)) return;
  const Singularity end = EndBefore(bound);
  const std::optional<Landing> landing = isGone ? std::nullopt : LandingBefore(end);
  if (!landing) throw end;
  if (!landing->roots.empty()) {
    if (settings.toleranceBits < kMostLandingFactor * settings.landingBits)
      throw ZeroInDoubt{latest.end};
    throw end;
  }
  const double way = Log2Size(latest.end - start);
  if (bound.log2 <= way - kMostLandingFactor * settings.toleranceBits) throw end;
}

/// Goes over to the states at the end of a step; those that were rounded are moved where that is
/// asked for.
void Run::SumToEnd(mpfr_srcptr offset)
{
  // Apart from the states, which stay when a sum is interrupted.
  sums.resize(latest.states.size());
  areRounded.resize(sums.size());
  for (Real& sum : sums) {
    if (sum.Bits() != series.Bits()) sum = Real(series.Bits());
  }
  series.Current().SumStates(offset, sums, areRounded);
  for (std::size_t state = 0; state < sums.size(); ++state) {
    if (!settings.disturbed || areRounded[state] == 0) continue;
    Disturb(sums[state], static_cast<std::uint64_t>(latest.steps) * sums.size() + state);
  }
  latest.states.swap(sums);
}

/// What was exempt is an error, not 0: the disturbed run and the other one move by its bound to
/// either side, so that they show what becomes of it.
void Run::ShiftByExemption()
{
  if (!series.LeftOut()) return;
  for (std::size_t i = 0; i < latest.states.size(); ++i) {
    const Real& bound = series.LeftOut()->deviation.states[i];
    if (!bound.IsZero()) Shift(i, bound);
  }
  RaiseLeastSizes(series.LeftOut()->leastSizes);
}

/// From now on states count as that large at least (log2).
void Run::RaiseLeastSizes(const std::vector<double>& sizes)
{
  if (sizes.empty()) return;
  leastSizes.resize(sizes.size(), -kInfinity);
  for (std::size_t i = 0; i < sizes.size(); ++i) leastSizes[i] = std::max(leastSizes[i], sizes[i]);
}

/// Moves a state by what it may be wrong by, in the disturbed run upwards.
void Run::Shift(std::size_t state, const Real& bound)
{
  Real& value = latest.states[state];
  if (settings.disturbed) {
    mpfr_add(value, value, bound, MPFR_RNDU);
  } else {
    mpfr_sub(value, value, bound, MPFR_RNDD);
  }
}

void Run::FindStateSizes(double lengthLog2)
{
  if (lengthLog2 == -kInfinity) return;
  const double offset = lengthLog2 - static_cast<double>(series.ScaleExponent());
  for (LineId state = 0; state < latest.states.size(); ++state) {
    double size = series.Sizes()[tape.rightHandSides[state]] + lengthLog2;
    if (!leastSizes.empty()) size = std::max(size, leastSizes[state]);
    double power = 0;
    for (const double term : series.Current().Logs(state)) {
      size = std::max(size, term + power);
      power += offset;
    }
    latest.stateSizes[state] = size;
  }
}

bool Run::GoesOn()
{
  if (wayEnd) return false;
  try {
    series.Begin();
    return true;
  } catch (const DomainError&) {
    return false;
  } catch (const Singularity&) {
    return false;
  }
}

void Run::Step()
{
  if (wayEnd) throw *wayEnd;
  // Where nobody else holds it, the series of the latest step is the next one's.
  latest.series = nullptr;
  StepBound bound = series.Begin();
  if (IsNearEnd(bound)) {
    const Singularity ahead = EndBefore(bound);
    std::optional<Landing> landing = LandingBefore(ahead);
    if (landing && !landing->roots.empty() && !settings.mayDeclareZero)
      throw ZeroInDoubt{latest.end};
    if (landing && IsExact(*landing)) {
      Land(*std::move(landing), ahead);
      return;
    }
  }
  const Stride stride = ShortenToPass(bound);
  RequireProgress(bound);
  trend.Add(bound.log2);
  GoOn(stride);
  LookAhead(bound);
}

/// Ends the way where the steps that follow would come to no end.
void Run::LookAhead(const StepBound& bound)
{
  const std::optional<SlowApproach::Limit> limit = approach.Add(latest.end);
  if (!limit) return;
  wayEnd = Singularity{.time = limit->time,
                       .node = bound.line == kNone ? 0 : tape.lines[bound.line].node,
                       .kind = SingularityKind::kSlowApproach,
                       .bits = series.Bits(),
                       .log2Error = limit->log2Error};
}

/// Makes the step that the series and its length are there for.
void Run::GoOn(const Stride& stride)
{
  SumToEnd(stride.offset);
  ShiftByExemption();
  latest.begin = latest.end;
  if (latest.backwards) {
    latest.end -= stride.advance;
  } else {
    latest.end += stride.advance;
  }
  FindStateSizes(stride.log2);
  for (std::size_t i = 0; i < largest.size(); ++i) {
    // Its exponent is above the logarithm, and mostly below the largest.
    mpfr_srcptr state = latest.states[i];
    if (mpfr_regular_p(state) != 0 && static_cast<double>(mpfr_get_exp(state)) <= largest[i])
      continue;
    largest[i] = std::max(largest[i], Log2Size(state));
  }
  latest.scaleExponent = series.ScaleExponent();
  latest.lengthLog2 = stride.log2;
  series.StepMade(stride.log2, !rootsAtEnd.empty());
  latest.series = series.Release();
  latest.order = latest.series->Order();
  latest.bits = series.Bits();
  ++latest.steps;
  for (WatchedLine& line : watched) line.zeroTerms = 0;
  for (const WatchedRoot& root : rootsAtEnd) watched[root.index].zeroTerms = root.mostRoots;
}

MakeStepper RunsOf(const Tape& tape)
{
  return [&tape](const RunSettings& settings, const Moment& start, std::vector<Real> states,
                 const Moment& reach, Poll poll) {
    return std::make_unique<Run>(tape, settings, start, std::move(states), reach, std::move(poll));
  };
}

}  // namespace varno::solve
