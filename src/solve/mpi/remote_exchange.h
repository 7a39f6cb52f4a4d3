#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "solve/mpi/records.h"
#include "solve/sweep/run_exchange.h"

namespace varno::solve {

/// The exchange of a rank that is not the first: what its threads bring waits for the next message,
/// and they wait for the answers. It knows nothing of how messages travel.
///
/// The first text of a run goes without asking, so that short runs need no answers; for each
/// further one there must be room where it goes.
class RemoteExchange final : public RunExchange {
 public:
  std::optional<RunRange> Take(std::int64_t most) override;
  void AddRows(std::int64_t run, std::string_view text) override;
  void AddMessage(std::int64_t run, std::string_view text) override;
  void Finish(std::int64_t run, RunOutcome outcome) override;
  void Stop() override;

  /// Tells that no thread is left; `error` is what ended them, if something did.
  void End(const std::string& error);

  /// The next parcel to send, empty where there is nothing to tell.
  std::string TakeParcel();
  /// An answer has come.
  void Receive(const Order& order);

 private:
  void Put(RecordKind kind, std::int64_t number, std::string_view text = {});
  void ThrowIfStopped() const;

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::string> parcels;  // to be sent, the last one still growing
  std::size_t parcelBytes = 0;      // of all of them
  std::deque<RunRange> ranges;      // that no thread has taken yet; empty ones: no more
  std::set<std::int64_t> begun;     // runs under way that have sent rows
  std::set<std::int64_t> granted;   // runs for whose rows there is room
  bool isStopped = false;
};

}  // namespace varno::solve
