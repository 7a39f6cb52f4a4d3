#include "solve/switching/leaving.h"

#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// A power that counts: below 1 and above 0, for all that roundings and factors make of it.
constexpr double kLeastPower = 0.01, kLargestPower = 0.99;
/// Derivatives are looked at up to this one.
constexpr int kMostDerivative = 4;
/// How far the expression is moved: to these parts of the bits of the tolerance. A derivative below
/// the third part is what is not known of the states.
constexpr double kFar = 0.25, kNear = 0.5, kNothing = 0.75;
/// The time between two points of a difference, as a part of these bits, too: derivatives by the
/// state grow without bounds beside it, while it is far smaller.
constexpr double kTimeStep = 2;

/// A value and its derivatives by the time.
using Derivatives = std::array<Real, kMostDerivative + 1>;

/// An expression near a point, in the direction of the run.
class Neighbourhood {
 public:
  Neighbourhood(const Piece& piece, const Watch& watch, const SwitchPoint& point,
                double toleranceBits)
      : point(point),
        timeStep(-std::lround(kTimeStep * toleranceBits)),
        bits(point.BitsFrom(std::lround((kTimeStep * kMostDerivative + 2) * toleranceBits))),
        all(piece.model.graph, Roots(piece, watch), bits)
  {}

  /// By differences of Euler's steps from the point with one state moved by +-2^log2.
  Derivatives At(std::size_t state, int sign, long log2)
  {
    Derivatives found = Points(state, sign, log2);
    for (int order = 1; order <= kMostDerivative; ++order) {
      for (int k = kMostDerivative; k >= order; --k) {
        mpfr_sub(found[k], found[k], found[k - 1], MPFR_RNDN);
        mpfr_mul_2si(found[k], found[k], -timeStep, MPFR_RNDN);
      }
    }
    return found;
  }
  /// The expression at the point itself.
  Real Value()
  {
    Real time(bits);
    point.time.Evaluate(time);
    all.Evaluate(time, point.states);
    return all[point.states.size()];
  }

 private:
  static std::vector<NodeId> Roots(const Piece& piece, const Watch& watch)
  {
    std::vector<NodeId> roots;
    for (const State& state : piece.model.states) roots.push_back(state.rightHandSide);
    roots.push_back(watch.expression);
    return roots;
  }

  Derivatives Points(std::size_t state, int sign, long log2)
  {
    Derivatives values;
    Real time(bits), advance(bits);
    point.time.Evaluate(time);
    std::vector<Real> states;
    for (const Real& value : point.states) mpfr_set(states.emplace_back(bits), value, MPFR_RNDN);
    mpfr_set_si_2exp(advance, sign, log2, MPFR_RNDN);
    mpfr_add(states[state], states[state], advance, MPFR_RNDN);
    for (Real& value : values) {
      all.Evaluate(time, states);
      value = all[states.size()];
      for (std::size_t i = 0; i < states.size(); ++i) Advance(states[i], all[i]);
      mpfr_set_ui(advance, 1, MPFR_RNDN);
      Advance(time, advance);
    }
    return values;
  }

  void Advance(Real& value, const Real& speed) const
  {
    Real part(bits);
    mpfr_mul_2si(part, speed, timeStep, MPFR_RNDN);
    (point.backwards ? mpfr_sub : mpfr_add)(value, value, part, MPFR_RNDN);
  }

  const SwitchPoint& point;
  long timeStep;  // log2
  mpfr_prec_t bits;
  Evaluator all;  // right-hand sides, and the expression
};

int SignOf(const Real& value)
{
  return mpfr_sgn(static_cast<mpfr_srcptr>(value));
}

/// Whether the expression leads away from 0 where this state is moved.
bool LeadsAway(Neighbourhood& around, std::size_t state, int sign, int side, double toleranceBits)
{
  std::array<Derivatives, 2> found;
  const std::array<double, 2> parts = {kFar, kNear};
  const Real value = around.Value();
  for (const std::size_t i : {0, 1}) {
    found[i] = around.At(state, sign, -std::lround(parts[i] * toleranceBits));
    Real moved = found[i][0];
    mpfr_sub(moved, moved, value, MPFR_RNDN);
    if (SignOf(moved) != side) return false;
  }
  for (int order = 1; order <= kMostDerivative; ++order) {
    const double far = Log2Size(found[0][order]), near = Log2Size(found[1][order]);
    if (far < -kNothing * toleranceBits && near < -kNothing * toleranceBits) continue;
    const double power = (far - near) / ((kNear - kFar) * toleranceBits);
    return SignOf(found[0][order]) == side && SignOf(found[1][order]) == side &&
           power > kLeastPower && power < kLargestPower;
  }
  return false;
}

}  // namespace

bool MayLeave(const Piece& beside, const Watch& watch, const SwitchPoint& point,
              const RunSettings& settings)
{
  Neighbourhood around(beside, watch, point, settings.toleranceBits);
  for (std::size_t state = 0; state < point.states.size(); ++state) {
    for (const int sign : {-1, 1}) {
      try {
        if (LeadsAway(around, state, sign, watch.sign, settings.toleranceBits)) return true;
      } catch (const DomainError&) {
        // No solution leads there.
      }
    }
  }
  return false;
}

}  // namespace varno::solve
