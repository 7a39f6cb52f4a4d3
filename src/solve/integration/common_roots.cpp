#include "solve/integration/common_roots.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/integration/domains.h"
#include "solve/integration/line_sizes.h"
#include "solve/tape/below.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// What is less than this much (log2) above the tolerance counts as 0.
constexpr double kZeroMarginBits = 8;
/// A term is compared with the terms around it, up to so many behind: those of higher order may be
/// large for the unit of time.
constexpr int kTermsBehind = 4;
/// A radicand's change with a state is looked at for two shifts, by this much apart (log2): linear
/// changes differ by as much, others by twice that.
constexpr double kShiftsApart = 20;

/// Terms of the lines below a line that may begin at a common root.
class Probe {
 public:
  Probe(const Tape& full, const RunSettings& settings, mpfr_prec_t bits, const SeriesPoint& point,
        const Line& line, std::span<const CommonRoot> known)
      : settings(settings), point(point), tape(OnlyBelow(full, OperandsOf(line)))
  {
    std::vector<CommonRoot> roots;
    for (const CommonRoot& root : known) {
      if (tape.lines[root.line].kind != LineKind::kConstant) roots.push_back(root);
    }
    series = MakeSeriesAtRoot(tape, bits, settings.order, settings.disturbed, roots);
    series->Begin(point.time, point.states, point.backwards, point.scaleExponent);
    series->ExtendTo(settings.order);
    sizes = LineSizes(tape, *series);
  }

  /// The first term from `first` on that is not 0; the order + 1 where there is none. What was left
  /// out clears isExact unless it was 0 to the last bit.
  int FirstTerm(LineId line, int first, bool& isExact) const
  {
    double largest = first == 0 ? sizes[line] : -kInfinity;
    for (int k = first; k <= series->Order(); ++k) {
      double beside = largest;
      for (int j = k; j <= std::min(series->Order(), k + kTermsBehind); ++j)
        beside = std::max(beside, k == 0 ? largest : series->Log2(line, j));
      const double term = series->Log2(line, k);
      if (term > -kInfinity && term >= beside - settings.toleranceBits + kZeroMarginBits) return k;
      if (term > -kInfinity) isExact = false;
      largest = std::max(largest, term);
    }
    return series->Order() + 1;
  }

  bool IsPositive(LineId line, int k) const
  {
    Real term(2);
    series->Term(line, k, term);
    return mpfr_sgn(static_cast<mpfr_srcptr>(term)) > 0;
  }

  /// Whether term 0 of a line does not change with the states, in first order.
  bool IsFlat(LineId line)
  {
    if (!tape.lines[line].dependsOnStates) return true;
    for (LineId state = 0; state < point.states.size(); ++state) {
      if (tape.lines[state].kind == LineKind::kState && !IsFlatAlong(line, state)) return false;
    }
    return true;
  }

  int Order() const { return series->Order(); }

 private:
  static std::vector<LineId> OperandsOf(const Line& line)
  {
    if (line.b == kNone) return {line.a};
    return {line.a, line.b};
  }

  /// log2 of how much term 0 changes when a state moves by 2^shift.
  double Change(LineId line, LineId state, double shift)
  {
    const mpfr_prec_t bits = point.states[state].Bits();
    std::vector<Real> states(point.states.begin(), point.states.end());
    Real before(bits), after(bits), move(2);
    series->Begin(point.time, states, point.backwards, point.scaleExponent);
    series->Term(line, 0, before);
    mpfr_set_si_2exp(move, 1, static_cast<mpfr_exp_t>(shift), MPFR_RNDN);
    mpfr_add(states[state], states[state], move, MPFR_RNDN);
    series->Begin(point.time, states, point.backwards, point.scaleExponent);
    series->Term(line, 0, after);
    mpfr_sub(after, after, before, MPFR_RNDN);
    return Log2Size(after);
  }

  bool IsFlatAlong(LineId line, LineId state)
  {
    const double size = std::max(series->Log2(state, 0), series->Log2(state, 1));
    const double shift = std::floor((std::isfinite(size) ? size : 0) -
                                    static_cast<double>(point.states[state].Bits()) / 4);
    const double large = Change(line, state, shift);
    if (large == -kInfinity) return true;
    return large - Change(line, state, shift - kShiftsApart) > 1.5 * kShiftsApart;
  }

  const RunSettings& settings;
  const SeriesPoint& point;
  Tape tape;
  std::unique_ptr<Series> series;
  std::vector<double> sizes;
};

/// The order of the common root of a line at a point where its divisor or radicand is 0; none where
/// it cannot go on from there.
std::optional<int> RootOrder(const Line& line, Probe& probe, bool& isExact)
{
  const LineId domain = DomainOf(line);
  const int first = probe.FirstTerm(domain, 0, isExact);
  if (first > probe.Order()) return std::nullopt;
  switch (line.kind) {
    case LineKind::kQuotient:
      if (probe.FirstTerm(line.a, 0, isExact) < first) return std::nullopt;
      return first;
    case LineKind::kIntegralOfQuotient:
      // The terms of a' begin with term 1 of a.
      if (probe.FirstTerm(line.a, 1, isExact) < first + 1) return std::nullopt;
      return first;
    case LineKind::kSquareRoot:
      if (first % 2 != 0 || !probe.IsPositive(domain, first) || !probe.IsFlat(domain))
        return std::nullopt;
      return first / 2;
    default:
      return std::nullopt;
  }
}

/// Whether a line is made of itself, through derivatives.
bool FeedsItself(const Tape& tape, LineId id)
{
  return LinesBelow(tape, Operands(tape, id))[id];
}

/// The roots at the start of a tape where all lines that begin at one are quotients that feed
/// themselves by way of states; none where others are among them, or other ways.
std::optional<Continuation> FedQuotients(const Tape& tape, const std::vector<LineId>& users)
{
  Continuation continuation{{}, true};
  for (const LineId id : users) {
    if (tape.lines[id].kind != LineKind::kQuotient || !FeedsItself(tape, id)) return std::nullopt;
    const std::vector<LineId> atOnce = LinesAtOnce(tape, Operands(tape, id));
    for (const LineId other : users) {
      if (std::ranges::find(atOnce, other) != atOnce.end()) return std::nullopt;
    }
    continuation.roots.push_back({id, 1, true});
  }
  return continuation;
}

}  // namespace

std::optional<Continuation> FindContinuation(const Tape& tape, const RunSettings& settings,
                                             mpfr_prec_t bits, const SeriesPoint& point,
                                             const std::vector<LineId>& zeroLines)
{
  std::vector<LineId> users;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineId domain = DomainOf(tape.lines[id]);
    if (domain != kNone && std::ranges::find(zeroLines, domain) != zeroLines.end())
      users.push_back(id);
  }
  if (std::ranges::any_of(users, [&](LineId id) { return FeedsItself(tape, id); }))
    return FedQuotients(tape, users);
  Continuation continuation{{}, true};
  for (const LineId id : users) {
    const Line& line = tape.lines[id];
    try {
      Probe probe(tape, settings, bits, point, line, continuation.roots);
      const std::optional<int> order = RootOrder(line, probe, continuation.isExact);
      if (!order) return std::nullopt;
      if (*order > 0) continuation.roots.push_back({id, *order});
    } catch (const DomainError&) {
      return std::nullopt;
    }
  }
  return continuation;
}

}  // namespace varno::solve
