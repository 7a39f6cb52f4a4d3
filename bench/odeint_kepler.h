#pragma once

#include <array>
#include <cmath>

namespace varno {

/// A body on an ellipse of eccentricity 1/2 from its point nearest to the centre, for Boost.Odeint:
/// x, y and the velocities u, v.
template <class Real>
struct Kepler {
  using State = std::array<Real, 4>;

  static State Start()
  {
    using std::sqrt;
    return {Real(0.5), Real(0), Real(0), sqrt(Real(3))};
  }
  void operator()(const State& state, State& derivative, const Real&) const
  {
    using std::sqrt;
    const auto& [x, y, u, v] = state;
    const Real square = x * x + y * y;
    const Real inverseCube = 1 / (square * sqrt(square));
    derivative = {u, v, -x * inverseCube, -y * inverseCube};
  }
};

}  // namespace varno
