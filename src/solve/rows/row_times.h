#pragma once

#include <optional>
#include <vector>

#include "solve/number/moment.h"
#include "solve/rows/time_format.h"

namespace varno::solve {

/// The times at which rows are asked for, exact and in the direction from `from` to `to`, which may
/// lie before it. They are handed out one by one and not stored, however many there are. Where the
/// interval is a single point, there is one row.
class RowTimes {
 public:
  /// Multiples of an interval counted from `from`, and `to`. Throws std::invalid_argument unless
  /// the interval is > 0, also where time runs backwards.
  static RowTimes Every(const Moment& from, const Moment& to, const Moment& interval);
  /// The ends of `count` equal parts: count + 1 rows. Throws std::invalid_argument unless count >
  /// 0.
  static RowTimes Points(const Moment& from, const Moment& to, long count);
  /// These times, put in order, each once. Throws std::invalid_argument when there is none, or one
  /// outside the interval.
  static RowTimes At(const Moment& from, const Moment& to, std::vector<Moment> times);
  /// `to` alone.
  static RowTimes Last(const Moment& to);

  /// How many there are.
  const Integer& Count() const { return count; }
  /// The next time; none after the last.
  std::optional<Moment> Next();
  /// The length of the longest text among all times: found by trying them where there are at most
  /// 100,000, else a bound that the longest may miss by some characters.
  int Width(const TimeFormat& format) const;

 private:
  RowTimes() = default;
  Moment Time(const Integer& i) const;
  int WidthBound(const TimeFormat& format) const;

  // Either a list, or start + index * step but for the last, which is `end`.
  std::vector<Moment> list;
  Moment start, step, end;
  Integer count, index;
};

}  // namespace varno::solve
