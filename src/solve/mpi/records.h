#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace varno::solve {

/// What ranks tell the first one about the runs that they make.
enum class RecordKind : std::uint8_t {
  kTake,     ///< a thread wants runs: `number` at most
  kRows,     ///< rows of the run `number`
  kMessage,  ///< messages of the run `number`
  kFinish,   ///< the run `number` has ended; the text is one byte, a RunOutcome
  kAsk,      ///< is there room for more rows of the run `number`?
  kStop,     ///< the rank cannot go on, and the sweep has to end
  kEnded,    ///< the rank makes no more runs; the text is what went wrong, if something did
};

/// What the first rank tells the others.
enum class OrderKind : std::int64_t {
  kRuns,   ///< make `count` runs from `number` on; none: there are no more
  kGrant,  ///< there is room for more rows of the run `number`
  kStop,   ///< the sweep has ended
};

struct Order {
  OrderKind kind;
  std::int64_t number, count;
};

/// How many runs a thread may get at once: few enough for all ranks to be busy to the end.
inline std::int64_t MostInRange(std::int64_t runCount, int rankCount)
{
  constexpr std::int64_t kMost = 4096;
  constexpr std::int64_t kRangesPerRank = 32;
  return std::clamp<std::int64_t>(runCount / (kRangesPerRank * rankCount), 1, kMost);
}

/// Texts longer than this go in several records, so that no message grows with them.
inline constexpr std::size_t kMostRecordBytes = std::size_t{1} << 20;

/// Appends a record to a parcel: many records that travel in one message. A text for kRows or
/// kMessage may have any length.
void AppendRecord(std::string& parcel, RecordKind kind, std::int64_t number,
                  std::string_view text = {});

/// Calls visit for each record of a parcel, in order.
void ForEachRecord(std::string_view parcel,
                   const std::function<void(RecordKind, std::int64_t, std::string_view)>& visit);

}  // namespace varno::solve
