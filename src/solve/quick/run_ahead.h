#pragma once

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "solve/quick/run.h"

namespace varno::solve::quick {

/// The steps of a run, one after the other, made when they are asked for or, on a thread of their
/// own, ahead. They are the same in both ways.
class RunAhead {
 public:
  RunAhead(const Program& program, const RunSettings& settings, const Way& way,
           std::vector<Number> states);
  RunAhead(const RunAhead&) = delete;
  RunAhead& operator=(const RunAhead&) = delete;
  ~RunAhead();

  /// Goes on to the next step; false where that is not for the hardware.
  bool Step();
  /// Has the steps that come, so many at most, made on a thread of their own, where there is one to
  /// be had. Once at most.
  void GoAhead(std::uint32_t mostSteps);

  StepView Latest() const { return kept == nullptr ? run.Latest() : kept[taken - 1].View(); }
  std::int64_t Steps() const { return kept == nullptr ? run.Steps() : stepsBefore + taken; }

 private:
  /// A step with its numbers.
  class KeptStep {
   public:
    explicit KeptStep(const StepView& step);
    StepView View() const;

   private:
    StepView step;
    std::vector<Number> terms, sizes;
  };

  void MakeSteps();
  void WaitForMore(std::uint32_t known) const;

  Run run;        // of the thread when there is one
  Number length;  // of the way
  std::thread thread;
  std::atomic<bool> isStopped = false;
  // The thread adds steps where there is room for all, and counts them in `made`.
  std::vector<KeptStep> steps;
  const KeptStep* kept = nullptr;       // the first of them; null: there is no thread
  std::atomic<std::uint32_t> made = 0;  // with kOver when no more will come
  std::uint32_t taken = 0;
  std::int64_t stepsBefore = 0;  // those before the first one
};

}  // namespace varno::solve::quick
