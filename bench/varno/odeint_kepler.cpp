// The Kepler problem by Boost.Odeint, as a user would write it: what varno is compared with.
//
// Usage: odeint_kepler DIGITS TOLERANCE TIME prints seconds of processor time, x and y at TIME.
// DIGITS 0 computes in double precision.

#include "bench/odeint_kepler.h"

#include <boost/numeric/odeint.hpp>
#include <cstdlib>
#include <iomanip>
#include <iostream>

#include "bench/cpu_clock.h"
#include "bench/odeint_number.h"

namespace {

namespace odeint = boost::numeric::odeint;

template <class Real>
void Solve(const char* toleranceText, const char* timeText, int digits)
{
  using State = typename varno::Kepler<Real>::State;
  using Stepper = odeint::runge_kutta_fehlberg78<State, Real, State, Real>;
  const Real tolerance(std::atof(toleranceText));
  const Real finalTime(std::atof(timeText));
  State state = varno::Kepler<Real>::Start();
  const double start = varno::CpuSeconds();
  odeint::integrate_adaptive(odeint::make_controlled<Stepper>(tolerance, tolerance),
                             varno::Kepler<Real>(), state, Real(0), finalTime, Real(0.01));
  const double seconds = varno::CpuSeconds() - start;
  std::cout << seconds << ' ' << std::setprecision(digits) << state[0] << ' ' << state[1] << '\n';
}

}  // namespace

int main(int argc, char** argv)
{
  if (argc != 4) {
    std::cerr << "Usage: odeint_kepler DIGITS TOLERANCE TIME\n";
    return 1;
  }
  const int digits = std::atoi(argv[1]);
  if (digits == 0) {
    Solve<double>(argv[2], argv[3], 17);
  } else {
    varno::Multiprecision::default_precision(static_cast<unsigned>(digits));
    Solve<varno::Multiprecision>(argv[2], argv[3], digits);
  }
  return 0;
}
