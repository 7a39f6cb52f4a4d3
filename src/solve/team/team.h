#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

namespace varno::solve {

/// Some threads that do one job together: the one that asks for it, which is member 0, and others
/// that wait for jobs as long as the team lives.
///
/// Members that wait look again and again for some microseconds, and then sleep. They have the
/// widest range of exponents of MPFR (ScopedExponentRange); that of member 0 is its own affair.
/// One thread may ask for jobs at a time, and no job for another one.
class Team {
 public:
  using Job = std::function<void(int member)>;

  /// Starts memberCount - 1 threads; throws std::system_error where there are none to be had.
  explicit Team(int memberCount);
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;
  ~Team();

  int MemberCount() const { return static_cast<int>(threads.size()) + 1; }

  /// Has every member call job(member); returns when all are done. Throws what a member threw, that
  /// with the lowest number if there are several; the others are stopped where they meet or ask.
  void Run(const Job& job);

  /// Within a job, of all members alike: waits for the others. What they did before is seen
  /// behind. Throws to end this member's part where another one has thrown.
  void Meet();
  /// The same without waiting.
  void StopIfFailed() const;

 private:
  /// Ends the part of a member because of another one.
  struct Stopped {};
  /// What wakes those that wait.
  using Counter = std::atomic<std::uint32_t>;

  void WaitForChange(const Counter& counter, std::uint32_t known) const;
  void Serve(int member);
  void DoPart(int member);
  void Dismiss();

  int mostLooks;  // of a member that waits, before it sleeps
  const Job* job = nullptr;
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
  team->Run([&](int member) {
    const auto number = static_cast<std::size_t>(member);
    visit(member, count * number / members, count * (number + 1) / members);
  });
}

}  // namespace varno::solve
