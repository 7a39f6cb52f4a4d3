#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "solve/quick/run.h"
#include "solve/quick/run_ahead.h"

namespace varno::solve::quick {

/// Two runs of one problem, of different order, tolerance and steps, the first one disturbed. They
/// are within one step of one another and compared at each end of one.
class Pair {
 public:
  /// The programs and the start states: disturbed, and not.
  struct Problem {
    Program disturbedProgram, program;
    std::vector<Number> disturbedStart, start;
    Way way;
  };
  /// `threads`: on how many the runs may be, which are the same then.
  explicit Pair(Problem problem, int threads = 1);
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  /// Goes on by one step of the run that is behind, and compares. False where that is not for the
  /// hardware.
  bool Step();
  /// Up to where both are.
  Number Reached() const { return std::min(first.Latest().end, second.Latest().end); }

  /// Sets the states of both runs at a place not beyond Reached, but beyond what it was before the
  /// latest step.
  void StatesAt(Number place);
  std::span<const Number> First() const { return firstStates; }
  std::span<const Number> Second() const { return secondStates; }
  /// The size of a state there.
  Number Size(std::size_t state) const
  {
    return std::max(first.Latest().sizes[state], second.Latest().sizes[state]);
  }

  /// What a number of this size that the runs tell may be off by: several times the most that they
  /// have differed by, in parts of sizes, and what all steps may have rounded alike.
  Number Uncertainty(Number size) const;
  /// Tells what numbers made of states differ by.
  void AddDifference(Number difference, Number size);

  const Run& Best() const { return second; }

 private:
  void Compare(Number place);
  bool IsWorthAThread() const;

  Problem problem;
  bool mayUseThreads;
  RunAhead first;
  Run second;
  std::vector<Number> firstStates, secondStates;
  Number apart = 0;  // the most that numbers differ by, in parts of their sizes
};

}  // namespace varno::solve::quick
