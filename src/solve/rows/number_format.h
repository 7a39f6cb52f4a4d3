#pragma once

#include <string>

#include <mpfr.h>

#include "solve/number/real.h"
#include "solve/rows/short_decimal.h"

namespace varno::solve {

/// The text of a number as rows show it, with D significant digits:
///
///     1.46966235155697942570376505176e-01   rounded to nearest; for D = 1 "1e-01"
///     0                                     an exact zero
///     0e-1000                               a number below the limit `tiny`
///     nan                                   no number: undefined, or infinite
///
/// The exponent has a sign and at least two digits. Safe on several threads.
class NumberFormat {
 public:
  /// `digits` is D, 1 or more; `tiny` a decimal number, 0 or more, such as "1e-1000". Throws
  /// std::invalid_argument when `tiny` is none.
  explicit NumberFormat(int digits, const std::string& tiny = "1e-1000");

  /// How long a text is, counting a place for a minus and an exponent of two digits.
  static int Width(int digits) { return 1 + digits + (digits > 1 ? 1 : 0) + 4; }

  const Real& Tiny() const { return tiny; }
  std::string Text(mpfr_srcptr number) const;
  /// A number known to be 0 to this power of ten: "0e-30" for -30.
  static std::string ZeroText(long exponent);

 private:
  std::string ShortText(bool isNegative, const ShortDecimal& decimal) const;
  std::string LongText(bool isNegative, mpfr_srcptr number) const;

  int digits;
  Real tiny;
  std::string tinyText;
};

/// Appends a power of ten: "e+00", "e-05", "e+123".
void AppendExponent(std::string& text, long exponent);

}  // namespace varno::solve
