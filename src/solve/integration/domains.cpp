#include "solve/integration/domains.h"

#include <algorithm>
#include <utility>

#include "solve/evaluation/size.h"
#include "solve/roots/refinement.h"

namespace varno::solve {

namespace {

/// The line that must not pass 0 within the step lest a function jump: the argument of acot, at 0;
/// for the angle of (x, y) the larger one of both, and y to the left of the origin, where the cut
/// is.
LineId LineOfCut(const Series& series, const Line& line)
{
  if (line.kind == LineKind::kIntegralOfQuotient && line.function == Operation::kAcot)
    return line.a;
  if (line.kind != LineKind::kAngle) return kNone;
  Real x(2);
  series.Term(line.b, 0, x);
  const bool isRight = mpfr_sgn(static_cast<mpfr_srcptr>(x)) > 0;
  return isRight && series.Log2(line.b, 0) >= series.Log2(line.a, 0) ? line.b : line.a;
}

/// How many first terms of a domain line are 0 because the step begins at a root of it.
int VanishingTerms(const Tape& tape, const Series& series, const std::vector<LineId>& users)
{
  int most = 0;
  for (const LineId user : users) {
    const int order = series.CommonRootOrder(user);
    most = std::max(most, tape.lines[user].kind == LineKind::kSquareRoot ? 2 * order : order);
  }
  return most;
}

/// Whether a line, or its derivative, may be 0 at a place that is known up to an error.
bool MayVanish(UncertainPolynomial polynomial, bool derivative, const UncertainValue& place)
{
  if (derivative) polynomial = Derivative(polynomial);
  UncertainValue value = Evaluate(polynomial, place.value);
  const UncertainValue slope = Evaluate(Derivative(polynomial), place.value);
  Real shift(kErrorBits);
  mpfr_abs(shift, slope.value, MPFR_RNDU);
  mpfr_add(shift, shift, slope.error, MPFR_RNDU);
  mpfr_mul(shift, shift, place.error, MPFR_RNDU);
  mpfr_add(value.error, value.error, shift, MPFR_RNDU);
  return value.Sign() == 0;
}

}  // namespace

LineId DomainOf(const Line& line)
{
  switch (line.kind) {
    case LineKind::kQuotient:
    case LineKind::kIntegralOfQuotient:
      return line.b;
    case LineKind::kSquareRoot:
    case LineKind::kPower:
      return line.a;
    case LineKind::kAngle:
      return line.c;
    default:
      return kNone;
  }
}

Domains::Domains(const Tape& tape) : tape(tape), users(tape.lines.size())
{
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineId domain = DomainOf(tape.lines[id]);
    if (domain == kNone) continue;
    users[domain].push_back(id);
    lines.push_back(domain);
  }
  std::ranges::sort(lines);
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
}

/// Adds the first root of a line within a step, if there is one.
void Domains::AddRoot(const Step& step, LineId line, std::vector<Root>& roots) const
{
  const int first = VanishingTerms(tape, step.series, users[line]);
  if (FirstTermOutweighs(step.series, line, first, Log2Size(step.length))) return;
  const UncertainPolynomial polynomial = OverStep(tape, step, line, first);
  std::vector<RootInterval> found = IsolateRoots(polynomial);
  if (found.empty()) return;
  UncertainValue place = RefineRoot(polynomial, found.front());
  roots.push_back({line, std::move(found.front()), std::move(place)});
}

/// Whether all that needs the line to be different from 0 may go on behind its root.
bool Domains::MayGoOn(const Step& step, const Root& root) const
{
  return std::ranges::all_of(users[root.line], [&](LineId id) {
    const Line& line = tape.lines[id];
    switch (line.kind) {
      case LineKind::kQuotient:
      case LineKind::kIntegralOfQuotient:
        return MayVanish(OverStep(tape, step, line.a, 0),
                         line.kind == LineKind::kIntegralOfQuotient, root.place);
      case LineKind::kSquareRoot:
        return root.interval.signBefore > 0 && root.interval.signAfter >= 0;
      default:
        return false;
    }
  });
}

std::optional<RootAhead> Domains::FirstRoot(const Step& step) const
{
  std::vector<Root> roots;
  for (const LineId line : lines) {
    const bool counts =
        std::ranges::any_of(users[line], [&](LineId user) { return !step.LeavesOut(user); });
    if (counts) AddRoot(step, line, roots);
  }
  const std::size_t atDomains = roots.size();
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineId cut = step.LeavesOut(id) ? kNone : LineOfCut(step.series, tape.lines[id]);
    if (cut != kNone) AddRoot(step, cut, roots);
  }
  if (roots.empty()) return std::nullopt;
  const auto first = std::ranges::min_element(roots, [](const Root& a, const Root& b) {
    return mpfr_cmp(a.place.value, b.place.value) < 0;
  });
  RootAhead ahead{{}, first->place.value, first->place.error, true};
  Real distance(kErrorBits), error(kErrorBits);
  for (std::size_t i = 0; i < roots.size(); ++i) {
    mpfr_sub(distance, roots[i].place.value, first->place.value, MPFR_RNDD);
    mpfr_add(error, roots[i].place.error, first->place.error, MPFR_RNDU);
    if (mpfr_cmp(distance, error) > 0) continue;
    ahead.lines.push_back(roots[i].line);
    ahead.mayGoOn = ahead.mayGoOn && i < atDomains && MayGoOn(step, roots[i]);
  }
  mpfr_mul(ahead.place, ahead.place, step.length, MPFR_RNDN);
  mpfr_mul(ahead.error, ahead.error, step.length, MPFR_RNDU);
  return ahead;
}

}  // namespace varno::solve
