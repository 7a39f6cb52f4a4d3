// The problems of problems.py by Boost.Odeint, Runge-Kutta-Fehlberg 7(8), as a user would write
// them.
//
// Usage: odeint_problems PROBLEM DIGITS TOLERANCE prints seconds of processor time, and the states
// at the end. DIGITS 0 computes in double precision.

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>

#include "bench/cpu_clock.h"
#include "bench/odeint_kepler.h"
#include "bench/odeint_number.h"

namespace {

namespace odeint = boost::numeric::odeint;

template <class Real>
struct Lorenz {
  using State = std::array<Real, 3>;
  static constexpr int kEnd = 5;
  Real beta = Real(8) / 3;

  static State Start() { return {Real(1), Real(1), Real(1)}; }
  void operator()(const State& state, State& derivative, const Real&) const
  {
    const auto& [x, y, z] = state;
    derivative = {10 * (y - x), x * (28 - z) - y, x * y - beta * z};
  }
};

template <class Real>
struct Kepler : varno::Kepler<Real> {
  static constexpr int kEnd = 10;
};

template <class Real>
struct Pendulum {
  using State = std::array<Real, 2>;
  static constexpr int kEnd = 10;

  static State Start() { return {Real(2), Real(0)}; }
  void operator()(const State& state, State& derivative, const Real&) const
  {
    using std::sin;
    derivative = {state[1], -sin(state[0])};
  }
};

template <class Real>
struct VanDerPol {
  using State = std::array<Real, 2>;
  static constexpr int kEnd = 10;

  static State Start() { return {Real(2), Real(0)}; }
  void operator()(const State& state, State& derivative, const Real&) const
  {
    const auto& [x, v] = state;
    derivative = {v, (1 - x * x) * v - x};
  }
};

/// Ten cells on a line, u and v of each, 1 and 3 at both ends.
template <class Real>
struct Brusselator {
  static constexpr std::size_t kCells = 10;
  using State = std::array<Real, 2 * kCells>;
  static constexpr int kEnd = 2;
  Real spread = Real(121) / 50;

  static State Start()
  {
    State state;
    for (std::size_t i = 0; i < kCells; ++i) {
      state[2 * i] = 1 + Real((i + 1) * (kCells - i)) / 30;
      state[2 * i + 1] = Real(3);
    }
    return state;
  }
  void operator()(const State& state, State& derivative, const Real&) const
  {
    for (std::size_t i = 0; i < kCells; ++i) {
      const Real u = state[2 * i], v = state[2 * i + 1];
      const Real reaction = u * u * v;
      const auto next = [&](std::size_t offset, int end) {
        const Real left = i == 0 ? Real(end) : state[2 * (i - 1) + offset];
        const Real right = i + 1 == kCells ? Real(end) : state[2 * (i + 1) + offset];
        return Real(left + right);
      };
      derivative[2 * i] = 1 + reaction - 4 * u + spread * (next(0, 1) - 2 * u);
      derivative[2 * i + 1] = 3 * u - reaction + spread * (next(1, 3) - 2 * v);
    }
  }
};

template <class Real, class Problem>
void Solve(const Problem& problem, const char* toleranceText, int digits)
{
  using State = typename Problem::State;
  using Stepper = odeint::runge_kutta_fehlberg78<State, Real, State, Real>;
  const Real tolerance(std::strtod(toleranceText, nullptr));
  State state = Problem::Start();
  const double start = varno::CpuSeconds();
  odeint::integrate_adaptive(odeint::make_controlled<Stepper>(tolerance, tolerance), problem, state,
                             Real(0), Real(Problem::kEnd), Real(0.01));
  std::cout << varno::CpuSeconds() - start << std::setprecision(digits);
  for (const Real& x : state) std::cout << ' ' << x;
  std::cout << '\n';
}

template <class Real>
bool SolveNamed(const std::string& name, const char* tolerance, int digits)
{
  if (name == "Lorenz") {
    Solve<Real>(Lorenz<Real>(), tolerance, digits);
  } else if (name == "Kepler") {
    Solve<Real>(Kepler<Real>(), tolerance, digits);
  } else if (name == "pendulum") {
    Solve<Real>(Pendulum<Real>(), tolerance, digits);
  } else if (name == "van der Pol") {
    Solve<Real>(VanDerPol<Real>(), tolerance, digits);
  } else if (name == "Brusselator line") {
    Solve<Real>(Brusselator<Real>(), tolerance, digits);
  } else {
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv)
{
  const int digits = argc == 4 ? std::atoi(argv[2]) : 0;
  varno::Multiprecision::default_precision(static_cast<unsigned>(digits > 0 ? digits : 20));
  const bool isKnown =
      argc == 4 && (digits == 0 ? SolveNamed<double>(argv[1], argv[3], 17)
                                : SolveNamed<varno::Multiprecision>(argv[1], argv[3], digits));
  if (isKnown) return 0;
  std::cerr << "Usage: odeint_problems PROBLEM DIGITS TOLERANCE\n";
  return 1;
}
