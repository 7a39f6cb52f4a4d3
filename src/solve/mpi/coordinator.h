#pragma once

#include <string>

#include "solve/command/sweep_host.h"
#include "solve/mpi/ranks.h"

namespace varno::solve {

/// The first rank: its threads make runs of a sweep, and the others get theirs from it and bring it
/// the rows.
class Coordinator {
 public:
  explicit Coordinator(Ranks& ranks) : ranks(ranks) {}

  SweepHost Host();
  /// Lets the other ranks go, if there was no sweep for them. False where some do not answer.
  bool Dismiss();

 private:
  void Run(const std::string& job, const SweepPlan& plan, OrderedOutput& output);

  Ranks& ranks;
  bool hasBegun = false;
  bool allEnded = true;
};

}  // namespace varno::solve
