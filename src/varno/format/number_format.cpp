#include "varno/format/number_format.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace varno {

namespace {

/// The decimal digits of a number: its value is 0.DIGITS * 10^exponent.
struct Decimal {
  std::string& digits;  ///< with a leading "-" for a negative number; empty for 0
  mp_exp_t exponent;
};

/// The digits stay until the next call.
Decimal ToDecimal(mpf_srcptr number, std::int64_t digitCount)
{
  // GMP gives no more digits than the precision has, however many are asked for.
  constexpr std::size_t kDigitsPerLimb = 20;
  static std::string digits;  // static to keep its memory from number to number
  digits.resize((static_cast<std::size_t>(number->_mp_prec) + 2) * kDigitsPerLimb);
  mp_exp_t exponent = 0;
  mpf_get_str(digits.data(), &exponent, 10, static_cast<std::size_t>(digitCount), number);
  digits.resize(std::strlen(digits.c_str()));
  return {digits, exponent};
}

/// Rounds the digits up where those beyond the width W ask for it.
///
/// On purpose the exponent stays as it is, a "-" counts as a digit, and a carry may run into it and
/// make it a "."; a carry that reaches a first digit, making it 5 or more, gives a 1 and zeros; the
/// digits beyond the rounding position stay.
void RoundToWidth(std::string& digits, std::int64_t width)
{
  if (static_cast<std::int64_t>(digits.size()) <= width + 1) return;
  std::int64_t i = width + 1;
  if (i < 1 || digits[i] < '5') return;
  do {
    digits[i] = '0';
    --i;
    if (digits[i] <= '8') {
      ++digits[i];
      break;
    }
  } while (i > 0);
  if (i == 0 && digits[0] > '4') {
    digits.assign(static_cast<std::size_t>(width), '0');
    if (width > 0) digits[0] = '1';
  }
}

void AppendRepeated(std::string& text, char character, std::int64_t count)
{
  if (count > 0) text.append(static_cast<std::size_t>(count), character);
}

/// Moves `count` digits from the front of `digits` to the text; zeros when there are no more.
void AppendDigits(std::string& text, std::string_view& digits, std::int64_t count)
{
  const auto available = std::clamp<std::int64_t>(count, 0, std::ssize(digits));
  text.append(digits.substr(0, static_cast<std::size_t>(available)));
  digits.remove_prefix(static_cast<std::size_t>(available));
  AppendRepeated(text, '0', count - available);
}

/// Moves the sign from the front of `digits` to the text.
void AppendSign(std::string& text, std::string_view& digits, char noSign)
{
  const bool negative = digits.starts_with('-');
  if (negative) digits.remove_prefix(1);
  text += negative ? '-' : noSign;
}

/// " 0.ddde-x"
void AppendPlain(std::string& text, const Decimal& decimal)
{
  if (decimal.exponent == 0 && decimal.digits.empty()) {
    text += "0.0";
    return;
  }
  std::string_view digits = decimal.digits;
  AppendSign(text, digits, ' ');
  text.append("0.").append(digits).append("e").append(std::to_string(decimal.exponent));
}

/// "-d.ddde+xx"
void AppendExponentForm(std::string& text, const Decimal& decimal, const NumberFormat& format)
{
  const std::int64_t precision = format.digits;
  const std::int64_t exponentDigits = format.exponentDigits;
  AppendRepeated(text, ' ', format.width - precision - exponentDigits - 4);
  std::string_view digits = decimal.digits;
  AppendSign(text, digits, format.noSign);
  AppendDigits(text, digits, 1);
  text += '.';
  AppendDigits(text, digits, precision);

  const mp_exp_t exponent = decimal.exponent - 1;
  const std::string exponentText = std::to_string(exponent < 0 ? -exponent : exponent);
  text += exponent < 0 ? "e-" : "e+";
  AppendRepeated(text, '0', exponentDigits - std::ssize(exponentText));
  text += exponentText;
}

/// "-ddd.ddd", without a zero before the point
void AppendFixedForm(std::string& text, const Decimal& decimal, const NumberFormat& format)
{
  const std::int64_t precision = format.digits;
  const std::int64_t exponent = decimal.exponent;
  AppendRepeated(text, ' ', format.width - precision + (exponent - precision >= 1 ? 1 : 0));
  std::string_view digits = decimal.digits;
  AppendSign(text, digits, format.noSign);
  if (exponent < 0) {
    const std::int64_t zeros = std::min(-exponent, std::max<std::int64_t>(precision, 0));
    text += '.';
    AppendRepeated(text, '0', zeros);
    AppendDigits(text, digits, precision - zeros);
    return;
  }
  // precision + 1 positions, the point before the one behind the integer part
  const std::int64_t positions = std::max<std::int64_t>(precision + 1, 0);
  AppendDigits(text, digits, std::min(exponent, positions));
  if (exponent < positions) {
    text += '.';
    AppendDigits(text, digits, positions - exponent);
  }
  AppendRepeated(text, '0', exponent - positions);
}

void AppendZero(std::string& text, const NumberFormat& format)
{
  const std::int64_t precision = format.digits;
  const std::int64_t exponentWidth =
      format.exponentForm ? std::int64_t{format.exponentDigits} + 4 : 0;
  AppendRepeated(text, ' ', format.width - precision - exponentWidth);
  text += format.noSign;
  text += "0.";
  AppendRepeated(text, '0', precision);
  if (format.exponentForm) {
    text += "e+";
    AppendRepeated(text, '0', format.exponentDigits);
  }
}

}  // namespace

void AppendNumber(std::string& text, mpf_srcptr number, const NumberFormat& format)
{
  const std::int64_t width = format.width;
  if (format.plain) {
    AppendPlain(text, ToDecimal(number, width));
    return;
  }
  if (mpf_sgn(number) == 0) {
    AppendZero(text, format);
    return;
  }
  const Decimal decimal = ToDecimal(number, width + 3);
  RoundToWidth(decimal.digits, width);
  if (format.exponentForm) {
    AppendExponentForm(text, decimal, format);
  } else {
    AppendFixedForm(text, decimal, format);
  }
}

}  // namespace varno
