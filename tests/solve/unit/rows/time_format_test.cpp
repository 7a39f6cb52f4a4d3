#include "solve/rows/time_format.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

Moment Fraction(const char* text)
{
  Rational number(text);
  number.canonicalize();
  return number;
}

Moment PiTimes(const char* factor)
{
  static const auto kPi =
      std::make_shared<const Constant>([](mpfr_ptr result) { mpfr_const_pi(result, MPFR_RNDN); });
  return Moment(kPi) * Fraction(factor).RationalPart();
}

/// A fraction n / 10^zeros.
Moment Decimal(const char* n, unsigned zeros)
{
  return Fraction((std::string(n) + "/1" + std::string(zeros, '0')).c_str());
}

Moment PowerOfTen(int exponent)
{
  const std::string power = "1" + std::string(static_cast<std::size_t>(std::abs(exponent)), '0');
  return Fraction((exponent < 0 ? "1/" + power : power).c_str());
}

}  // namespace

TEST(TimeFormat, AsShortAsExact)
{
  const TimeFormat format(15);
  EXPECT_EQ(format.Text(Fraction("0")), "0");
  EXPECT_EQ(format.Text(Fraction("2")), "2");
  EXPECT_EQ(format.Text(Fraction("1/10")), "0.1");
  EXPECT_EQ(format.Text(Fraction("-1250")), "-1250");
  EXPECT_EQ(format.Text(Fraction("1/16")), "0.0625");
  EXPECT_EQ(format.Text(Fraction("-17/16")), "-1.0625");
  EXPECT_EQ(format.Text(Fraction("123456/1000")), "123.456");
  EXPECT_EQ(format.Text(Fraction("1000001/10")), "100000.1");
  EXPECT_EQ(format.Text(Fraction("3/125")), "0.024");
}

// Fractions of words and others are split into digits in two ways.
TEST(TimeFormat, SameAtTheEndOfWords)
{
  const TimeFormat format(40);
  EXPECT_EQ(format.Text(Fraction("9223372036854775807")), "9223372036854775807");
  EXPECT_EQ(format.Text(Fraction("-9223372036854775808")), "-9223372036854775808");
  EXPECT_EQ(format.Text(Fraction("9223372036854775808")), "9223372036854775808");
  EXPECT_EQ(format.Text(Fraction("9223372036854775807/2")), "4611686018427387903.5");
  EXPECT_EQ(format.Text(Fraction("1844674407370955161/2")), "922337203685477580.5");
  EXPECT_EQ(format.Text(Fraction("-4611686018427387904/5")), "-922337203685477580.8");
  EXPECT_EQ(format.Text(Fraction("-1/1024")), "-0.0009765625");
  EXPECT_EQ(format.Text(Fraction("3/3125")), "0.00096");
}

TEST(TimeFormat, FewDigitsDoNotBlurExactTimes)
{
  EXPECT_EQ(TimeFormat(1).Text(Fraction("1/4")), "0.25");
  EXPECT_EQ(TimeFormat(1).Text(Decimal("12345678901234567", 16)), "1.2345678901234567");
  EXPECT_EQ(TimeFormat(1).Text(Decimal("123456789012345678", 17)), "1");
  EXPECT_EQ(TimeFormat(3).Text(Decimal("123456789012345678", 17)), "1.23");
  EXPECT_EQ(TimeFormat(18).Text(Decimal("123456789012345678", 17)), "1.23456789012345678");
}

TEST(TimeFormat, RoundedToTheDigitsOtherwise)
{
  EXPECT_EQ(TimeFormat(15).Text(Fraction("1/3")), "0.333333333333333");
  EXPECT_EQ(TimeFormat(15).Text(Fraction("-2/3")), "-0.666666666666667");
  EXPECT_EQ(TimeFormat(3).Text(Fraction("200/3")), "66.7");
  EXPECT_EQ(TimeFormat(3).Text(Fraction("2000/3")), "667");
  EXPECT_EQ(TimeFormat(3).Text(Fraction("2999999/3000000")), "1.00");
  EXPECT_EQ(TimeFormat(5).Text(PiTimes("10")), "31.416");
  EXPECT_EQ(TimeFormat(30).Text(PiTimes("-1/2")), "-1.57079632679489661923132169164");
}

TEST(TimeFormat, DigitsThatNobodyKnowsAreNotFilledIn)
{
  EXPECT_EQ(TimeFormat(3).Text(Fraction("20000/3")), "6.67e+03");
  EXPECT_EQ(TimeFormat(1).Text(Fraction("200/3")), "7e+01");
}

TEST(TimeFormat, LargeAndSmallOnesHaveAnExponent)
{
  const TimeFormat format(15);
  EXPECT_EQ(format.Text(PowerOfTen(15)), "1000000000000000");
  EXPECT_EQ(format.Text(PowerOfTen(16)), "1e+16");
  EXPECT_EQ(format.Text(PowerOfTen(30)), "1e+30");
  EXPECT_EQ(format.Text(PowerOfTen(-5)), "0.00001");
  EXPECT_EQ(format.Text(PowerOfTen(-6)), "1e-06");
  EXPECT_EQ(format.Text(Decimal("-125", 9)), "-1.25e-07");
  EXPECT_EQ(format.Text(PowerOfTen(100)), "1e+100");
  EXPECT_EQ(format.Text(Fraction("12345678901234567")), "12345678901234567");
  EXPECT_EQ(TimeFormat(3).Text(Decimal("1", 7) * Rational(1, 3)), "3.33e-08");
}

TEST(TimeFormat, RoundedTextsFitTheirBound)
{
  for (const int digits : {1, 2, 15, 40}) {
    const TimeFormat format(digits);
    for (const char* number : {"-1/30000", "-1/3", "-1/300001", "-100000000000000000000/3",
                               "-1/30000000000000000000000000000000"}) {
      EXPECT_LE(static_cast<int>(format.Text(Fraction(number)).size()), format.LongestRounded());
    }
    EXPECT_LE(static_cast<int>(format.Text(PowerOfTen(500) * Rational(-1, 3)).size()),
              format.LongestRounded());
  }
}

}  // namespace varno::solve
