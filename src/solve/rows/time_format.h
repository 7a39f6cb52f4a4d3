#pragma once

#include <string>

#include "solve/number/moment.h"

namespace varno::solve {

/// The text of a time as rows show it: as short as it is exact, else rounded to D digits.
///
/// Exact are decimal fractions that need no more than max(D, 17) digits: 0.1, 2, -1250, 0.0625.
/// Times with more digits, thirds and multiples of pi are rounded to nearest and keep their zeros:
/// 0.333333333333333. The limit does not fall below 17 digits, so that few digits for the values
/// do not blur the times (--digits 1 --every 0.25).
///
/// Plain notation is for 1e-5 to 1e15, and for longer numbers all of whose digits count; outside
/// there is an exponent, as in 1e+30 and 1.25e-07.
class TimeFormat {
 public:
  explicit TimeFormat(int digits) : digits(digits) {}

  std::string Text(const Moment& time) const;

  /// The longest text that a rounded time can have.
  int LongestRounded() const;
  /// The most digits of an exact text.
  int ExactDigits() const;

 private:
  std::string RoundedText(const Moment& time) const;

  int digits;
};

}  // namespace varno::solve
