// The terms of each elementary function against coefficients by mpmath (make_taylor_terms.py).

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "solve/graph/operation.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/taylor_terms.h"

namespace varno::solve {
namespace {

using support::Log2;
using support::PowerSeries;

/// Rounding of terms 0..8 may add up to this many bits.
constexpr double kLostBits = 8;

using FunctionAndPoint = std::pair<std::string, std::string>;

const std::map<FunctionAndPoint, PowerSeries>& Coefficients()
{
  static const std::map<FunctionAndPoint, PowerSeries> coefficients = [] {
    std::map<FunctionAndPoint, PowerSeries> read;
    std::ifstream file(VARNO_TEST_DATA "/taylor_terms.txt");
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with('#')) continue;
      std::istringstream words(line);
      std::string function, point, value;
      std::size_t k = 0;
      words >> function >> point >> k >> value;
      PowerSeries& terms = read[{function, point}];
      EXPECT_EQ(terms.size(), k) << line.substr(0, 80);
      terms.push_back(support::FromText(value, support::kReferenceBits));
    }
    return read;
  }();
  return coefficients;
}

Operation FunctionNamed(const std::string& name)
{
  for (int i = 0; i <= static_cast<int>(Operation::kAtan2); ++i) {
    if (FunctionName(static_cast<Operation>(i)) == name) return static_cast<Operation>(i);
  }
  ADD_FAILURE() << name;
  return Operation::kNumber;
}

/// The exponent of a scale with which the terms keep about the same size.
long ScaleExponent(const PowerSeries& coefficients)
{
  std::size_t first = 1, last = coefficients.size() - 1;
  while (coefficients[first].IsZero()) ++first;
  while (coefficients[last].IsZero()) --last;
  if (first >= last) return 0;
  return std::lround((Log2(coefficients[first]) - Log2(coefficients[last])) /
                     static_cast<double>(last - first));
}

class TaylorTerms : public testing::TestWithParam<mpfr_prec_t> {};

TEST_P(TaylorTerms, AreThoseOfMpmath)
{
  const mpfr_prec_t bits = GetParam();
  ASSERT_FALSE(Coefficients().empty());
  for (const auto& [key, coefficients] : Coefficients()) {
    const auto& [name, point] = key;
    const Operation function = FunctionNamed(name);
    const long scale = ScaleExponent(coefficients);
    PowerSeries expected = coefficients;
    for (std::size_t k = 0; k < expected.size(); ++k) {
      mpfr_mul_2si(expected[k], expected[k], scale * static_cast<long>(k), MPFR_RNDN);
    }
    const PowerSeries terms = support::TermsOf(
        [&](support::Equations& m) { return support::Function(function, m.Time()); },
        {.bits = bits,
         .order = static_cast<int>(coefficients.size()) - 1,
         .time = Rational(point),
         .scaleExponent = scale});

    // The point itself is rounded, which moves each term by the next one, times the point, times
    // 2^-bits.
    const double pointLog2 = Rational(point) == 0 ? -1e9 : Log2(support::FromText(point, 64));
    const double largest =
        support::LargestLog2(expected) + std::max(0.0, pointLog2 - static_cast<double>(scale) + 3);
    for (std::size_t k = 0; k < terms.size(); ++k) {
      EXPECT_TRUE(
          support::IsWithin(largest + kLostBits - static_cast<double>(bits), terms[k], expected[k]))
          << name << " at " << point << ", term " << k;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Bits, TaylorTerms, testing::Values(64, 113, 256, 1000),
                         testing::PrintToStringParamName());

TEST(TaylorTermsData, CoversAllFunctionsOfOneArgument)
{
  for (int i = static_cast<int>(Operation::kSqrt); i <= static_cast<int>(Operation::kErf); ++i) {
    const std::string name(FunctionName(static_cast<Operation>(i)));
    const auto hasName = [&](const auto& entry) { return entry.first.first == name; };
    EXPECT_TRUE(std::ranges::any_of(Coefficients(), hasName)) << name;
  }
}

}  // namespace
}  // namespace varno::solve
