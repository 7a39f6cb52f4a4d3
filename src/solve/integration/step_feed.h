#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "solve/integration/dense_step.h"
#include "solve/integration/stepper.h"

namespace varno::solve {

/// The steps of one run, one after the other, made when they are asked for or, on a thread of their
/// own, some of them ahead. They are the same in both ways.
class StepFeed {
 public:
  /// As MakeStepper. `poll` is called on the thread that asks for steps, also while it waits.
  StepFeed(const MakeStepper& make, const RunSettings& settings, const Moment& start,
           std::vector<Real> states, const Moment& reach, Poll poll);
  StepFeed(const StepFeed&) = delete;
  StepFeed& operator=(const StepFeed&) = delete;
  ~StepFeed();

  const DenseStep& Latest() const { return thread.joinable() ? latest : run->Latest(); }
  /// Goes on to the next step. Throws as Run::Step.
  void Advance();
  /// Makes the steps that come on a thread of their own, until one reaches the end, where there is
  /// one to be had.
  void GoAhead();
  /// How many lines the tape of the run has.
  std::size_t LineCount() const { return run->LineCount(); }

 private:
  /// Ends the thread.
  struct Stopped {};

  void PollRun() const;
  void MakeSteps();
  void Offer(const DenseStep& step);
  DenseStep TakeSpent();
  void Finish(std::exception_ptr reason);
  void LookForOffer() const;
  void TakeOffered();

  Moment reach;
  Poll poll;
  std::thread thread;
  std::atomic<bool> isStopped = false;
  std::unique_ptr<Stepper> run;
  double bytesOfSeries;
  std::size_t mostAhead;

  // Of the thread that asks for steps
  DenseStep latest;
  std::vector<DenseStep> inHand;
  std::size_t taken = 0;  // of those in hand

  // What both threads touch
  std::mutex mutex;
  std::condition_variable offers, room;
  std::vector<DenseStep> offered;
  std::vector<DenseStep> spent;  // their memory is used again
  std::exception_ptr end;        // of the run, behind the steps offered
  bool isFinished = false;
  std::atomic<bool> isOffered = false;  // whether there are steps, or none will come
  // Of the thread that makes them
  std::chrono::steady_clock::time_point latestCall;
  std::vector<DenseStep> spare;  // of those spent
};

}  // namespace varno::solve
