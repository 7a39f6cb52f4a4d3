#pragma once

#include <string>

#include <gmp.h>

#include "bench/varno/null_buffer.h"
#include "varno/core/global_data.h"

namespace varno {

/// A system of equations with its settings.
struct Problem {
  std::string name;
  std::string equations;
  mp_bitcnt_t bits = 80;
  int maximumOrder = 30;
  int accuracyDigits = 10;
  double initialStep = 0.1;
  double finalTime = 1;
};

// Each has a variable `clock` beside its own, which shows the time that the values belong to.

/// x, y, z of the Lorenz system.
Problem Lorenz(double finalTime);
/// Two bodies in the plane, as a polynomial system: the inverse cube of the distance is a variable.
Problem Kepler(double finalTime);
/// Reaction and diffusion along a ring of `count` cells.
Problem ReactionDiffusion(int count, double finalTime);

/// The same problem at another precision, with the order and the accuracy that go with it. At 1024
/// bits it is cut to a tenth of the time, because it runs for long.
Problem AtPrecision(Problem problem, mp_bitcnt_t bits);
/// The same problem with the last digits of its solution right.
Problem Refined(Problem problem);

/// Installs a fresh record with the settings and the initialised equations of a problem. Only one
/// at a time.
class LoadedProblem {
 public:
  explicit LoadedProblem(const Problem& problem);
  ~LoadedProblem();
  LoadedProblem(const LoadedProblem&) = delete;
  LoadedProblem& operator=(const LoadedProblem&) = delete;

 private:
  GlobalData* const saved;
};

/// Sends standard output and the commentary nowhere for a while.
class Silence {
 public:
  Silence();
  ~Silence();
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  NullBuffer nowhere;
  std::streambuf* const output;
  std::streambuf* const commentary;
};

}  // namespace varno
