#include "solve/switching/first_term.h"

#include <cmath>
#include <limits>
#include <memory>

#include "solve/evaluation/size.h"
#include "solve/integration/step_series.h"

namespace varno::solve {

namespace {

/// So many series are moved, each by other amounts.
constexpr std::size_t kMovedSeries = 2;
/// These have so many more bits: what rounding alone makes of a term is then another one in them.
constexpr mpfr_prec_t kMoreBits = 64;
/// A term stands out that moves by less than this part of it.
constexpr double kLog2OfPart = 3;

/// Moves a state by about its unknown part, up or down, by amounts that differ from state to state.
void Move(Real& state, double sizeLog2, double noiseBits, std::size_t key)
{
  const double size = std::max(sizeLog2, Log2Size(state)) - noiseBits;
  if (!std::isfinite(size)) return;
  // Between 1/2 and 1, or as much downwards.
  const double part = 0.5 + 0.5 * std::fmod(0.6180339887498949 * static_cast<double>(key + 1), 1);
  Real shift(64);
  mpfr_set_d(shift, key % 3 == 1 ? -part : part, MPFR_RNDN);
  mpfr_mul_2si(shift, shift, static_cast<long>(std::ceil(size)), MPFR_RNDN);
  mpfr_add(state, state, shift, MPFR_RNDN);
}

}  // namespace

FirstTerms::FirstTerms(const Piece& piece, const SwitchRule& rule, const SwitchPoint& point)
    : rule(rule), time(point.time)
{
  const mpfr_prec_t bits = point.BitsFrom(rule.settings.bits);
  Real start(bits + 64);
  time.Evaluate(start);
  const auto begin = [&](const std::vector<Real>& states, mpfr_prec_t precision) {
    auto series = MakeSeries(piece.tape, precision, rule.settings.order);
    series->Begin(start, states, point.backwards, 0);
    return series;
  };
  exact = begin(point.states, bits);
  for (std::size_t copy = 0; copy < kMovedSeries; ++copy) {
    std::vector<Real> states = point.states;
    for (std::size_t i = 0; i < states.size(); ++i)
      Move(states[i], point.sizes[i], rule.zero.noiseBits, 7 * copy + i);
    moved.push_back(begin(states, bits + kMoreBits));
  }
}

void FirstTerms::Extend(int order)
{
  exact->ExtendTo(order);
  for (const auto& series : moved) series->ExtendTo(order);
}

bool FirstTerms::StandsOut(LineId line, int k) const
{
  Real term(64), other(64);
  exact->Term(line, k, term);
  for (const auto& series : moved) {
    series->Term(line, k, other);
    mpfr_sub(other, other, term, MPFR_RNDN);
    if (Log2Size(other) > Log2Size(term) - kLog2OfPart) return false;
  }
  return true;
}

FirstTerm FirstTerms::Of(LineId line, int from)
{
  Real term(64);
  for (int k = from; k <= rule.settings.order; ++k) {
    Extend(k);
    exact->Term(line, k, term);
    if (!term.IsZero() && StandsOut(line, k)) return {k, mpfr_sgn(static_cast<mpfr_srcptr>(term))};
    const bool isZero = std::ranges::all_of(moved, [&](const auto& series) {
      return series->Log2(line, k) == -std::numeric_limits<double>::infinity();
    });
    if (!(term.IsZero() && isZero) && !rule.zero.mayDeclareZero) throw ZeroInDoubt{time};
  }
  return {rule.settings.order + 1, 0};
}

}  // namespace varno::solve
