#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "solve/integration/path.h"
#include "solve/rows/row_times.h"
#include "solve/rows/time_format.h"

namespace varno::solve {

/// The times of the rows of one run, in order: given beforehand, or the ends of the solver's steps.
class RowSchedule {
 public:
  /// Rows at these times.
  RowSchedule(const Interval& interval, RowTimes times);
  /// Rows at both ends of the interval, at the start if that lies inside, and at the end of each
  /// step between them that does not come before the start and meets no event.
  static RowSchedule AtSteps(const Interval& interval) { return RowSchedule(interval); }

  /// Begins with the times of rows that were given before, where the times depend on the steps:
  /// other steps would make other rows.
  void Replay(std::size_t count, const std::function<Moment(std::size_t)>& timeOf);

  /// Whether the times depend on the steps.
  bool IsOfSteps() const { return !times; }
  /// Whether the times are known beforehand, and at most so many.
  bool HasAtMost(std::size_t count) const { return times && times->Count() <= count; }
  /// The times that come before the start, in order.
  const std::vector<Moment>& Early() const { return early; }
  /// The next time; none after the last. Makes steps on the path where they decide it.
  std::optional<Moment> Next(Path& path);
  /// The next of times that do not depend on the steps; none after the last.
  std::optional<Moment> NextGiven();
  /// The length of the longest text of a time.
  int Width(const TimeFormat& format) const;

 private:
  explicit RowSchedule(const Interval& interval);
  std::optional<Moment> NextStepEnd(Path& path);

  Interval interval;
  std::optional<RowTimes> times;  // none: the ends of steps
  std::vector<Moment> early;
  std::deque<Moment> waiting;  // pulled from `times`, or known beforehand
  std::optional<Moment> latest;
};

}  // namespace varno::solve
