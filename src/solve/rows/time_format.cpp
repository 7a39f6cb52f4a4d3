#include "solve/rows/time_format.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

#include "solve/rows/number_format.h"

namespace varno::solve {

namespace {

constexpr int kFewestExactDigits = 17;
constexpr long kLeastPlainExponent = -5;
constexpr long kLargestPlainExponent = 15;

/// A number as d.ddd times a power of ten.
struct Decimal {
  bool isNegative = false;
  std::string digits;  ///< the first is not 0
  long exponent = 0;   ///< of the first digit
};

/// Digits without closing zeros of an integer, not 0, that is meant times 10^-places.
Decimal MakeDecimal(bool isNegative, std::string digits, long places)
{
  Decimal decimal{isNegative, std::move(digits)};
  decimal.exponent = static_cast<long>(decimal.digits.size()) - 1 - places;
  decimal.digits.erase(decimal.digits.find_last_not_of('0') + 1);
  return decimal;
}

/// n / d, not 0, where both and what makes it a fraction of a power of ten fit a word; none where
/// they do not, or there is no such fraction.
std::optional<Decimal> DecimalOfWords(const Rational& number)
{
  const Integer &n = number.get_num(), &d = number.get_den();
  if (!n.fits_slong_p() || !d.fits_slong_p()) return std::nullopt;
  long denominator = d.get_si(), scaled = n.get_si();
  const int twos = std::countr_zero(static_cast<unsigned long>(denominator));
  denominator >>= twos;
  int fives = 0;
  for (; denominator % 5 == 0; ++fives) denominator /= 5;
  if (denominator != 1) return std::nullopt;
  for (int i = twos; i < fives; ++i) {
    if (__builtin_mul_overflow(scaled, 2, &scaled)) return std::nullopt;
  }
  for (int i = fives; i < twos; ++i) {
    if (__builtin_mul_overflow(scaled, 5, &scaled)) return std::nullopt;
  }
  char text[24];
  const char* const end = std::to_chars(text, text + sizeof text, scaled).ptr;
  const char* const begin = text + (scaled < 0 ? 1 : 0);
  return MakeDecimal(scaled < 0, std::string(begin, end), std::max(twos, fives));
}

/// Splits an integer, which is not 0, into digits without closing zeros; its value is meant times
/// 10^-places.
Decimal MakeDecimal(const Integer& integer, long places)
{
  std::string digits = integer.get_str();
  const bool isNegative = sgn(integer) < 0;
  if (isNegative) digits.erase(0, 1);
  return MakeDecimal(isNegative, std::move(digits), places);
}

/// The decimal fraction that a number, not 0, is exactly; none when it is no such fraction.
std::optional<Decimal> ExactDecimal(const Rational& number)
{
  if (auto decimal = DecimalOfWords(number)) return decimal;
  // The denominator must be 2^twos * 5^fives.
  Integer denominator = number.get_den();
  const mp_bitcnt_t twos = mpz_scan1(denominator.get_mpz_t(), 0);
  mpz_tdiv_q_2exp(denominator.get_mpz_t(), denominator.get_mpz_t(), twos);
  static const Integer kFive = 5;
  const mp_bitcnt_t fives =
      mpz_remove(denominator.get_mpz_t(), denominator.get_mpz_t(), kFive.get_mpz_t());
  if (denominator != 1) return std::nullopt;

  // n / (2^twos 5^fives) = n 2^(places-twos) 5^(places-fives) / 10^places
  const mp_bitcnt_t places = std::max(twos, fives);
  Integer scaled = number.get_num() << (places - twos);
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 5, places - fives);
  scaled *= power;
  return MakeDecimal(scaled, static_cast<long>(places));
}

std::string PlainText(const Decimal& decimal)
{
  std::string text = decimal.isNegative ? "-" : "";
  const long count = static_cast<long>(decimal.digits.size());
  if (decimal.exponent < 0) {
    text += "0.";
    text.append(static_cast<std::size_t>(-decimal.exponent - 1), '0');
    text += decimal.digits;
  } else if (count <= decimal.exponent + 1) {
    text += decimal.digits;
    text.append(static_cast<std::size_t>(decimal.exponent + 1 - count), '0');
  } else {
    text += decimal.digits;
    text.insert(text.end() - (count - decimal.exponent - 1), '.');
  }
  return text;
}

std::string ExponentText(const Decimal& decimal)
{
  std::string text = decimal.isNegative ? "-" : "";
  text += decimal.digits;
  if (decimal.digits.size() > 1) text.insert(decimal.isNegative ? 2 : 1, 1, '.');
  AppendExponent(text, decimal.exponent);
  return text;
}

bool HasPlainSize(const Decimal& decimal)
{
  return decimal.exponent >= kLeastPlainExponent && decimal.exponent <= kLargestPlainExponent;
}

}  // namespace

std::string TimeFormat::Text(const Moment& time) const
{
  if (!time.IsRational()) return RoundedText(time);
  const Rational& number = time.RationalPart();
  if (sgn(number) == 0) return "0";

  const std::optional<Decimal> decimal = ExactDecimal(number);
  if (!decimal || static_cast<long>(decimal->digits.size()) > ExactDigits()) {
    return RoundedText(time);
  }
  const bool allDigitsCount =
      decimal->exponent >= 0 && static_cast<long>(decimal->digits.size()) > decimal->exponent;
  return HasPlainSize(*decimal) || allDigitsCount ? PlainText(*decimal) : ExponentText(*decimal);
}

std::string TimeFormat::RoundedText(const Moment& time) const
{
  constexpr mpfr_prec_t kGuardBits = 64;
  Real number(static_cast<mpfr_prec_t>(digits) * 10 / 3 + kGuardBits);
  time.Evaluate(number);
  // Fractions too close to 0 to be told from it.
  if (number.IsZero()) return "0";

  Decimal decimal;
  decimal.isNegative = mpfr_sgn(static_cast<mpfr_srcptr>(number)) < 0;
  mpfr_abs(number, number, MPFR_RNDN);
  decimal.digits.resize(static_cast<std::size_t>(std::max(digits + 1, 7)));
  mpfr_exp_t exponent = 0;
  mpfr_get_str(decimal.digits.data(), &exponent, 10, static_cast<std::size_t>(digits), number,
               MPFR_RNDN);
  decimal.digits.resize(static_cast<std::size_t>(digits));
  decimal.exponent = exponent - 1;

  // An integer part longer than the digits must not be filled with zeros that nobody knows.
  const bool isPlain = HasPlainSize(decimal) && decimal.exponent < digits;
  return isPlain ? PlainText(decimal) : ExponentText(decimal);
}

int TimeFormat::ExactDigits() const
{
  return std::max(digits, kFewestExactDigits);
}

int TimeFormat::LongestRounded() const
{
  // -0.0000 before the digits, or a sign, a point and an exponent of up to three digits
  return digits + 7;
}

}  // namespace varno::solve
