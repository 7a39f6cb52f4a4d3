#include "solve/verification/verified_rows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/disturbance.h"
#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/integration/step_series.h"
#include "solve/switching/steady_run.h"

namespace varno::solve {

namespace {

/// Decimals beyond the digits asked for: in the first attempt, and of the second run beyond the
/// first.
constexpr double kFirstSpareDecimals = 7;
constexpr double kSecondRunDecimals = 3;
/// What the extrapolated loss is multiplied with.
constexpr double kLossMargin = 1.25;
/// What is lost is extrapolated to so many times the way so far: what an unstable rest costs ends
/// where it is left. So many attempts may try that, then what is lost evenly counts to the end.
constexpr double kTimesAhead = 8;
constexpr int kCautiousAttempts = 2;
/// An attempt is given up before it fails if its last row will lack so many decimals.
constexpr double kDoomedDecimals = 3;
/// How far beyond what constants or the last row say a run must come to call an end one, and what
/// they may say: as much as a double holds. To come so near takes some seconds.
constexpr double kDecimalsBeyondConstants = 3;
constexpr double kMostDecimalsOfConstants = 320;
/// The same where steps do not reach an end, and at the second sight of it.
constexpr double kApproachDecimals = 2;
constexpr double kSecondApproachDecimals = 0.25;
/// How much nearer than a row, and how near at most: the number of steps grows like the distance
/// shrinks.
constexpr double kApproachDecimalsBeyondRow = 0.5;
constexpr double kMostApproachDecimals = 5;
/// Printed rows are remembered with this many bits more than their digits have.
constexpr mpfr_prec_t kRememberedGuardBits = 16;
/// Times are exact, and looked at with somewhat more bits than numbers.
constexpr mpfr_prec_t kTimeGuardBits = 64;

/// An end as two attempts tell it: of a kind only if both say so.
Singularity Agreed(Singularity end, const std::optional<Singularity>& before)
{
  const bool same = before && before->kind == end.kind && before->order == end.order;
  if (before && !same) end.kind = SingularityKind::kUnknown;
  return end;
}

/// The least power of ten that is not below what counts as 0.
long UnitOfTiny(double tinyLog2)
{
  constexpr double kRounding = 1e-6;
  return static_cast<long>(std::ceil(tinyLog2 / kLog2Of10 - kRounding));
}

}  // namespace

VerifiedRows::VerifiedRows(const Model& model, const Dynamics& dynamics, const Interval& interval,
                           RowSchedule schedule, RowsWanted wanted, StepWatch watch, Poll poll)
    : model(model),
      dynamics(dynamics),
      interval(interval),
      fullSchedule(std::move(schedule)),
      wanted(std::move(wanted)),
      watch(std::move(watch)),
      poll(std::move(poll)),
      spareDecimals(kFirstSpareDecimals)
{}

std::vector<RunSettings> VerifiedRows::Settings() const
{
  // At least as many as a run takes in any case: with few digits both runs would be the same one.
  const double decimals = std::max(wanted.digits + spareDecimals, kLeastDecimals);
  std::vector<RunSettings> settings{SettingsFor(decimals, PlaceDecimals())};
  if (wanted.check) settings.push_back(SettingsFor(decimals + kSecondRunDecimals, PlaceDecimals()));
  settings.front().disturbed = wanted.check;
  for (RunSettings& run : settings) {
    run.mayDeclareZero = MayDeclareZero();
    if (MayDeclareZero()) run.onTimeBits = (wanted.digits + kZeroGuardDigits) * kLog2Of10;
    run.landingBits = (wanted.digits + kNoiseDecimals) * kLog2Of10;
    run.approachBits = ApproachDecimals() * kLog2Of10;
    run.mostBits = wanted.maxBits;
    run.tinyLog2 = wanted.tinyLog2;
  }
  return settings;
}

/// How near to a singularity the runs go: half the digits still agree there, as CompareStates asks.
double VerifiedRows::PlaceDecimals() const
{
  return wanted.digits / 2.0 + spareDecimals - 2;
}

/// How near to an end that steps do not reach they must come for it to be believed: nearer than the
/// constants of the equations say that things can be narrow; nearer still at the second sight.
double VerifiedRows::ApproachDecimals() const
{
  const double decimals = DecimalsOfConstants() + kApproachDecimals;
  return std::max(decimals + (endSeen ? kSecondApproachDecimals : 0), approachDecimalsOfRow);
}

std::vector<Real> VerifiedRows::StartStates(const RunSettings& runSettings) const
{
  std::vector<Real> states;
  for (const State& state : model.states) {
    states.push_back(EvaluateConstant(model.graph, state.start, runSettings.bits));
    if (runSettings.disturbed && !IsExact(model.graph, state.start, runSettings.bits)) {
      Disturb(states.back(), DisturbanceKey(model.graph, state.start));
    }
  }
  return states;
}

void VerifiedRows::Begin()
{
  MakeStepper makeRun = dynamics.Runs(wanted.digits);
  if (wanted.log2Steady) makeRun = StoppingAtRest(std::move(makeRun), interval, *wanted.log2Steady);
  Path::Problem problem{.makeRun = std::move(makeRun),
                        .interval = interval,
                        .settings = Settings(),
                        .startStates = {},
                        .watch = watch,
                        .poll = poll,
                        .compare = [this](const Moment& time, const DenseStep& a,
                                          const DenseStep& b) { CompareStates(time, a, b); },
                        .threads = wanted.threads};
  if (problem.settings.back().bits > wanted.maxBits) throw PrecisionExhausted{interval.start};
  for (const RunSettings& settings : problem.settings)
    problem.startStates.push_back(StartStates(settings));
  schedule = fullSchedule;
  std::vector<Moment> rowTimes;
  for (const GivenRow& row : given) {
    if (!row.event) rowTimes.push_back(row.time);
  }
  schedule->Replay(rowTimes.size(), [&](std::size_t row) { return rowTimes[row]; });
  attempt = std::make_unique<Attempt>(model, wanted.columns, wanted.digits, std::move(problem),
                                      schedule->Early());
  rowsDone = 0;
  ready.clear();
  latestTime.reset();
  timeAsked.reset();
  latestReturns.clear();
  hasStopped = isSteady = false;
  loss = Loss();
  lostBackwards = latestDistance = 0;
}

std::optional<VerifiedRow> VerifiedRows::Next()
{
  if (!hasBegun) quick = SolveQuickly(model, dynamics, interval, fullSchedule, wanted, poll);
  hasBegun = true;
  if (!quick) return NextByRuns();
  if (quickRowsGiven == quick->rows.size()) return std::nullopt;
  return quick->rows[quickRowsGiven++];
}

std::optional<VerifiedRow> VerifiedRows::NextByRuns()
{
  for (;;) {
    try {
      if (attempt == nullptr) Begin();
      std::optional<VerifiedRow> row = TryRow();
      if (row || endReason == nullptr) return row;
    } catch (const Failure& failure) {
      EndOrEscalate(failure);
    } catch (const Disagreement& disagreement) {
      Escalate({disagreement.time, 0, false});
    } catch (const ZeroInDoubt& doubt) {
      Escalate({doubt.time, wanted.digits + spareDecimals, true});
    } catch (const Singularity& singularity) {
      EndOrBeginAgain(singularity);
    } catch (const DomainError&) {
      if (attempt == nullptr) throw;
      if (IsConfirmedEnd(attempt->Integration().Best().End(), std::nullopt))
        EndWith(std::current_exception());
    }
    if (endReason && ready.empty()) std::rethrow_exception(endReason);
  }
}

void VerifiedRows::Forget()
{
  given.clear();
  attempt.reset();
}

/// The rows end here, but for the events on the way from the last row.
void VerifiedRows::EndWith(std::exception_ptr reason)
{
  endReason = std::move(reason);
  try {
    AddEvents(attempt->Integration().Best().End());
  } catch (const Failure&) {
    // Those that follow cannot be verified.
  } catch (const Disagreement&) {
  } catch (const ZeroInDoubt&) {
  }
}

/// The next row or event that was not given yet; what was given is only compared.
std::optional<VerifiedRow> VerifiedRows::TryRow()
{
  for (;;) {
    while (ready.empty()) {
      if (!Fill()) return std::nullopt;
    }
    VerifiedRow row = std::move(ready.front());
    ready.pop_front();
    if (rowsDone++ >= given.size()) {
      given.push_back(Remembered(row));
      return row;
    }
    if (Contradicts(given[rowsDone - 1], row)) throw WrongRow{given[rowsDone - 1].time};
  }
}

/// Adds the next row and what happens before it; false behind the last one.
bool VerifiedRows::Fill()
{
  if (hasStopped || endReason) return false;
  try {
    const std::optional<Moment> time = schedule->Next(attempt->Integration());
    if (!time) return false;
    timeAsked = time;
    const auto runs = attempt->RowAt(*time);
    AddEvents(*time);
    ready.push_back(Judge(*time, runs));
    latestTime = time;
    if (*time == interval.to && !interval.IsEarly(*time)) AddLossAtEnd(*time);
  } catch (const StoppedByEvent& stop) {
    FillToStop(stop.time);
  }
  return true;
}

/// Adds what happens up to the event that ends the way, and the row there.
void VerifiedRows::FillToStop(const Moment& time)
{
  hasStopped = true;
  Path& path = attempt->Integration();
  std::optional<std::vector<std::vector<SizedNumber>>> runs;
  while (const auto switches = path.TakeSwitch(time)) {
    AddEventsOf(*switches);
    if (!switches->back()->stops) continue;
    runs = attempt->RowBehind(*switches);
    isSteady = switches->back()->isRest;
  }
  if (runs && latestTime != time) ready.push_back(Judge(time, *runs));
}

/// Adds the events up to a time that was reached.
void VerifiedRows::AddEvents(const Moment& time)
{
  while (const auto switches = attempt->Integration().TakeSwitch(time)) AddEventsOf(*switches);
}

void VerifiedRows::AddEventsOf(const Lockstep::Switches& switches)
{
  CompareSwitches(switches);
  for (std::size_t i = 0; i < switches.back()->events.size(); ++i)
    ready.push_back(JudgeEvent(switches, i));
}

/// log2 of how far a time lies from the start.
double VerifiedRows::WayLog2(const Moment& time) const
{
  return Log2Size(time - interval.start);
}

/// Runs must pass the same switches, at the same times to half the digits: or one of them has lost
/// its way.
void VerifiedRows::CompareSwitches(const Lockstep::Switches& switches)
{
  const Switch& best = *switches.back();
  const auto numberOf = [](const EventFired& fired) { return fired.event; };
  for (const auto& other : switches) {
    const bool isSame = other->signature == best.signature &&
                        std::ranges::equal(other->events, best.events, {}, numberOf, numberOf);
    if (!isSame) throw Disagreement{best.time};
    const double apart = Log2Size(other->time - best.time);
    const double common = (WayLog2(best.time) - apart) / kLog2Of10;
    if (common < wanted.digits / 2.0) throw Failure{best.time, common, false};
  }
}

/// The time of what happened, and if it is a return the time since the one before.
std::vector<SizedNumber> VerifiedRows::TimeNumbers(const Lockstep::Switches& switches,
                                                   std::size_t run) const
{
  const Moment& time = switches[run]->time;
  Real value(attempt->Integration().Best().Bits() + kTimeGuardBits);
  time.Evaluate(value);
  const bool isCommon = time == switches.back()->time && time == switches.front()->time;
  const double size = isCommon ? Log2Size(value) : std::max(Log2Size(value), WayLog2(time));
  std::vector<SizedNumber> numbers{SizedNumber{value, size}};
  if (latestReturns.empty()) return numbers;
  (time - latestReturns[run]).Evaluate(value);
  numbers.push_back({std::move(value), size});
  return numbers;
}

/// The row of an event, with its time as its first number: it must have all digits, too.
VerifiedRow VerifiedRows::JudgeEvent(const Lockstep::Switches& switches, std::size_t index)
{
  const std::uint32_t event = switches.back()->events[index].event;
  const bool isReturn = event == wanted.periodEvent;
  auto runs = attempt->RowAtEvent(switches, index);
  std::ptrdiff_t times = 1;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    std::vector<SizedNumber> numbers = TimeNumbers(switches, i);
    if (!isReturn) numbers.resize(1);
    times = static_cast<std::ptrdiff_t>(numbers.size());
    runs[i].insert(runs[i].begin(), numbers.begin(), numbers.end());
  }
  VerifiedRow row = Judge(switches.back()->time, runs);
  if (row.numbers.front().zeroUnit) row.time = Moment();
  row.numbers.erase(row.numbers.begin(), row.numbers.begin() + times);
  row.event = event;
  if (isReturn) {
    latestReturns.clear();
    for (const auto& each : switches) latestReturns.push_back(each->time);
  }
  return row;
}

std::int64_t VerifiedRows::RowsGiven() const
{
  if (quick) return static_cast<std::int64_t>(quickRowsGiven);
  return std::ranges::count_if(given, [](const GivenRow& row) { return !row.event; });
}

bool VerifiedRows::MayDeclareZero() const
{
  return !wanted.check || spareDecimals >= kZeroGuardDigits;
}

/// The row, when the runs agree on it. Throws Failure.
VerifiedRow VerifiedRows::Judge(const Moment& time,
                                const std::vector<std::vector<SizedNumber>>& runs) const
{
  const AgreementRule rule{.digits = wanted.digits,
                           .mayDeclareZero = MayDeclareZero(),
                           .clearDecimals = wanted.check ? spareDecimals - kNoiseDecimals
                                                         : std::numeric_limits<double>::infinity(),
                           .tinyLog2 = wanted.tinyLog2};
  const std::vector<SizedNumber>&first = runs.front(), &best = runs.back();
  VerifiedRow row{time, {}};
  row.numbers.reserve(best.size());
  std::optional<Failure> failure;
  for (std::size_t i = 0; i < best.size(); ++i) {
    const Agreement agreement = Compare(first[i], best[i], rule);
    RowNumber& number = row.numbers.emplace_back();
    number.value = best[i].value;
    number.isAtJump = best[i].isAtJump;
    if (agreement.verdict == Verdict::kAgree) continue;
    if (agreement.verdict == Verdict::kZero) {
      number.zeroUnit = ZeroUnit(std::max(first[i].size, best[i].size), wanted.digits);
      continue;
    }
    if (agreement.verdict == Verdict::kTiny) {
      number.zeroUnit = UnitOfTiny(wanted.tinyLog2);
      continue;
    }
    const bool blurred = agreement.verdict == Verdict::kBlurred;
    if (!failure) failure = Failure{time, agreement.commonDecimals, blurred};
    failure->decimalsNeeded =
        std::max(failure->decimalsNeeded, best[i].bitsForDoubt / kLog2Of10 + kNoiseDecimals);
    failure->commonDecimals = std::min(failure->commonDecimals, agreement.commonDecimals);
    failure->blurred |= blurred;
  }
  if (failure) throw *failure;
  return row;
}

/// How many decimals of all states are the same in both runs.
double VerifiedRows::CommonDecimals(const std::vector<Real>& first, const std::vector<Real>& best,
                                    const std::vector<double>& sizes) const
{
  Real difference(64);
  double common = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < first.size(); ++i) {
    mpfr_sub(difference, first[i], best[i], MPFR_RNDN);
    if (difference.IsZero()) continue;
    const double size = std::max({sizes[i], Log2Size(best[i]), wanted.tinyLog2});
    common = std::min(common, (size - Log2Size(difference)) / kLog2Of10);
  }
  return common;
}

/// At the ends of steps half the digits must agree: a run that has lost its way and came back to an
/// attractor would agree with the other one again at the rows.
void VerifiedRows::CompareStates(const Moment& time, const DenseStep& a, const DenseStep& best)
{
  const double common = CommonDecimals(a.StatesAt(time), best.states, best.StateSizes());
  AddLoss(time, common);
  if (common < wanted.digits / 2.0) throw Failure{time, common, false};
}

/// Behind the last end of a step that was compared; the row is right, whatever was lost.
void VerifiedRows::AddLossAtEnd(const Moment& time)
{
  const std::vector<SizedStates> states = attempt->Integration().StatesAt(time);
  const double distance = Distance(time);
  if (states.size() < 2 || distance < latestDistance) return;
  loss.Add(distance, DecimalsApart(CommonDecimals(states.front().values, states.back().values,
                                                  states.back().sizes)));
}

std::optional<CheckedRow> VerifiedRows::RowBetween(const Moment& time,
                                                   const std::vector<SizedStates>& states)
{
  if (attempt == nullptr || states.size() != attempt->RunCount()) return std::nullopt;
  const auto runs = attempt->RowOf(time, states);
  try {
    return CheckedRow{Judge(time, runs), wanted.check};
  } catch (const Failure&) {
    CheckedRow unsure{{time, {}}, false};
    for (const SizedNumber& number : runs.back())
      unsure.row.numbers.push_back({number.value, std::nullopt});
    return unsure;
  }
}

double VerifiedRows::Distance(const Moment& time) const
{
  return std::abs((time - interval.start).ToDouble());
}

/// Of the end of the interval that is farther from the start.
double VerifiedRows::WholeDistance() const
{
  return std::max(Distance(interval.to), Distance(interval.from));
}

void VerifiedRows::AddLoss(const Moment& time, double commonDecimals)
{
  const double distance = Distance(time);
  if (distance < latestDistance) {
    lostBackwards = loss.SoFar();
    loss = Loss();
  }
  latestDistance = distance;
  loss.Add(distance, DecimalsApart(commonDecimals));
  if (IsDoomed(distance, commonDecimals)) throw Failure{time, commonDecimals, false};
}

/// By which power of 10 the runs are apart. What agrees beyond the tolerance of the first run does
/// so by chance.
double VerifiedRows::DecimalsApart(double commonDecimals) const
{
  return -std::min(commonDecimals, wanted.digits + spareDecimals);
}

/// Whether the last row will not agree, for all that can be said: half of the digits to spare are
/// lost, and to go on would be a waste.
bool VerifiedRows::IsDoomed(double distance, double commonDecimals) const
{
  if (loss.SoFar() < spareDecimals / 2 || !loss.IsSteady()) return false;
  const double whole = WholeDistance();
  if (kTimesAhead * distance < whole) return false;
  return commonDecimals - loss.Ahead(whole) < wanted.digits - kDoomedDecimals;
}

/// How many decimals the constants of the equations span: a peak as in 1/(1 + 1e60*(t - 1)^2) shows
/// only from as near as they say, and looks like a pole from afar.
double VerifiedRows::DecimalsOfConstants() const
{
  return std::min(dynamics.DecimalsOfConstants(), kMostDecimalsOfConstants);
}

/// How many decimals the time of the last row has, where it cannot be told from an end: it may lie
/// right before it, as 1 - 1e-40 before a pole at 1.
double VerifiedRows::DecimalsOfLastRow(const Moment& end) const
{
  if (!interval.to.IsRational()) return 0;
  const double way = std::abs((end - interval.start).ToDouble());
  const double apart = std::abs((interval.to - end).ToDouble());
  if (std::log10(apart) > std::log10(way) - PlaceDecimals() + 2) return 0;
  const Rational& last = interval.to.RationalPart();
  const std::size_t decimals =
      std::max(mpz_sizeinbase(last.get_num_mpz_t(), 10), mpz_sizeinbase(last.get_den_mpz_t(), 10));
  return std::min(static_cast<double>(decimals), kMostDecimalsOfConstants);
}

/// Whether an end of the way is to be believed. If not, everything begins again, to come nearer.
bool VerifiedRows::IsConfirmedEnd(const Moment& time, const std::optional<Singularity>& singularity)
{
  const Moment way = time - interval.start;
  if (!wanted.check || way.Sign() == 0) return true;
  const double log10Way = std::log10(std::abs(way.ToDouble()));
  const double log10Error =
      singularity ? singularity->log2Error / kLog2Of10 : -std::numeric_limits<double>::infinity();
  const bool isForRow = singularity && MustComeNearer(*singularity, log10Way);
  const EndSeen seen{time, std::max(log10Way - PlaceDecimals() + 2, log10Error), singularity};
  // The steps shrink like the distance, of which they are some tenth.
  const double apart = endSeen ? std::log10(std::abs((time - endSeen->time).ToDouble())) : 0;
  const double nearEnough =
      std::max(DecimalsOfConstants(), DecimalsOfLastRow(time)) + kDecimalsBeyondConstants;
  const bool isSame = endSeen && apart < endSeen->log10Error;
  if (isSame && !isForRow && PlaceDecimals() >= nearEnough) return true;
  endSeen = seen;
  const double half = wanted.digits / 2.0;
  BeginAgain(std::max({2 * spareDecimals, half + kFirstSpareDecimals, nearEnough + 3 - half}),
             time);
  return false;
}

/// Whether an end that steps do not reach was told from too far away for a row that lies before it.
/// The next attempt comes nearer then.
bool VerifiedRows::MustComeNearer(const Singularity& end, double log10Way)
{
  const bool isEstimate = std::isfinite(end.log2Error);
  if (!isEstimate || !timeAsked || Distance(*timeAsked) >= Distance(end.time)) return false;
  const double apart = Log2Size(end.time - *timeAsked);
  if (apart < end.log2Error) return false;
  const double decimals = log10Way - apart / kLog2Of10 + kApproachDecimalsBeyondRow;
  if (decimals <= ApproachDecimals() || ApproachDecimals() >= kMostApproachDecimals) return false;
  approachDecimalsOfRow = std::min(decimals, kMostApproachDecimals);
  return true;
}

void VerifiedRows::EndOrBeginAgain(const Singularity& singularity)
{
  const std::optional<EndSeen> before = endSeen;
  if (!IsConfirmedEnd(singularity.time, singularity)) return;
  EndWith(
      std::make_exception_ptr(Agreed(singularity, before ? before->singularity : std::nullopt)));
}

/// The ends of steps come as near to a singularity as digits can tell: when rows there fail once
/// more, what matters is whether there is one.
void VerifiedRows::EndOrEscalate(const Failure& failure)
{
  if (schedule->IsOfSteps() && restarts > 0) {
    try {
      attempt->Integration().ReachEnd();
    } catch (const Singularity& singularity) {
      EndOrBeginAgain(singularity);
      return;
    } catch (const Failure&) {
    } catch (const Disagreement&) {
    } catch (const ZeroInDoubt&) {
    } catch (const DomainError&) {
    } catch (const StoppedByEvent&) {
    } catch (const PrecisionExhausted&) {
    }
  }
  Escalate(failure);
}

/// Begins again with more decimals: twice as many to spare, or what the loss so far will come to.
void VerifiedRows::Escalate(const Failure& failure)
{
  const double decimals = wanted.digits + spareDecimals;
  const double lost = std::clamp(decimals - failure.commonDecimals, 0.0, decimals);
  const double whole = WholeDistance();
  const double far =
      restarts < kCautiousAttempts ? std::min(whole, kTimesAhead * Distance(failure.time)) : whole;
  double spare = kLossMargin * (lost + loss.Ahead(far)) + kFirstSpareDecimals;
  if (failure.blurred) spare += kZeroGuardDigits;
  spare = std::max(spare, failure.decimalsNeeded - wanted.digits + 1);
  BeginAgain(std::max(2 * spareDecimals, spare), failure.time);
}

void VerifiedRows::BeginAgain(double spare, Moment time)
{
  spareDecimals = spare;
  ++restarts;
  givenUp = BestRun();
  attempt.reset();
  if (Settings().back().bits > wanted.maxBits) throw PrecisionExhausted{std::move(time)};
}

RunStatistics VerifiedRows::BestRun() const
{
  if (quick) return quick->best;
  if (attempt == nullptr) return givenUp;
  const Path& path = attempt->Integration();
  return {path.Steps(), path.Best().Order(), path.Best().Bits()};
}

std::optional<Moment> VerifiedRows::LastGiven() const
{
  if (quickRowsGiven > 0) return quick->rows[quickRowsGiven - 1].time;
  return given.empty() ? std::nullopt : std::optional(given.back().time);
}

VerifiedRows::GivenRow VerifiedRows::Remembered(const VerifiedRow& row) const
{
  const auto bits = static_cast<mpfr_prec_t>(wanted.digits * kLog2Of10) + kRememberedGuardBits;
  GivenRow remembered{row.time, {}, row.event};
  remembered.numbers.reserve(row.numbers.size());
  for (const RowNumber& number : row.numbers) {
    RowNumber& kept = remembered.numbers.emplace_back();
    kept.zeroUnit = number.zeroUnit;
    kept.isAtJump = number.isAtJump;
    if (number.value) mpfr_set(kept.value.emplace(bits), *number.value, MPFR_RNDN);
  }
  return remembered;
}

/// Whether a better attempt shows that something was given that is wrong: another event, its time,
/// or a number.
bool VerifiedRows::Contradicts(const GivenRow& before, const VerifiedRow& row) const
{
  if (before.event != row.event) return true;
  if (row.event) {
    const double unit = std::floor(Log2Size(row.time) / kLog2Of10 - 1e-9) + 1 - wanted.digits;
    if (Log2Size(before.time - row.time) / kLog2Of10 > unit + std::log10(0.5)) return true;
  }
  for (std::size_t i = 0; i < row.numbers.size(); ++i) {
    if (varno::solve::Contradicts(before.numbers[i], row.numbers[i], wanted.digits)) return true;
  }
  return false;
}

}  // namespace varno::solve
