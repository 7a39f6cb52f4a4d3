#include "solve/rows/number_format.h"

#include <cstdio>
#include <string>
#include <vector>

#include <gmp.h>
#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve {

namespace {

Real FromDecimal(const char* text, mpfr_prec_t bits = 400)
{
  Real number(bits);
  mpfr_set_str(number, text, 10, MPFR_RNDN);
  return number;
}

/// What MPFR's own printf makes of a number; it has no room for our zeros, but the same format.
std::string Printed(mpfr_srcptr number, int digits)
{
  std::vector<char> text(static_cast<std::size_t>(digits) + 40);
  mpfr_snprintf(text.data(), text.size(), "%.*Re", digits - 1, number);
  return text.data();
}

}  // namespace

TEST(NumberFormat, HasTheDigitsAskedFor)
{
  const Real number = FromDecimal("0.146966235155697942570376505176499");
  EXPECT_EQ(NumberFormat(30).Text(number), "1.46966235155697942570376505176e-01");
  EXPECT_EQ(NumberFormat(2).Text(number), "1.5e-01");
  EXPECT_EQ(NumberFormat(1).Text(number), "1e-01");
  EXPECT_EQ(NumberFormat(3).Text(FromDecimal("2")), "2.00e+00");
  EXPECT_EQ(NumberFormat(3).Text(FromDecimal("-123456")), "-1.23e+05");
  EXPECT_EQ(NumberFormat(1).Text(FromDecimal("-123456")), "-1e+05");
}

TEST(NumberFormat, RoundsToNearest)
{
  EXPECT_EQ(NumberFormat(3).Text(FromDecimal("9.9949999")), "9.99e+00");
  EXPECT_EQ(NumberFormat(3).Text(FromDecimal("9.9950001")), "1.00e+01");
  EXPECT_EQ(NumberFormat(1).Text(FromDecimal("-9.5000001")), "-1e+01");
  EXPECT_EQ(NumberFormat(1).Text(FromDecimal("0.94999")), "9e-01");
}

TEST(NumberFormat, AgreesWithPrintfOfMpfr)
{
  gmp_randstate_t random;
  gmp_randinit_default(random);
  const NumberFormat formats[] = {NumberFormat(1), NumberFormat(2), NumberFormat(15),
                                  NumberFormat(47), NumberFormat(1000)};
  const int digits[] = {1, 2, 15, 47, 1000};
  for (int i = 0; i < 2000; ++i) {
    Real number(1 + i % 321);
    mpfr_urandomb(number, random);
    mpfr_sub_d(number, number, 0.5, MPFR_RNDN);
    mpfr_mul_2si(number, number, static_cast<long>(gmp_urandomm_ui(random, 6000)) - 3000,
                 MPFR_RNDN);
    if (number.IsZero()) continue;
    for (std::size_t f = 0; f < std::size(formats); ++f) {
      EXPECT_EQ(formats[f].Text(number), Printed(number, digits[f]));
    }
  }
  gmp_randclear(random);
}

TEST(NumberFormat, ExponentHasTwoDigitsAtLeast)
{
  EXPECT_EQ(NumberFormat(2).Text(FromDecimal("1.5e-5")), "1.5e-05");
  EXPECT_EQ(NumberFormat(2).Text(FromDecimal("1.5e99")), "1.5e+99");
  EXPECT_EQ(NumberFormat(2).Text(FromDecimal("1.5e100")), "1.5e+100");
  EXPECT_EQ(NumberFormat(2, "0").Text(FromDecimal("-2e-123456789")), "-2.0e-123456789");
}

TEST(NumberFormat, TenThousandDigits)
{
  Real third(40'000);
  mpfr_set_ui(third, 1, MPFR_RNDN);
  mpfr_div_ui(third, third, 3, MPFR_RNDN);
  EXPECT_EQ(NumberFormat(10'000).Text(third), "3." + std::string(9'999, '3') + "e-01");
}

TEST(NumberFormat, ExactZero)
{
  Real zero(53);
  EXPECT_EQ(NumberFormat(15).Text(zero), "0");
  mpfr_set_zero(zero, -1);
  EXPECT_EQ(NumberFormat(15).Text(zero), "0");
}

TEST(NumberFormat, UndefinedAndInfiniteAreNoNumbers)
{
  Real number(53);
  mpfr_set_nan(number);
  EXPECT_EQ(NumberFormat(15).Text(number), "nan");
  mpfr_set_inf(number, -1);
  EXPECT_EQ(NumberFormat(15).Text(number), "nan");
}

TEST(NumberFormat, ZeroVerifiedToAUnit)
{
  EXPECT_EQ(NumberFormat::ZeroText(-30), "0e-30");
  EXPECT_EQ(NumberFormat::ZeroText(-1), "0e-01");
  EXPECT_EQ(NumberFormat::ZeroText(0), "0e+00");
  EXPECT_EQ(NumberFormat::ZeroText(7), "0e+07");
}

TEST(NumberFormat, WhatIsTinyIsZero)
{
  const NumberFormat format(3);
  EXPECT_EQ(format.Text(FromDecimal("1.0001e-1000")), "1.00e-1000");
  EXPECT_EQ(format.Text(FromDecimal("0.9999e-1000")), "0e-1000");
  EXPECT_EQ(format.Text(FromDecimal("-1e-1001")), "0e-1000");
  EXPECT_EQ(NumberFormat(3, "1e-5").Text(FromDecimal("-9e-6")), "0e-05");
  EXPECT_EQ(NumberFormat(3, "0").Text(FromDecimal("1e-5000")), "1.00e-5000");
}

TEST(NumberFormat, ZeroOfATinyThatIsNoPowerOfTenHasTheNextOneAbove)
{
  EXPECT_EQ(NumberFormat(3, "2e-6").Text(FromDecimal("1e-6")), "0e-05");
  EXPECT_EQ(NumberFormat(3, "0.00001").Text(FromDecimal("1e-6")), "0e-05");
  EXPECT_EQ(NumberFormat(3, "1.000001e-6").Text(FromDecimal("1e-6")), "0e-05");
  EXPECT_EQ(NumberFormat(3, "100").Text(FromDecimal("99")), "0e+02");
}

TEST(NumberFormat, TinyIsADecimalNumber)
{
  for (const char* good : {"1e-1000", "0", "0.0", "00e5", "1.", ".5", "2E+3", "1e-30"}) {
    EXPECT_NO_THROW(NumberFormat(15, good)) << good;
  }
  for (const char* bad :
       {"", "x", "-1", "+1", "1e", "1e-", ".", "e5", "1..2", "nan", "inf", "0x1p3", "1 ", " 1",
        "1,5", "1e5x", "@inf@", "1e-99999999999999999999", "1e99999999999999999999"}) {
    EXPECT_THROW(NumberFormat(15, bad), std::invalid_argument) << bad;
  }
}

TEST(NumberFormat, WidthCountsSignPointAndExponent)
{
  for (const int digits : {1, 2, 15, 30}) {
    const std::string text = NumberFormat(digits).Text(FromDecimal("-1.5e-7"));
    EXPECT_EQ(NumberFormat::Width(digits), static_cast<int>(text.size())) << text;
  }
}

}  // namespace varno::solve
