#include "arith/decimal_text.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include "arith/range.h"

namespace arith {

namespace {

/// Where GMP reads the exponent from: behind the last 'e', 'E' or '@'; npos when there is none.
std::size_t ExponentPosition(std::string_view text)
{
  const std::size_t mark = text.find_last_of("eE@");
  return mark == std::string_view::npos ? mark : mark + 1;
}

bool HasLargeExponent(const char* text, std::size_t position)
{
  if (position == std::string_view::npos) return false;
  const long exponent = std::strtol(text + position, nullptr, 10);
  return exponent > kLargestExponent || exponent < -kLargestExponent;
}

}  // namespace

DecimalText SetFromDecimal(Mpf& number, const char* text)
{
  const std::size_t exponent = ExponentPosition(text);
  if (!HasLargeExponent(text, exponent)) {
    return mpf_set_str(number, text, 10) == 0 ? DecimalText::kNumber : DecimalText::kNoNumber;
  }
  // The digits tell whether the text is a number at all, or a 0, which has any exponent.
  Mpf digits;
  if (mpf_set_str(digits, (std::string(text, exponent) + '0').c_str(), 10) != 0) {
    return DecimalText::kNoNumber;
  }
  if (digits.Sign() != 0) return DecimalText::kOutOfRange;
  mpf_set_ui(number, 0);
  return DecimalText::kNumber;
}

}  // namespace arith
