#pragma once

#include <string>

#include <gmp.h>

#include "config/global_data.h"

namespace varno {

/// A system of equations with its settings.
struct Problem {
  std::string name;
  std::string equations;
  mp_bitcnt_t bits = 80;
  int maximumOrder = 30;
  const char* accuracy = "1e-10";
  double initialStep = 0.1;
  double finalTime = 1;
};

/// x, y, z of the Lorenz system.
Problem Lorenz(double finalTime);
/// Two bodies in the plane, as a polynomial system: the inverse cube of the distance is a variable.
Problem Kepler(double finalTime);
/// Reaction and diffusion along a ring of `count` cells.
Problem ReactionDiffusion(int count, double finalTime);

/// The same problem at another precision, with the order and the accuracy that go with it.
Problem AtPrecision(Problem problem, mp_bitcnt_t bits);

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
  std::streambuf* const output;
  std::streambuf* const commentary;
};

}  // namespace varno
