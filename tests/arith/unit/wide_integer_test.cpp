#include "arith/wide_integer.h"

#include <limits>

#include <gtest/gtest.h>

namespace arith {
namespace {

TEST(WideIntegerTest, TextIsDecimal)
{
  constexpr long kLargest = std::numeric_limits<long>::max();
  const struct {
    WideInteger n;
    const char* text;
  } rows[] = {
      {0, "0"},
      {-7, "-7"},
      {999'999'999'999'999'999, "999999999999999999"},
      {1'000'000'000'000'000'000, "1000000000000000000"},
      {-1'000'000'000'000'000'042, "-1000000000000000042"},
      {kLargest, "9223372036854775807"},
      {WideInteger{kLargest} + 1, "9223372036854775808"},
      {-WideInteger{kLargest} - 1, "-9223372036854775808"},
      {WideInteger{kLargest} * 4 + 4, "36893488147419103232"},
      {-WideInteger{kLargest} * 4 - 4, "-36893488147419103232"},
  };
  for (const auto& [n, text] : rows) EXPECT_EQ(ToText(n), text);
}

}  // namespace
}  // namespace arith
