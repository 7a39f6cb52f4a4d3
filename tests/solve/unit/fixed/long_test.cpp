// Values and terms of any number of limbs against exact fractions.

#include "solve/fixed/long.h"

#include <algorithm>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr mpfr_prec_t kBits = 190;  // three limbs

mpq_class Power(long exponent)
{
  mpq_class power = 1;
  if (exponent >= 0) {
    mpq_mul_2exp(power.get_mpq_t(), power.get_mpq_t(), exponent);
  } else {
    mpq_div_2exp(power.get_mpq_t(), power.get_mpq_t(), -exponent);
  }
  return power;
}

mpq_class Exact(const LongValue& value)
{
  return mpq_class(value.mantissa) * Power(value.exponent);
}

/// Mantissas of 0 to 256 bits: powers of 2, their neighbours, and others, of both signs.
std::vector<mpz_class> Mantissas()
{
  gmp_randclass random(gmp_randinit_default);
  std::vector<mpz_class> mantissas = {0};
  for (const int length : {1, 2, 63, 64, 65, 128, 189, 190, 191, 192, 193, 256}) {
    const mpz_class power = mpz_class(1) << (length - 1);
    const mpz_class any = power + random.get_z_range(power);
    for (const mpz_class& x : {power, mpz_class(2 * power - 1), any}) {
      mantissas.push_back(x);
      mantissas.emplace_back(-x);
    }
  }
  return mantissas;
}

LongValue ValueOf(const mpz_class& mantissa, long exponent)
{
  LongValue value;
  value.mantissa = mantissa;
  value.exponent = exponent;
  return value;
}

constexpr long kExponents[] = {-700, -257, -190, -64, -1, 0, 1, 63, 64, 300};

TEST(Long, StoresToNearest)
{
  const LongArithmetic arithmetic(kBits);
  for (const mpz_class& mantissa : Mantissas()) {
    for (const long exponent : kExponents) {
      const LongValue value = ValueOf(mantissa, exponent);
      SCOPED_TRACE(Exact(value).get_str());
      LongTerms terms;
      LongArithmetic::Reserve(terms, 2);
      LongArithmetic::Reset(terms, arithmetic.ExponentFor(1));
      arithmetic.Store(terms, 0, ValueOf(3, -1));
      arithmetic.Store(terms, 1, value);
      const LongValue loaded = LongArithmetic::Load(terms, 1);
      const mpq_class unit = Power(terms.exponent), error = Exact(loaded) - Exact(value);
      const mpq_class first = Exact(LongArithmetic::Load(terms, 0));
      EXPECT_LE(abs(error), unit / 2);
      // The term before keeps its value when the exponent grows for a larger one.
      EXPECT_LE(abs(first - mpq_class(3, 2)), unit / 2);
      // Whether anything was lost is known, and what is not 0 never becomes an exact 0.
      EXPECT_EQ(terms.inexact, error != 0 || first != mpq_class(3, 2));
      EXPECT_EQ(loaded.IsExactZero(), mantissa == 0);
      EXPECT_LE(abs(Exact(loaded)), unit * Power(190));
    }
  }
}

TEST(Long, AddsAndMultipliesAllBitsOfAValue)
{
  const LongArithmetic arithmetic(kBits);
  const std::vector<mpz_class> mantissas = Mantissas();
  const mpq_class epsilon = Power(-250);
  for (std::size_t i = 0; i < mantissas.size(); ++i) {
    for (const long exponent : kExponents) {
      const LongValue a = ValueOf(mantissas[i], 0);
      const LongValue b = ValueOf(mantissas[(i * 37 + 11) % mantissas.size()], exponent);
      SCOPED_TRACE(Exact(a).get_str() + " and " + Exact(b).get_str());
      LongValue sum = a, product = a;
      arithmetic.Add(sum, b);
      const mpq_class exactSum = Exact(a) + Exact(b), sumError = abs(Exact(sum) - exactSum);
      EXPECT_LE(sumError, epsilon * std::max(abs(Exact(a)), abs(Exact(b))));
      EXPECT_EQ(sum.lost, sumError != 0);
      arithmetic.Multiply(product, b);
      const mpq_class exact = Exact(a) * Exact(b), error = abs(Exact(product) - exact);
      EXPECT_LE(error, epsilon * abs(exact));
      EXPECT_EQ(product.lost, error != 0);
    }
  }
}

TEST(Long, DividesBySmallNumbers)
{
  for (const mpz_class& mantissa : Mantissas()) {
    for (const int k : {1, 2, 3, 97, 32767}) {
      LongValue value = ValueOf(mantissa, 0);
      LongArithmetic::DivideBy(value, k);
      const mpq_class expected = mpq_class(mantissa) / k, error = abs(Exact(value) - expected);
      EXPECT_LT(error, Power(-64)) << expected.get_str();
      EXPECT_EQ(value.lost, error != 0) << expected.get_str();
    }
  }
}

}  // namespace
}  // namespace varno::solve
