#include "solve/rows/number_format.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace varno::solve {

namespace {

/// Enough to tell 1e-1000 from its neighbours of 30 digits.
constexpr mpfr_prec_t kTinyBits = 128;

/// Digits, at most one point among them, and perhaps an exponent; no sign before them.
bool IsDecimalNumber(std::string_view text)
{
  constexpr std::string_view kDigits = "0123456789";
  const auto skipDigits = [&text, kDigits] {
    const std::size_t count = std::min(text.find_first_not_of(kDigits), text.size());
    text.remove_prefix(count);
    return count;
  };
  const auto skipAny = [&text](std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
    text.remove_prefix(1);
    return true;
  };

  std::size_t count = skipDigits();
  if (skipAny(".")) count += skipDigits();
  if (count == 0) return false;
  if (skipAny("eE")) {
    skipAny("+-");
    if (skipDigits() == 0) return false;
  }
  return text.empty();
}

Real ParseTiny(const std::string& text)
{
  Real tiny(kTinyBits);
  if (!IsDecimalNumber(text)) {
    throw std::invalid_argument("not a decimal number >= 0, such as 1e-1000: '" + text + "'");
  }
  mpfr_set_str(tiny, text.c_str(), 10, MPFR_RNDN);
  const bool hasDigits =
      text.substr(0, text.find_first_of("eE")).find_first_of("123456789") != std::string::npos;
  if (mpfr_number_p(tiny) == 0 || tiny.IsZero() == hasDigits) {
    throw std::invalid_argument("out of range: '" + text + "'");
  }
  return tiny;
}

/// The exponent of the smallest power of ten that is not below the number, which is > 0.
long PowerAbove(mpfr_srcptr number)
{
  // 30 digits: a power of ten is not quite one in binary, but rounds to it.
  char text[33];
  mpfr_exp_t exponent = 0;
  mpfr_get_str(text, &exponent, 10, 30, number, MPFR_RNDN);
  const bool isPower = std::string_view(text).find_last_not_of('0') == 0 && text[0] == '1';
  return isPower ? exponent - 1 : exponent;
}

}  // namespace

NumberFormat::NumberFormat(int digits, const std::string& tiny)
    : digits(digits), tiny(ParseTiny(tiny))
{
  if (!this->tiny.IsZero()) tinyText = ZeroText(PowerAbove(this->tiny));
}

std::string NumberFormat::Text(mpfr_srcptr number) const
{
  if (mpfr_number_p(number) == 0) return "nan";
  if (mpfr_zero_p(number) != 0) return "0";
  if (mpfr_cmpabs(number, tiny) < 0) return tinyText;
  const bool isNegative = mpfr_signbit(number) != 0;
  if (const auto decimal = ShortDecimalOf(number, digits)) return ShortText(isNegative, *decimal);
  return LongText(isNegative, number);
}

std::string NumberFormat::ShortText(bool isNegative, const ShortDecimal& decimal) const
{
  char buffer[kMostShortDigits];
  std::to_chars(buffer, buffer + sizeof buffer, decimal.digits);
  std::string text;
  text.reserve(static_cast<std::size_t>(Width(digits)));
  if (isNegative) text += '-';
  text += buffer[0];
  if (digits > 1) text.append(1, '.').append(buffer + 1, buffer + digits);
  AppendExponent(text, decimal.exponent);
  return text;
}

std::string NumberFormat::LongText(bool isNegative, mpfr_srcptr number) const
{
  // MPFR writes -dddd; what stands before the second digit then moves to the left by one, which
  // makes room for the point.
  const bool hasPoint = digits > 1;
  const std::size_t start = hasPoint ? 1 : 0;
  const std::size_t length = start + (isNegative ? 1 : 0) + static_cast<std::size_t>(digits);

  std::string text;
  text.reserve(length + 8);
  text.resize(std::max<std::size_t>(length + 1, 8));  // MPFR also writes a closing 0
  mpfr_exp_t exponent = 0;
  mpfr_get_str(text.data() + start, &exponent, 10, static_cast<std::size_t>(digits), number,
               MPFR_RNDN);
  text.resize(length);
  if (hasPoint) {
    const std::size_t first = isNegative ? 1 : 0;
    if (isNegative) text[0] = '-';
    text[first] = text[first + 1];
    text[first + 1] = '.';
  }
  AppendExponent(text, exponent - 1);
  return text;
}

std::string NumberFormat::ZeroText(long exponent)
{
  std::string text = "0";
  AppendExponent(text, exponent);
  return text;
}

void AppendExponent(std::string& text, long exponent)
{
  char number[24];
  const auto end = std::to_chars(number, number + sizeof number, std::labs(exponent)).ptr;
  text += exponent < 0 ? "e-" : "e+";
  if (end - number < 2) text += '0';
  text.append(number, end);
}

}  // namespace varno::solve
