#include "solve/integration/run.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>

#include "solve/evaluation/disturbance.h"
#include "solve/evaluation/size.h"
#include "solve/integration/resolution.h"

namespace varno::solve {

namespace {

double Log2Moment(const Moment& moment)
{
  Real value(53);
  moment.Evaluate(value);
  return Log2Size(value);
}

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
      start(start),
      begin(start),
      end(start),
      reach(reach),
      backwards(reach < start),
      usesTime(HasTimeLine(tape)),
      states(std::move(initial))
{
  const double forTime = usesTime ? BitsForTime(Log2Moment(reach - start)) : 0;
  RequireBits(static_cast<double>(settings.bits) + forTime);
  for (const Real& state : states) stateSizes.push_back(Log2Size(state));
}

/// How many bits the time takes more than a step of this length.
double Run::BitsForTime(double lengthLog2) const
{
  const double time = std::max(Log2Moment(end), Log2Moment(reach));
  if (!std::isfinite(time) || !std::isfinite(lengthLog2)) return 0;
  return std::ceil(std::max(0.0, time - lengthLog2));
}

/// Computes with at least this precision from now on.
void Run::RequireBits(double wanted)
{
  if (series != nullptr && wanted <= static_cast<double>(bits)) return;
  if (wanted > static_cast<double>(settings.mostBits)) throw PrecisionExhausted{end};
  bits = std::max(bits, static_cast<mpfr_prec_t>(std::ceil(wanted)));
  series = MakeSeries(tape, bits, settings.order, settings.disturbed, poll);
  exemptionRule.emplace(tape, settings, bits);
  defectCheck.emplace(tape, settings, bits);
  for (Real& state : states) {
    Real wider(bits);
    mpfr_set(wider, state, MPFR_RNDN);
    state = std::move(wider);
  }
}

/// The precision that a step of this length needs.
double Run::NeededBits(const StepBound& bound) const
{
  if (std::isinf(bound.log2) && bound.log2 < 0) return 0;
  const double forTime =
      usesTime ? static_cast<double>(settings.bits) + BitsForTime(bound.log2) : 0;
  const StepStart start{states, stateSizes, control.Sizes(), ChooseLength(bound).Log2()};
  return std::max(forTime, BitsForDerivatives(tape, *series, start, settings, bits));
}

/// The series about `end` with enough bits, and what it allows.
StepBound Run::PrepareStep()
{
  for (;;) {
    const StepBound bound = PrepareSeries();
    const double needed = NeededBits(bound);
    if (needed <= static_cast<double>(bits)) {
      RequireProgress(bound);
      return bound;
    }
    RequireBits(needed + kSpareBits);
  }
}

/// The series about `end` without some lines, and what it allows.
StepBound Run::BeginSeries(mpfr_srcptr time, std::vector<bool> leftOut)
{
  series->LeaveOut(leftOut);
  series->Begin(time, states, backwards, scaleExponent);
  StepBound bound = control.Choose(*series, leftOut);
  bound.log2 += static_cast<double>(scaleExponent);
  return bound;
}

/// The series about `end`, and what it allows.
StepBound Run::PrepareSeries()
{
  Real time(bits);
  end.Evaluate(time);
  scaleExponent = nextScaleExponent;
  const StepBound bound = BeginSeries(time, std::vector<bool>(tape.lines.size(), false));
  exemption = exemptionRule->Find(*series, control,
                                  {.time = time,
                                   .states = states,
                                   .backwards = backwards,
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
  const double remaining = Log2Moment(reach - end);
  return std::isfinite(remaining) ? std::ceil(remaining) + 1 : 0;
}

StepLength Run::ChooseLength(const StepBound& bound) const
{
  return StepLength::AtMost(std::min(bound.log2, LongestStepLog2()));
}

/// Ends the run where the step is nothing beside the way behind it.
void Run::RequireProgress(const StepBound& bound) const
{
  const double way = Log2Moment(end - start);
  if (bound.log2 > way - settings.placeBits) return;
  throw Singularity{end, bound.line == kNone ? 0 : tape.lines[bound.line].node};
}

/// Whether the series is a solution over a step of this length, as far as points can tell.
///
/// Only one of two runs is tested, the one that is printed: the other one is compared with it at
/// the end of every step. A step like the one before is tested at one of four points, another one
/// each time: a fault of a formula shows everywhere, and terms that are too few for one step are so
/// for its neighbours. Where something is new, because the step is longer, its order higher or
/// lines are left out, it is tested at all of them.
bool Run::PassesDefectCheck(const StepLength& length)
{
  if (settings.disturbed) return true;
  const bool isLikeLast = steps > 0 && length.Log2() < stepLog2 + kAlikeLog2 &&
                          series->Order() == settings.order && !exemption;
  const std::size_t turn = static_cast<std::size_t>(steps) % kTestedParts.size();
  const DefectCheck::Step step{
      .series = *series,
      .begin = end,
      .backwards = backwards,
      .scaleExponent = scaleExponent,
      .lengthLog2 = length.Log2() - static_cast<double>(scaleExponent),
      .leftOut = exemption ? std::span<const Real>(exemption->deviation.rightHandSides)
                           : std::span<const Real>()};
  const std::span<const double> parts = kTestedParts;
  return defectCheck->Passes(step, isLikeLast ? parts.subspan(turn, 1) : parts);
}

/// The step, halved as long as it fails the test of its defect.
StepLength Run::ShortenToPass(StepBound bound)
{
  for (int halvings = 0; halvings < kMostHalvings; ++halvings) {
    const StepLength length = ChooseLength(bound);
    if (PassesDefectCheck(length)) return length;
    bound.log2 = length.Log2() - 1;
    RequireProgress(bound);
  }
  throw Singularity{end, bound.line == kNone ? 0 : tape.lines[bound.line].node};
}

/// The states at the end of a step; those that were rounded are moved where that is asked for.
void Run::SumToEnd(mpfr_srcptr offset)
{
  std::vector<Real> sums;
  for (LineId state = 0; state < states.size(); ++state) {
    Real& sum = sums.emplace_back(bits);
    mpfr_clear_inexflag();
    series->Sum(state, offset, sum);
    if (!settings.disturbed || mpfr_inexflag_p() == 0) continue;
    Disturb(sum, static_cast<std::uint64_t>(steps) * states.size() + state);
  }
  states = std::move(sums);
}

/// What was exempt is an error, not 0: the disturbed run and the other one move by its bound to
/// either side, so that they show what becomes of it.
void Run::ShiftByExemption()
{
  for (std::size_t i = 0; i < states.size(); ++i) {
    const Real& bound = exemption->deviation.states[i];
    if (bound.IsZero()) continue;
    if (settings.disturbed) {
      mpfr_add(states[i], states[i], bound, MPFR_RNDU);
    } else {
      mpfr_sub(states[i], states[i], bound, MPFR_RNDD);
    }
  }
}

std::vector<Real> Run::SumStates(mpfr_srcptr offset) const
{
  std::vector<Real> sums(states.size(), Real(bits));
  for (std::size_t i = 0; i < sums.size(); ++i)
    series->Sum(static_cast<LineId>(i), offset, sums[i]);
  return sums;
}

void Run::Step()
{
  const StepLength length = ShortenToPass(PrepareStep());

  Real offset(64);
  length.InUnits(scaleExponent, offset);
  control.StepMade();
  SumToEnd(offset);
  if (exemption) ShiftByExemption();
  begin = end;
  const Moment advance = ToMoment(length);
  end = backwards ? end - advance : end + advance;
  nextScaleExponent = static_cast<long>(std::floor(length.Log2()));
  stepLog2 = length.Log2();
  order = series->Order();
  stateSizes = SizesOverStep();
  ++steps;
}

/// How far a time lies from the begin of the latest step, in units of the series' scale.
Real Run::Offset(const Moment& time) const
{
  Real offset(bits);
  (backwards ? begin - time : time - begin).Evaluate(offset);
  mpfr_mul_2si(offset, offset, -scaleExponent, MPFR_RNDN);
  return offset;
}

std::vector<Real> Run::StatesAt(const Moment& time) const
{
  return time == end ? states : SumStates(Offset(time));
}

std::vector<double> Run::SizesOverStep() const
{
  std::vector<double> sizes;
  const double offset = stepLog2 - static_cast<double>(scaleExponent);
  for (LineId state = 0; state < states.size(); ++state) {
    double size = control.Sizes()[tape.rightHandSides[state]] + stepLog2;
    for (int k = 0; k <= order; ++k) size = std::max(size, series->Log2(state, k) + k * offset);
    sizes.push_back(size);
  }
  return sizes;
}

}  // namespace varno::solve
