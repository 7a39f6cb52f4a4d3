#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

#include "solve/team/pace.h"

namespace varno::solve {

/// Some threads that do one job together: the one that asks for it, which is member 0, and others
/// that wait for jobs as long as the team lives.
///
/// Members that wait look again and again for some hundred microseconds, and then sleep. Where the
/// machine has other work and a job takes longer so, member 0 does all parts (Pace). Members have
/// the widest range of exponents of MPFR (ScopedExponentRange); that of member 0 is its own affair.
/// One thread may ask for jobs at a time, and no job for another one.
class Team {
 public:
  using Job = std::function<void(int member, std::size_t round)>;

  /// Starts memberCount - 1 threads, or fewer, where there are no more to be had.
  explicit Team(int memberCount);
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;
  ~Team();

  int MemberCount() const { return static_cast<int>(threads.size()) + 1; }

  /// Has job(member, round) called for every member and round: a round for all members at a time,
  /// and the next one when all are through. What was done in a round is seen in the next. Throws
  /// what a member threw, that with the lowest number if there are several; the others are stopped
  /// between two rounds, or where they ask.
  void Run(std::size_t rounds, const Job& job);
  /// Within a job: throws to end this member's part where another one has thrown.
  void StopIfFailed() const;

 private:
  /// Ends the part of a member because of another one.
  struct Stopped {};
  /// What wakes those that wait.
  using Counter = std::atomic<std::uint32_t>;

  static void WaitForChange(const Counter& counter, std::uint32_t known);
  void RunTogether();
  void RunRounds(std::size_t first, std::size_t behind, bool together);
  void Meet();
  void Serve(int member);
  void DoPart(int member);
  void Dismiss();

  const Job* job = nullptr;
  std::size_t firstRound = 0, behindRounds = 0;  // of the job, for all members together
  Pace pace;
  std::vector<std::exception_ptr> errors;  // by member
  Counter jobs = 0;                        // that were asked for
  Counter done = 0;                        // parts of the latest job, by others than member 0
  Counter meetings = 0;          // that all members have come to, or that a failure has ended
  std::atomic<int> arrived = 0;  // at the next meeting
  std::atomic<bool> hasFailed = false;
  std::atomic<bool> isDismissed = false;
  std::vector<std::thread> threads;
};

/// Cuts 0..count-1 into stretches of about the same length and calls visit(member, first, last) for
/// each, of those before `last`: one for each member of the team, or, without one, the whole.
template <class Visit>
void ForEachStretch(Team* team, std::size_t count, const Visit& visit)
{
  if (team == nullptr) {
    visit(0, std::size_t{0}, count);
    return;
  }
  const auto members = static_cast<std::size_t>(team->MemberCount());
  team->Run(1, [&](int member, std::size_t) {
    const auto number = static_cast<std::size_t>(member);
    visit(member, count * number / members, count * (number + 1) / members);
  });
}

}  // namespace varno::solve
