#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace varno::solve {

/// How a run of a sweep ended.
enum class RunOutcome : std::uint8_t {
  kAllRows,
  kFailed,       ///< it ended early or could not begin
  kRowWasWrong,  ///< failed, because a row was wrong that was already given
};

/// Runs that follow each other.
struct RunRange {
  std::int64_t first, count;
};

/// Where those who make the runs of a sweep get them from, and where they bring the texts; for
/// several threads. Each call may throw Stopped, or what writing throws.
class RunExchange {
 public:
  /// Thrown when the sweep has ended because somebody else could not go on.
  struct Stopped {};

  virtual ~RunExchange() = default;
  /// The next runs to make, `most` or fewer; none when all are handed out. Waits while there is no
  /// room for their texts.
  virtual std::optional<RunRange> Take(std::int64_t most) = 0;
  /// Adds to the rows of a run; waits while there is no room for them.
  virtual void AddRows(std::int64_t run, std::string_view text) = 0;
  /// Adds to the messages of a run, which come out behind its rows.
  virtual void AddMessage(std::int64_t run, std::string_view text) = 0;
  /// Ends a run.
  virtual void Finish(std::int64_t run, RunOutcome outcome) = 0;
  /// Ends the sweep: who waits or calls gets Stopped. Nothing that waits comes out.
  virtual void Stop() = 0;
};

}  // namespace varno::solve
