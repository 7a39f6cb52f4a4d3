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
  return std::max(forTime, BitsForDerivatives(tape, *series, begin, settings, bits));
}

/// The series about the end of the latest step with enough bits, and what it allows.
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

/// The series about the end of the latest step without some lines, and what it allows.
StepBound Run::BeginSeries(mpfr_srcptr time, std::vector<bool> leftOut)
{
  series->LeaveOut(leftOut);
  series->Begin(time, latest.states, latest.backwards, scaleExponent);
  StepBound bound = control.Choose(*series, leftOut);
  bound.log2 += static_cast<double>(scaleExponent);
  return bound;
}

/// The series about the end of the latest step, and what it allows.
StepBound Run::PrepareSeries()
{
  Real time(bits);
  latest.end.Evaluate(time);
  const StepBound bound = BeginSeries(time, std::vector<bool>(tape.lines.size(), false));
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

/// Ends the run where the step is nothing beside the way behind it.
void Run::RequireProgress(const StepBound& bound) const
{
  const double way = Log2Moment(latest.end - start);
  if (bound.log2 > way - settings.placeBits) return;
  throw Singularity{latest.end, bound.line == kNone ? 0 : tape.lines[bound.line].node};
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
  const bool isLikeLast = latest.steps > 0 && length.Log2() < stepLog2 + kAlikeLog2 &&
                          series->Order() == settings.order && !exemption;
  const std::size_t turn = static_cast<std::size_t>(latest.steps) % kTestedParts.size();
  const DefectCheck::Step step{
      .series = *series,
      .begin = latest.end,
      .backwards = latest.backwards,
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
  throw Singularity{latest.end, bound.line == kNone ? 0 : tape.lines[bound.line].node};
}

/// The states at the end of a step; those that were rounded are moved where that is asked for.
std::vector<Real> Run::SumToEnd(mpfr_srcptr offset) const
{
  std::vector<Real> sums;
  for (LineId state = 0; state < latest.states.size(); ++state) {
    Real& sum = sums.emplace_back(bits);
    mpfr_clear_inexflag();
    series->Sum(state, offset, sum);
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

void Run::Step()
{
  // Where nobody else holds it, the series of the latest step is the next one's.
  latest.series = nullptr;
  if (series == nullptr) series = pool->Take();
  const StepLength length = ShortenToPass(PrepareStep());

  Real offset(64);
  length.InUnits(scaleExponent, offset);
  latest.states = SumToEnd(offset);
  control.StepMade();
  if (exemption) ShiftByExemption();
  latest.begin = latest.end;
  const Moment advance = ToMoment(length);
  latest.end = latest.backwards ? latest.begin - advance : latest.begin + advance;
  latest.stateSizes = StateSizes(length.Log2());
  latest.series = std::move(series);
  latest.scaleExponent = scaleExponent;
  latest.order = latest.series->Order();
  latest.bits = bits;
  ++latest.steps;
  scaleExponent = static_cast<long>(std::floor(length.Log2()));
  stepLog2 = length.Log2();
}

std::vector<double> Run::StateSizes(double lengthLog2) const
{
  std::vector<double> sizes;
  const double offset = lengthLog2 - static_cast<double>(scaleExponent);
  for (LineId state = 0; state < latest.states.size(); ++state) {
    double size = control.Sizes()[tape.rightHandSides[state]] + lengthLog2;
    for (int k = 0; k <= series->Order(); ++k)
      size = std::max(size, series->Log2(state, k) + k * offset);
    sizes.push_back(size);
  }
  return sizes;
}

}  // namespace varno::solve
