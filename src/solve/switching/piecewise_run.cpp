#include "solve/switching/piecewise_run.h"

#include <algorithm>
#include <utility>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"
#include "solve/graph/same_node.h"
#include "solve/switching/assignments.h"
#include "solve/switching/first_term.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kGuardBits = 64;
/// So many steps of no length may follow one another, from one boundary to the next in one point.
constexpr int kMostStandstills = 20;

/// The expression that a crossing is of.
const Watched& WatchedOf(const Piece& piece, const RootAt& crossing)
{
  return crossing.isEvent ? piece.events[crossing.index] : piece.watches[crossing.index];
}

std::vector<Integer> Signature(const Mode& mode)
{
  std::vector<Integer> signature;
  for (const auto& [condition, decision] : mode) {
    signature.emplace_back(condition);
    signature.push_back(decision);
  }
  return signature;
}

/// Makes a state exactly 0, if the expression is one.
void SetZero(const Node& expression, SwitchPoint& point)
{
  if (expression.operation != Operation::kState) return;
  mpfr_set_zero(point.states[expression.index], 1);
  point.sizes[expression.index] = -std::numeric_limits<double>::infinity();
}

bool HasAssignments(const std::vector<const Event*>& events)
{
  return std::ranges::any_of(events,
                             [](const Event* event) { return !event->assignments.empty(); });
}

/// The sign of an expression at a point, by at least so many bits.
int SignAt(const Graph& graph, NodeId expression, const SwitchPoint& point, mpfr_prec_t leastBits)
{
  const mpfr_prec_t bits = point.BitsFrom(leastBits) + kGuardBits;
  Real time(bits);
  point.time.Evaluate(time);
  Evaluator evaluator(graph, {expression}, bits);
  evaluator.Evaluate(time, point.states);
  return mpfr_sgn(static_cast<mpfr_srcptr>(evaluator[0]));
}

/// Whether all states have far fewer bits than there is room for: nothing was rounded then.
bool IsExact(const SwitchPoint& point)
{
  return std::ranges::all_of(point.states, [](const Real& state) {
    return static_cast<mpfr_prec_t>(mpfr_min_prec(state)) <= state.Bits() / 2;
  });
}

/// Whether an expression is 0 at the start, as far as rounded start values tell. Throws
/// ZeroInDoubt.
bool IsZeroAt(const Graph& graph, NodeId expression, const SwitchPoint& point,
              const SwitchRule& rule)
{
  const mpfr_prec_t bits = point.BitsFrom(rule.settings.bits) + kGuardBits;
  Real time(bits);
  point.time.Evaluate(time);
  Evaluator evaluator(graph, {expression}, bits);
  evaluator.Evaluate(time, point.states);
  if (evaluator[0].IsZero()) return true;
  if (IsExact(point)) return false;
  evaluator.EvaluateSizes(point.sizes);
  const double part = Log2Size(evaluator[0]) - evaluator.Size(0);
  if (!rule.zero.mayDeclareZero && part < -rule.zero.noiseBits) throw ZeroInDoubt{point.time};
  return part < -rule.zero.zeroBits;
}

}  // namespace

PiecewiseRun::PiecewiseRun(Pieces& pieces, const Model& model, const SwitchRule& rule,
                           const Moment& start, std::vector<Real> states, const Moment& reach,
                           Poll poll)
    : model(model),
      rule(rule),
      wayBegin(start),
      reach(reach),
      poll(std::move(poll)),
      settling(pieces, model.graph, rule),
      accumulation(start, reach, rule.settings),
      latest{.begin = start,
             .end = start,
             .backwards = reach < start,
             .states = std::move(states),
             .stateSizes = {},
             .bits = rule.settings.bits}
{
  for (const Real& state : latest.states) latest.stateSizes.push_back(Log2Size(state));
  BeginAtStart();
}

void PiecewiseRun::BeginAtStart()
{
  const SwitchPoint start = PointAtEnd({});
  try {
    const SettledPiece settled = settling.AtStart(start);
    Begin(settled, start, {});
    const std::vector<RootAt> crossings = EventsAtStart(start);
    if (!crossings.empty()) Begin(settled, start, crossings);
    latest = run->Latest();
    if (!crossings.empty()) Pass(crossings);
  } catch (DomainError& error) {
    NameInModel(error);
    throw;
  } catch (const Singularity&) {
    end = std::current_exception();
  }
}

/// Goes on with a piece from a point. `ahead` are events that are 0 there.
void PiecewiseRun::Begin(SettledPiece settled, const SwitchPoint& point,
                         const std::vector<RootAt>& zeroEvents)
{
  piece = std::move(settled.piece);
  watchList.emplace(*piece);
  if (!zeroEvents.empty()) {
    FirstTerms terms(*piece, rule, point);
    for (const RootAt& crossing : zeroEvents) {
      const LineId line = piece->events[crossing.index].line;
      if (line != kNone) settled.zeroTerms[line] = terms.Of(line, 1).order;
    }
  }
  if (run) earlierSteps += run->Latest().steps;
  run = std::make_unique<Run>(piece->tape, rule.settings, point.time, point.states, reach, poll);
  run->Watch(watchList->Lines(settled.zeroTerms), wayBegin);
  run->WatchUntil(watchList->TimeAhead(point.time, point.backwards));
}

/// The events whose expressions are 0 at the start, with their signs before and behind it.
std::vector<RootAt> PiecewiseRun::EventsAtStart(const SwitchPoint& point) const
{
  std::vector<RootAt> crossings;
  for (const RootAt& crossing : watchList->At(point.time, point.backwards)) {
    if (crossing.isEvent) crossings.push_back(crossing);
  }
  for (std::size_t i = 0; i < piece->events.size(); ++i) {
    const Watched& event = piece->events[i];
    if (event.time || !IsZeroAt(piece->model.graph, event.expression, point, rule)) continue;
    const FirstTerm first = FirstTerms(*piece, rule, point).Of(event.line, 1);
    const int before = first.order % 2 == 1 ? -first.sign : first.sign;
    crossings.push_back({true, i, before, first.sign, first.order});
  }
  return crossings;
}

/// Makes an error name expressions of the whole model, if it does not.
void PiecewiseRun::NameInModel(DomainError& error) const
{
  if (error.isOfModel) return;
  error.node = piece != nullptr ? SameNode(model.graph, piece->tape.graph[error.node]) : 0;
  error.isOfModel = true;
}

/// A step of the present run; what it throws names expressions of the whole model.
void PiecewiseRun::StepOnPiece()
{
  try {
    run->Step();
  } catch (DomainError& error) {
    NameInModel(error);
    throw;
  } catch (Singularity& singularity) {
    singularity.node = SameNode(model.graph, piece->tape.graph[singularity.node]);
    throw;
  }
}

void PiecewiseRun::Step()
{
  if (end != nullptr) std::rethrow_exception(end);
  if (latest.switched && latest.switched->stops) throw StoppedByEvent{latest.end};
  latest.series = nullptr;
  StepOnPiece();
  latest = run->Latest();
  latest.steps += earlierSteps;
  const std::vector<RootAt> crossings = CrossingsAtEnd();
  standstills = latest.begin == latest.end ? standstills + 1 : 0;
  if (crossings.empty()) return;
  try {
    if (standstills > kMostStandstills)
      throw EndAt(crossings.front(), SingularityKind::kStandstill);
    Pass(crossings);
  } catch (DomainError& error) {
    NameInModel(error);
    end = std::make_exception_ptr(error);
  } catch (const Singularity&) {
    // The step is there, and the way ends behind it.
    end = std::current_exception();
  }
}

std::vector<RootAt> PiecewiseRun::CrossingsAtEnd() const
{
  std::vector<RootAt> crossings = watchList->Of(run->RootsAtEnd());
  std::ranges::copy(watchList->At(latest.end, latest.backwards), std::back_inserter(crossings));
  return crossings;
}

/// Rounding blurs a root that may be a double one to half of the digits: whether the expression
/// crosses 0 there is believed of runs with twice the digits only.
void PiecewiseRun::RequireCertain(const std::vector<RootAt>& crossings) const
{
  for (const RootAt& crossing : crossings) {
    const bool isKnown = crossing.signBefore != 0 && crossing.signAfter != 0;
    if (isKnown) RequireAboveNoise(crossing);
    if (isKnown && crossing.mostRoots == 1) continue;
    if (rule.settings.toleranceBits < rule.touchBits) throw ZeroInDoubt{latest.end};
    if (isKnown) continue;
    throw EndAt(crossing, SingularityKind::kUndecided);
  }
}

/// The sign behind a multiple root at the end of a step, which the step does not show, is that of
/// the terms that follow. They tell where rounding blurs no digit of a row.
void PiecewiseRun::CompleteSigns(std::vector<RootAt>& crossings) const
{
  if (rule.settings.toleranceBits < rule.touchBits) return;
  for (RootAt& crossing : crossings) {
    if (crossing.signBefore == 0 || crossing.signAfter != 0) continue;
    try {
      FirstTerms terms(*piece, rule, PointAtEnd({}));
      crossing.signAfter = terms.Of(WatchedOf(*piece, crossing).line, 1).sign;
    } catch (const DomainError&) {
      // It stays open.
    }
  }
}

/// Where an expression cancels to less than what is not known of the states, its sign says nothing.
void PiecewiseRun::RequireAboveNoise(const RootAt& crossing) const
{
  if (crossing.log2Part > -rule.zero.noiseBits || rule.noiseBits == 0) return;
  if (rule.settings.toleranceBits < rule.noiseBits) throw ZeroInDoubt{latest.end};
  throw EndAt(crossing, SingularityKind::kUndecided);
}

/// The end of a way at a root.
Singularity PiecewiseRun::EndAt(const RootAt& root, SingularityKind kind) const
{
  const NodeId expression = WatchedOf(*piece, root).expression;
  return {.time = latest.end,
          .node = SameNode(model.graph, piece->model.graph[expression]),
          .kind = kind,
          .bits = run->Bits()};
}

/// The end of the latest step, where a variable that crosses 0 is exactly 0.
SwitchPoint PiecewiseRun::PointAtEnd(const std::vector<RootAt>& crossings) const
{
  SwitchPoint point{latest.end, latest.states, latest.stateSizes, latest.backwards};
  for (const RootAt& crossing : crossings) {
    if (!crossing.ChangesSign()) continue;
    SetZero(piece->model.graph[WatchedOf(*piece, crossing).expression], point);
  }
  return point;
}

/// Whether an event is meant by a change of sign, which counts as time grows.
bool PiecewiseRun::Counts(const Event& event, int signBefore) const
{
  const bool rises = (signBefore < 0) != latest.backwards;
  if (event.crossing == Crossing::kBoth) return true;
  return rises == (event.crossing == Crossing::kRising);
}

/// The events that fire at a point where the run goes over to another piece, or stays on its own.
std::vector<std::uint32_t> PiecewiseRun::Firing(const std::vector<RootAt>& crossings,
                                                const SettledPiece& behind,
                                                const SwitchPoint& point) const
{
  std::vector<std::uint32_t> firing;
  std::optional<FirstTerms> terms;
  for (std::uint32_t i = 0; i < model.events.size(); ++i) {
    const auto crossing = std::ranges::find_if(
        crossings, [&](const RootAt& each) { return each.isEvent && each.index == i; });
    const Watched& event = behind.piece->events[i];
    int before = 0, after = 0;
    if (crossing != crossings.end()) {
      before = crossing->signBefore;
      after = crossing->signAfter;
      if (behind.piece != piece && !event.time) {
        if (!terms) terms.emplace(*behind.piece, rule, point);
        after = terms->Of(event.line, 1).sign;
      }
    } else if (behind.piece != piece) {
      // Its expression may jump over 0.
      before = SignAt(piece->model.graph, piece->events[i].expression, point, rule.settings.bits);
      after = SignAt(behind.piece->model.graph, event.expression, point, rule.settings.bits);
    }
    if (before * after < 0 && Counts(model.events[i], before)) firing.push_back(i);
  }
  return firing;
}

/// The decisions of a piece that assignments do not touch; those on a boundary at the point depend
/// on where it goes from there.
Mode PiecewiseRun::KnownAfter(const Piece& before, const std::vector<const Event*>& events,
                              const std::vector<RootAt>& roots) const
{
  std::vector<ConditionId> open;
  for (const RootAt& root : roots) {
    if (!root.isEvent) open.push_back(piece->watches[root.index].condition);
  }
  Mode known;
  for (const Watch& watch : before.watches) {
    if (DependsOnAssigned(before.model.graph, watch.expression, events)) continue;
    if (std::ranges::find(open, watch.condition) != open.end()) continue;
    known[watch.condition] = before.mode.at(watch.condition);
  }
  return known;
}

/// Where the present piece ends because conditions touch 0, as h in h' = if(h > 0, -sqrt(h), 0)
/// does when the tank is empty, the piece on which they stay there; the states among them are 0 at
/// the point then.
std::optional<SettledPiece> PiecewiseRun::OntoTouched(const std::vector<RootAt>& crossings,
                                                      SwitchPoint& point)
{
  std::vector<const Watch*> touched;
  SwitchPoint onBoundary = point;
  for (const RootAt& crossing : crossings) {
    if (crossing.isEvent || crossing.ChangesSign()) continue;
    touched.push_back(&piece->watches[crossing.index]);
    SetZero(piece->model.graph[touched.back()->expression], onBoundary);
  }
  if (touched.empty() || run->GoesOn()) return std::nullopt;
  std::optional<SettledPiece> found = settling.Onto(onBoundary, *piece, touched);
  if (found) point = std::move(onBoundary);
  return found;
}

/// Goes over to what lies behind the roots at which the latest step ended.
void PiecewiseRun::Pass(std::vector<RootAt> crossings)
{
  CompleteSigns(crossings);
  RequireCertain(crossings);
  SwitchPoint point = PointAtEnd(crossings);
  std::vector<const Watch*> crossed;
  for (const RootAt& crossing : crossings) {
    if (!crossing.isEvent && crossing.ChangesSign())
      crossed.push_back(&piece->watches[crossing.index]);
  }
  SettledPiece behind{piece, {}};
  std::exception_ptr stuck;
  try {
    if (!crossed.empty()) {
      behind = settling.Beyond(point, *piece, crossed);
    } else if (auto onto = OntoTouched(crossings, point)) {
      behind = *std::move(onto);
    }
  } catch (const Singularity&) {
    // Unless an event ends the way, or leads away.
    stuck = std::current_exception();
  }

  Switch what{.time = latest.end, .events = {}, .signature = {}, .states = {}, .sizes = {}};
  std::vector<const Event*> fired;
  for (const std::uint32_t i : Firing(crossings, behind, point)) {
    const Event& event = model.events[i];
    what.events.push_back({i, point.states, point.sizes});
    what.stops = what.stops || event.stops;
    fired.push_back(&event);
    point = Assigned(model, event, point, rule.settings.disturbed);
  }
  const bool changes = behind.piece != piece || !crossed.empty();
  if (!changes && fired.empty()) {
    run->WatchUntil(watchList->TimeAhead(latest.end, latest.backwards));
    return;
  }
  what.jumps = HasAssignments(fired);
  if (stuck != nullptr && !what.jumps && !what.stops) std::rethrow_exception(stuck);
  what.states = point.states;
  what.sizes = point.sizes;
  latest.states = point.states;
  if (what.jumps && !what.stops)
    behind = settling.At(point, KnownAfter(*behind.piece, fired, crossings));
  what.signature = Signature(behind.piece->mode);
  Record(std::move(what), crossings.front());
  if (latest.switched->stops) return;
  if (!changes && !latest.switched->jumps) {
    run->WatchUntil(watchList->TimeAhead(latest.end, latest.backwards));
    return;
  }
  std::vector<RootAt> zeroEvents;
  for (const RootAt& crossing : crossings) {
    if (!crossing.isEvent) continue;
    const NodeId expression = behind.piece->events[crossing.index].expression;
    const Graph& graph = behind.piece->model.graph;
    // Assignments that leave it at 0 do not fire it again.
    if (!DependsOnAssigned(graph, expression, fired) ||
        SignAt(graph, expression, point, rule.settings.bits) == 0)
      zeroEvents.push_back(crossing);
  }
  Begin(std::move(behind), point, zeroEvents);
}

/// Notes what happened at the end of the latest step, at this crossing among others. Throws
/// Singularity where switches accumulate.
void PiecewiseRun::Record(Switch what, const RootAt& crossing)
{
  const Moment time = what.time;
  latest.switched = std::make_shared<const Switch>(std::move(what));
  const std::optional<Accumulation::Limit> limit = accumulation.Add(time);
  if (!limit) return;
  const NodeId expression = WatchedOf(*piece, crossing).expression;
  throw Singularity{.time = limit->time,
                    .node = SameNode(model.graph, piece->model.graph[expression]),
                    .kind = SingularityKind::kAccumulation,
                    .bits = run->Bits(),
                    .log2Error = limit->log2Error};
}

}  // namespace varno::solve
