#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "solve/mpi/records.h"

namespace varno::solve {

/// The ranks of an MPI job, and the messages between them. All calls on one thread.
class Ranks {
 public:
  /// Begins MPI. Throws std::runtime_error where it has no threads.
  Ranks(int& argc, char**& argv);
  Ranks(const Ranks&) = delete;
  Ranks& operator=(const Ranks&) = delete;
  ~Ranks();

  int Rank() const { return rank; }
  int Count() const { return count; }
  /// How many threads a rank should have: the cores of its machine are shared among its ranks.
  int Threads() const;

  /// Sends a text from the first rank to all; the others get it.
  std::string Broadcast(std::string text) const;

  /// To a rank that is not the first.
  void Send(int to, const Order& order) const;
  std::optional<Order> ReceiveOrder() const;
  /// To the first rank; one at a time: false while the one before is under way.
  bool Send(std::string parcel);
  bool IsSending();
  /// A parcel with the rank that it comes from, if one has come.
  std::optional<std::pair<int, std::string>> ReceiveParcel() const;

  /// Ends all ranks at once, without waiting for those that do not answer.
  [[noreturn]] static void Abort(int status);

 private:
  int rank = 0, count = 1, countOnMachine = 1;
  struct Sending;
  Sending* sending;
};

}  // namespace varno::solve
