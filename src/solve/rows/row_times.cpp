#include "solve/rows/row_times.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace varno::solve {

namespace {

constexpr long kMostMeasured = 100'000;

/// For messages.
std::string ShortText(const Moment& time)
{
  return TimeFormat(15).Text(time);
}

Moment Magnitude(const Moment& moment)
{
  return moment.Sign() < 0 ? moment * Rational(-1) : moment;
}

/// The largest n with n * part <= whole, for whole >= 0 and part > 0.
Integer WholeParts(const Moment& whole, const Moment& part)
{
  Integer n;
  if (whole.IsRational() && part.IsRational()) {
    const Rational ratio = whole.RationalPart() / part.RationalPart();
    mpz_fdiv_q(n.get_mpz_t(), ratio.get_num_mpz_t(), ratio.get_den_mpz_t());
    return n;
  }

  constexpr mpfr_prec_t kGuardBits = 64;
  Real numerator(kGuardBits), denominator(kGuardBits);
  whole.Evaluate(numerator);
  part.Evaluate(denominator);
  if (numerator.IsZero()) return n;
  const mpfr_exp_t excess = mpfr_get_exp(numerator) - mpfr_get_exp(denominator);
  const mpfr_prec_t bits = kGuardBits + std::max<mpfr_exp_t>(excess, 0);
  numerator = Real(bits);
  denominator = Real(bits);
  whole.Evaluate(numerator);
  part.Evaluate(denominator);
  mpfr_div(numerator, numerator, denominator, MPFR_RNDN);
  mpfr_get_z(n.get_mpz_t(), numerator, MPFR_RNDN);
  // Rounded to the nearest integer; whether that is past the end is decided exactly.
  if (part * Rational(n) > whole) --n;
  return n;
}

/// The places behind the point of a fraction, but for factors of its denominator other than 2
/// and 5.
long DecimalPlaces(const Rational& number)
{
  Integer rest = number.get_den();
  const mp_bitcnt_t twos = mpz_scan1(rest.get_mpz_t(), 0);
  const Integer five = 5;
  const mp_bitcnt_t fives = mpz_remove(rest.get_mpz_t(), rest.get_mpz_t(), five.get_mpz_t());
  return static_cast<long>(std::max(twos, fives));
}

bool IsDecimal(const Moment& moment)
{
  if (!moment.IsRational()) return false;
  Integer rest = moment.RationalPart().get_den();
  for (const Integer prime : {2, 5}) {
    mpz_remove(rest.get_mpz_t(), rest.get_mpz_t(), prime.get_mpz_t());
  }
  return rest == 1;
}

}  // namespace

RowTimes RowTimes::Every(const Moment& from, const Moment& to, const Moment& interval)
{
  if (interval.Sign() <= 0) {
    throw std::invalid_argument("the time from one row to the next must be greater than 0, not " +
                                ShortText(interval));
  }
  const Moment whole = to - from;
  const Integer parts = WholeParts(Magnitude(whole), interval);

  RowTimes times;
  times.start = from;
  times.step = whole.Sign() < 0 ? interval * Rational(-1) : interval;
  times.end = to;
  const bool endIsMultiple = from + times.step * Rational(parts) == to;
  times.count = parts + (endIsMultiple ? 1 : 2);
  return times;
}

RowTimes RowTimes::Points(const Moment& from, const Moment& to, long count)
{
  if (count <= 0) {
    throw std::invalid_argument("the number of parts must be at least 1, not " +
                                std::to_string(count));
  }
  if (from == to) return Last(to);
  RowTimes times;
  times.start = from;
  times.step = (to - from) * Rational(1, static_cast<unsigned long>(count));
  times.end = to;
  times.count = Integer(count) + 1;
  return times;
}

RowTimes RowTimes::At(const Moment& from, const Moment& to, std::vector<Moment> list)
{
  if (list.empty()) throw std::invalid_argument("no times");
  const auto [first, last] = std::minmax(from, to);
  for (const Moment& time : list) {
    if (time < first || time > last) {
      throw std::invalid_argument("t = " + ShortText(time) + " lies outside the interval from " +
                                  ShortText(from) + " to " + ShortText(to));
    }
  }
  std::ranges::sort(list, {}, [](const Moment& time) -> const Moment& { return time; });
  list.erase(std::unique(list.begin(), list.end()), list.end());
  if (to < from) std::ranges::reverse(list);

  RowTimes times;
  times.list = std::move(list);
  times.count = times.list.size();
  return times;
}

RowTimes RowTimes::Last(const Moment& to)
{
  RowTimes times;
  times.list = {to};
  times.count = 1;
  return times;
}

std::optional<Moment> RowTimes::Next()
{
  if (index == count) return std::nullopt;
  Moment time = Time(index);
  ++index;
  return time;
}

Moment RowTimes::Time(const Integer& i) const
{
  if (!list.empty()) return list[i.get_ui()];
  if (i + 1 == count) return end;
  Moment time = step * Rational(i);
  time += start;
  return time;
}

int RowTimes::Width(const TimeFormat& format) const
{
  if (count > kMostMeasured) return WidthBound(format);
  std::size_t width = 0;
  for (Integer i = 0; i < count; ++i) width = std::max(width, format.Text(Time(i)).size());
  return static_cast<int>(width);
}

int RowTimes::WidthBound(const TimeFormat& format) const
{
  if (!list.empty()) return format.LongestRounded();
  const int ends = static_cast<int>(std::max(format.Text(start).size(), format.Text(end).size()));
  if (!IsDecimal(start) || !IsDecimal(step)) {
    // Exact times may come among the rounded ones; these are no longer than 17 digits make them.
    return std::max(ends, TimeFormat(format.ExactDigits()).LongestRounded());
  }
  // Plain texts have the integer part of an end at most, and the places of start and step.
  const long places =
      std::max(DecimalPlaces(start.RationalPart()), DecimalPlaces(step.RationalPart()));
  const double largest = std::max(std::abs(start.ToDouble()), std::abs(end.ToDouble()));
  const long wholeDigits = largest < 10 ? 1 : static_cast<long>(std::log10(largest)) + 1;
  const long sign = start.Sign() < 0 || end.Sign() < 0 ? 1 : 0;
  const long plain = sign + wholeDigits + (places > 0 ? 1 + places : 0);
  const long limit = TimeFormat(format.ExactDigits()).LongestRounded();
  return std::max(ends, static_cast<int>(std::min(plain, limit)));
}

}  // namespace varno::solve
