#include "solve/rows/row_times.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

Moment M(const char* text)
{
  Rational number(text);
  number.canonicalize();
  return number;
}

Moment PiTimes(const Rational& factor)
{
  // A constant of its own each time, as two texts of a command line have.
  return Moment(std::make_shared<const Constant>(
             [](mpfr_ptr result) { mpfr_const_pi(result, MPFR_RNDN); })) *
         factor;
}

std::string CountOf(const RowTimes& times)
{
  return times.Count().get_str();
}

std::vector<std::string> Texts(RowTimes times)
{
  std::vector<std::string> texts;
  while (const auto time = times.Next()) texts.push_back(TimeFormat(5).Text(*time));
  EXPECT_EQ(CountOf(times), std::to_string(texts.size()));
  return texts;
}

using Strings = std::vector<std::string>;

std::string MessageOf(const std::function<void()>& action)
{
  try {
    action();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "no exception";
}

}  // namespace

TEST(RowTimesEvery, MultiplesAndTheEnd)
{
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), M("1"), M("3/10"))),
            (Strings{"0", "0.3", "0.6", "0.9", "1"}));
  EXPECT_EQ(Texts(RowTimes::Every(M("1/2"), M("2"), M("1"))), (Strings{"0.5", "1.5", "2"}));
}

TEST(RowTimesEvery, EndThatIsAMultipleComesOnce)
{
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), M("1"), M("1/5"))),
            (Strings{"0", "0.2", "0.4", "0.6", "0.8", "1"}));
  RowTimes tenths = RowTimes::Every(M("0"), M("100"), M("1/10"));
  EXPECT_EQ(CountOf(tenths), "1001");
}

TEST(RowTimesEvery, Backwards)
{
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), M("-1"), M("2/5"))),
            (Strings{"0", "-0.4", "-0.8", "-1"}));
  EXPECT_EQ(Texts(RowTimes::Every(M("3"), M("1"), M("1"))), (Strings{"3", "2", "1"}));
}

TEST(RowTimesEvery, LongerThanTheIntervalGivesItsEnds)
{
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), M("1"), M("7"))), (Strings{"0", "1"}));
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), M("-1"), M("7"))), (Strings{"0", "-1"}));
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), PiTimes(1), M("7"))), (Strings{"0", "3.1416"}));
}

TEST(RowTimesEvery, IntervalOfOnePointGivesOneRow)
{
  EXPECT_EQ(Texts(RowTimes::Every(M("2"), M("2"), M("1"))), Strings{"2"});
  EXPECT_EQ(Texts(RowTimes::Every(PiTimes(1), PiTimes(1), M("1"))), Strings{"3.1416"});
}

TEST(RowTimesEvery, PartsOfPi)
{
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), PiTimes(1), PiTimes(Rational(1, 2)))),
            (Strings{"0", "1.5708", "3.1416"}));
  EXPECT_EQ(Texts(RowTimes::Every(M("0"), PiTimes(1), M("1"))),
            (Strings{"0", "1", "2", "3", "3.1416"}));
  EXPECT_EQ(CountOf(RowTimes::Every(M("0"), PiTimes(1'000'000), PiTimes(Rational(1, 7)))),
            "7000001");
  // 355/113 is a little above pi.
  EXPECT_EQ(CountOf(RowTimes::Every(M("0"), M("355/113"), PiTimes(1))), "3");
  EXPECT_EQ(CountOf(RowTimes::Every(M("0"), M("-355/113"), PiTimes(1))), "3");
  EXPECT_EQ(CountOf(RowTimes::Every(M("0"), PiTimes(113), M("355"))), "2");
}

TEST(RowTimesEvery, MoreRowsThanAnyoneStores)
{
  RowTimes times = RowTimes::Every(M("0"), M("1"), M("1/1000000000000000000000000000000"));
  EXPECT_EQ(CountOf(times), "1000000000000000000000000000001");
  EXPECT_TRUE(*times.Next() == M("0"));
  EXPECT_TRUE(*times.Next() == M("1/1000000000000000000000000000000"));
}

TEST(RowTimesEvery, IntervalMustBePositive)
{
  EXPECT_EQ(MessageOf([] { RowTimes::Every(M("0"), M("1"), M("0")); }),
            "the time from one row to the next must be greater than 0, not 0");
  EXPECT_EQ(MessageOf([] { RowTimes::Every(M("0"), M("-1"), M("-1/10")); }),
            "the time from one row to the next must be greater than 0, not -0.1");
}

TEST(RowTimesPoints, EqualParts)
{
  EXPECT_EQ(Texts(RowTimes::Points(M("0"), M("1"), 4)), (Strings{"0", "0.25", "0.5", "0.75", "1"}));
  EXPECT_EQ(Texts(RowTimes::Points(M("1"), M("-1"), 2)), (Strings{"1", "0", "-1"}));
  EXPECT_EQ(Texts(RowTimes::Points(M("0"), M("1"), 1)), (Strings{"0", "1"}));
}

TEST(RowTimesPoints, OnePointIsOneRow)
{
  EXPECT_EQ(Texts(RowTimes::Points(M("1"), M("1"), 100)), Strings{"1"});
}

TEST(RowTimesPoints, EndIsTheEndItself)
{
  RowTimes times = RowTimes::Points(M("0"), M("1"), 3);
  Moment last;
  while (const auto time = times.Next()) last = *time;
  EXPECT_TRUE(last == M("1"));
}

TEST(RowTimesPoints, CountMustBePositive)
{
  EXPECT_EQ(MessageOf([] { RowTimes::Points(M("0"), M("1"), 0); }),
            "the number of parts must be at least 1, not 0");
}

TEST(RowTimesAt, InOrderAndEachOnce)
{
  EXPECT_EQ(Texts(RowTimes::At(M("0"), M("3"), {M("2"), M("1"), M("2"), M("3"), M("0")})),
            (Strings{"0", "1", "2", "3"}));
  EXPECT_EQ(Texts(RowTimes::At(M("3"), M("0"), {M("1"), M("2"), M("1")})), (Strings{"2", "1"}));
  EXPECT_EQ(Texts(RowTimes::At(M("0"), M("4"), {PiTimes(1), M("3"), PiTimes(1)})),
            (Strings{"3", "3.1416"}));
}

TEST(RowTimesAt, OutsideOfTheIntervalIsAnError)
{
  EXPECT_EQ(MessageOf([] {
              RowTimes::At(M("0"), M("1"), {M("1/2"), M("5/2")});
            }),
            "t = 2.5 lies outside the interval from 0 to 1");
  EXPECT_EQ(MessageOf([] { RowTimes::At(M("1"), M("0"), {M("-1/2")}); }),
            "t = -0.5 lies outside the interval from 1 to 0");
  EXPECT_EQ(MessageOf([] { RowTimes::At(M("0"), M("1"), {}); }), "no times");
}

TEST(RowTimesLast, EndOnly)
{
  EXPECT_EQ(Texts(RowTimes::Last(M("5"))), Strings{"5"});
}

TEST(RowTimesWidth, LongestOfAll)
{
  const TimeFormat format(15);
  EXPECT_EQ(RowTimes::Every(M("0"), M("10"), M("2")).Width(format), 2);
  EXPECT_EQ(RowTimes::Points(M("0"), M("1"), 100).Width(format), 4);
  EXPECT_EQ(RowTimes::Points(M("0"), M("-1"), 3).Width(format), 18);  // -0.333333333333333
  EXPECT_EQ(RowTimes::At(M("0"), M("1"), {M("1/2"), M("1")}).Width(format), 3);
  EXPECT_EQ(RowTimes::Last(M("12")).Width(format), 2);
}

TEST(RowTimesWidth, BoundOfMany)
{
  struct Sample {
    Moment from, to, interval;
    int longest;  // of a time of this kind, by hand
  };
  const TimeFormat format(15);
  const Sample samples[] = {
      {M("0"), M("1000000"), M("1"), 7},
      {M("0"), M("200"), M("1/1000"), 7},              // 199.999
      {M("0"), M("-200"), M("1/1000"), 8},             // -199.999
      {M("1/16"), M("200000"), M("1"), 11},            // 199999.0625
      {M("0"), M("1/10000"), M("1/10000000000"), 12},  // 0.0000000001 or an exponent
      {M("0"), M("100001"), M("1/3"), 16},             // 33333.3333333333
      {M("0"), PiTimes(100'000), M("1"), 16},          // 314159.265358979
  };
  for (const Sample& sample : samples) {
    RowTimes times = RowTimes::Every(sample.from, sample.to, sample.interval);
    ASSERT_TRUE(times.Count() > 100'000);
    const int width = times.Width(format);
    EXPECT_GE(width, sample.longest);
    EXPECT_LE(width, sample.longest + 9);
    for (int i = 0; i < 2000; ++i) {
      ASSERT_LE(static_cast<int>(format.Text(*times.Next()).size()), width);
    }
  }
}

}  // namespace varno::solve
