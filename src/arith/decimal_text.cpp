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

/// An exponent that GMP could not read, or that the digits before it could push there.
bool HasEndlessExponent(const char* text, std::size_t position)
{
  constexpr long kLargestReadable = 9'000'000'000'000'000'000;
  if (position == std::string_view::npos) return false;
  const long exponent = std::strtol(text + position, nullptr, 10);
  return exponent > kLargestReadable || exponent < -kLargestReadable;
}

}  // namespace

DecimalText SetFromDecimal(Mpf& number, const char* text)
{
  const std::size_t exponent = ExponentPosition(text);
  if (!HasEndlessExponent(text, exponent)) {
    // At the precision of `number`, but apart from it: it may have to stay.
    Mpf value;
    mpf_set_prec(value, mpf_get_prec(number));
    if (mpf_set_str(value, text, 10) != 0) return DecimalText::kNoNumber;
    if (!IsInRange(value)) return DecimalText::kOutOfRange;
    mpf_swap(number, value);
    return DecimalText::kNumber;
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
