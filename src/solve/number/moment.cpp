#include "solve/number/moment.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace varno::solve {

namespace {

/// How many bits may cancel between the parts of a moment before it counts as 0.
constexpr mpfr_prec_t kMostCancelledBits = 20'000;

/// The fraction to nearest, without a division where its denominator is a power of 2, as in the
/// times of steps.
void EvaluateFraction(mpq_srcptr fraction, mpfr_ptr result)
{
  mpz_srcptr numerator = mpq_numref(fraction), denominator = mpq_denref(fraction);
  const mp_bitcnt_t zeros = mpz_scan1(denominator, 0);
  const std::size_t bits = mpz_sizeinbase(denominator, 2);
  if (bits == zeros + 1) {
    mpfr_set_z_2exp(result, numerator, -static_cast<mpfr_exp_t>(zeros), MPFR_RNDN);
    return;
  }
  // More bits of the quotient than the result has, the last of which stands for all that follow.
  const auto wanted = static_cast<std::size_t>(mpfr_get_prec(result)) + 2 + bits;
  const std::size_t given = mpz_sizeinbase(numerator, 2);
  const mp_bitcnt_t up = given < wanted ? wanted - given : 0;
  Integer quotient, rest;
  mpz_mul_2exp(quotient.get_mpz_t(), numerator, up);
  mpz_tdiv_qr(quotient.get_mpz_t(), rest.get_mpz_t(), quotient.get_mpz_t(), denominator);
  if (sgn(rest) != 0 && mpz_even_p(quotient.get_mpz_t())) quotient += sgn(quotient);
  mpfr_set_z_2exp(result, quotient.get_mpz_t(), -static_cast<mpfr_exp_t>(up), MPFR_RNDN);
}

/// The exponent of a denominator that is a power of 2; none of others.
std::optional<mp_bitcnt_t> ExponentOfDenominator(const Rational& x)
{
  mpz_srcptr denominator = mpq_denref(x.get_mpq_t());
  const mp_bitcnt_t zeros = mpz_scan1(denominator, 0);
  if (mpz_sizeinbase(denominator, 2) != zeros + 1) return std::nullopt;
  return zeros;
}

__extension__ using Int128 = __int128;

/// A fraction of two words.
struct Words {
  long numerator, denominator;
};

std::optional<Words> WordsOf(const Rational& x)
{
  if (!x.get_num().fits_slong_p() || !x.get_den().fits_slong_p()) return std::nullopt;
  return Words{x.get_num().get_si(), x.get_den().get_si()};
}

bool HasNoMagnitude(long x)
{
  return x == std::numeric_limits<long>::min();
}

/// sum += sign * x where all that comes fits words; elsewhere nothing, and false. Knuth, The Art of
/// Computer Programming 2, 4.5.1.
bool AddWords(Rational& sum, const Rational& x, int sign)
{
  const std::optional<Words> a = WordsOf(sum), b = WordsOf(x);
  if (!a || !b) return false;
  const long common = std::gcd(a->denominator, b->denominator);
  const long ofA = a->denominator / common, ofB = b->denominator / common;
  long first = 0, second = 0, total = 0, denominator = 0;
  if (__builtin_mul_overflow(a->numerator, ofB, &first) ||
      __builtin_mul_overflow(b->numerator, sign * ofA, &second) ||
      __builtin_add_overflow(first, second, &total) || HasNoMagnitude(total))
    return false;
  const long reducible = std::gcd(total, common);
  if (__builtin_mul_overflow(ofA, b->denominator / reducible, &denominator)) return false;
  mpq_set_si(sum.get_mpq_t(), total / reducible, static_cast<unsigned long>(denominator));
  return true;
}

/// product *= x in the same way.
bool MultiplyWords(Rational& product, const Rational& x)
{
  const std::optional<Words> a = WordsOf(product), b = WordsOf(x);
  if (!a || !b || HasNoMagnitude(a->numerator) || HasNoMagnitude(b->numerator)) return false;
  const long ofA = std::gcd(a->numerator, b->denominator),
             ofB = std::gcd(b->numerator, a->denominator);
  long numerator = 0, denominator = 0;
  if (__builtin_mul_overflow(a->numerator / ofA, b->numerator / ofB, &numerator) ||
      __builtin_mul_overflow(a->denominator / ofB, b->denominator / ofA, &denominator))
    return false;
  mpq_set_si(product.get_mpq_t(), numerator, static_cast<unsigned long>(denominator));
  return true;
}

/// The sign of a - b.
int CompareFractions(const Rational& a, const Rational& b)
{
  const std::optional<Words> x = WordsOf(a), y = WordsOf(b);
  if (!x || !y) return cmp(a, b);
  const Int128 left = static_cast<Int128>(x->numerator) * y->denominator;
  const Int128 right = static_cast<Int128>(y->numerator) * x->denominator;
  return left < right ? -1 : left > right ? 1 : 0;
}

/// sum += sign * x: without the common divisors that a sum of any fractions asks for where both
/// denominators are powers of 2, as in the times of steps.
void AddFraction(Rational& sum, const Rational& x, int sign)
{
  if (sgn(x) == 0) return;
  if (sgn(sum) == 0) {
    sum = x;
    if (sign < 0) mpq_neg(sum.get_mpq_t(), sum.get_mpq_t());
    return;
  }
  if (AddWords(sum, x, sign)) return;
  const std::optional<mp_bitcnt_t> ofSum = ExponentOfDenominator(sum),
                                   ofX = ExponentOfDenominator(x);
  if (!ofSum || !ofX) {
    if (sign > 0) {
      sum += x;
    } else {
      sum -= x;
    }
    return;
  }
  const mp_bitcnt_t exponent = std::max(*ofSum, *ofX);
  mpz_ptr numerator = mpq_numref(sum.get_mpq_t()), denominator = mpq_denref(sum.get_mpq_t());
  mpz_mul_2exp(numerator, numerator, exponent - *ofSum);
  Integer other;
  mpz_mul_2exp(other.get_mpz_t(), mpq_numref(x.get_mpq_t()), exponent - *ofX);
  if (sign > 0) {
    mpz_add(numerator, numerator, other.get_mpz_t());
  } else {
    mpz_sub(numerator, numerator, other.get_mpz_t());
  }
  const mp_bitcnt_t common =
      mpz_sgn(numerator) == 0 ? exponent : std::min(exponent, mpz_scan1(numerator, 0));
  if (common > 0) mpz_tdiv_q_2exp(numerator, numerator, common);
  if (exponent - common == *ofSum) return;
  mpz_set_ui(denominator, 1);
  mpz_mul_2exp(denominator, denominator, exponent - common);
}

}  // namespace

Moment::Moment(std::shared_ptr<const Constant> constant)
{
  multiples.push_back({1, std::move(constant)});
}

void Moment::Add(const Rational& factor, const std::shared_ptr<const Constant>& constant)
{
  const auto same = std::ranges::find(multiples, constant, &Multiple::constant);
  if (same == multiples.end()) {
    multiples.push_back({factor, constant});
    return;
  }
  same->factor += factor;
  if (sgn(same->factor) == 0) multiples.erase(same);
}

Moment& Moment::operator+=(const Moment& other)
{
  AddFraction(rational, other.rational, 1);
  for (const Multiple& multiple : other.multiples) Add(multiple.factor, multiple.constant);
  return *this;
}

Moment& Moment::operator-=(const Moment& other)
{
  AddFraction(rational, other.rational, -1);
  for (const Multiple& multiple : other.multiples) Add(-multiple.factor, multiple.constant);
  return *this;
}

Moment& Moment::operator*=(const Rational& factor)
{
  if (!MultiplyWords(rational, factor)) rational *= factor;
  if (sgn(factor) == 0) multiples.clear();
  for (Multiple& multiple : multiples) multiple.factor *= factor;
  return *this;
}

void Moment::Evaluate(mpfr_ptr result) const
{
  if (IsRational()) {
    EvaluateFraction(rational.get_mpq_t(), result);
    return;
  }
  const mpfr_prec_t wanted = mpfr_get_prec(result);
  for (mpfr_prec_t cancelled = 32;; cancelled *= 2) {
    // The parts are right to about 2^-(wanted + cancelled - 8) of the largest, far better than
    // needed unless the sum is smaller than the largest part by more than 2^-(cancelled - 16).
    const mpfr_prec_t bits = wanted + cancelled;
    Real sum(bits), part(bits);
    mpfr_set_q(sum, rational.get_mpq_t(), MPFR_RNDN);
    mpfr_exp_t largest = sum.IsZero() ? mpfr_get_emin() : mpfr_get_exp(sum);
    for (const Multiple& multiple : multiples) {
      (*multiple.constant)(part);
      mpfr_mul_q(part, part, multiple.factor.get_mpq_t(), MPFR_RNDN);
      if (!part.IsZero()) largest = std::max(largest, mpfr_get_exp(part));
      mpfr_add(sum, sum, part, MPFR_RNDN);
    }
    if (!sum.IsZero() && mpfr_get_exp(sum) > largest - (cancelled - 16)) {
      mpfr_set(result, sum, MPFR_RNDN);
      return;
    }
    if (cancelled > kMostCancelledBits) {
      mpfr_set_zero(result, 1);
      return;
    }
  }
}

double Moment::ToDouble() const
{
  Real value(53);
  Evaluate(value);
  return value.ToDouble();
}

int Moment::Sign() const
{
  if (IsRational()) return sgn(rational);
  Real value(32);
  Evaluate(value);
  return mpfr_sgn(static_cast<mpfr_srcptr>(value));
}

/// The sign of a - b; of fractions without the difference, which takes a common divisor.
int Moment::Compare(const Moment& a, const Moment& b)
{
  if (a.IsRational() && b.IsRational()) return CompareFractions(a.rational, b.rational);
  return (a - b).Sign();
}

}  // namespace varno::solve
