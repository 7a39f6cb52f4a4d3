// Many short runs of the Lorenz system by Boost.Odeint in double precision, as a user would write
// it.
//
// Usage: odeint_lorenz RUNS TOLERANCE prints seconds of processor time; then for each of so many
// rho, from 28 on to below 29, a line of rho, x, y and z at t = 1.

#include <array>
#include <boost/numeric/odeint.hpp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/cpu_clock.h"

namespace {

namespace odeint = boost::numeric::odeint;

using State = std::array<double, 3>;

struct Lorenz {
  double rho;

  void operator()(const State& state, State& derivative, double) const
  {
    const auto& [x, y, z] = state;
    derivative = {10 * (y - x), x * (rho - z) - y, x * y - 8.0 / 3 * z};
  }
};

}  // namespace

int main(int argc, char** argv)
{
  if (argc != 3) {
    std::fputs("Usage: odeint_lorenz RUNS TOLERANCE\n", stderr);
    return 1;
  }
  const auto count = static_cast<std::size_t>(std::atol(argv[1]));
  const double tolerance = std::atof(argv[2]);
  std::vector<State> states(count, {1, 1, 1});
  const auto rho = [&](std::size_t run) {
    return 28 + static_cast<double>(run) / static_cast<double>(count);
  };
  const double start = varno::CpuSeconds();
  for (std::size_t run = 0; run < count; ++run) {
    odeint::integrate_adaptive(
        odeint::make_controlled<odeint::runge_kutta_fehlberg78<State>>(tolerance, tolerance),
        Lorenz{rho(run)}, states[run], 0.0, 1.0, 0.01);
  }
  std::printf("%.6g\n", varno::CpuSeconds() - start);
  for (std::size_t run = 0; run < count; ++run) {
    const auto& [x, y, z] = states[run];
    std::printf("%.17g %.17g %.17g %.17g\n", rho(run), x, y, z);
  }
  return 0;
}
