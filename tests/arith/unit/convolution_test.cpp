#include "arith/convolution.h"

#include <cstdint>
#include <random>
#include <string>

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "arith/range.h"
#include "arith/term_array.h"
#include "tests/support/scoped_precision.h"

namespace arith {

using namespace support;
namespace {

/// Numbers made of the limbs on which carries, borrows and cancellation depend.
class HostileNumbers {
 public:
  explicit HostileNumbers(std::uint64_t seed) : random(seed) {}

  void Set(mpf_ptr x)
  {
    const int largest = x->_mp_prec + 1;
    int size = Below(8) == 0 ? Below(largest + 1) : largest - Below(2);
    for (int i = 0; i < size; ++i) x->_mp_d[i] = Limb();
    while (size > 0 && x->_mp_d[size - 1] == 0) --size;
    x->_mp_size = Below(2) == 0 ? size : -size;
    x->_mp_exp = size == 0 ? 0 : Exponent();
  }

 private:
  int Below(int bound) { return static_cast<int>(random() % static_cast<std::uint64_t>(bound)); }

  mp_limb_t Limb()
  {
    switch (Below(6)) {
      case 0:
        return 0;
      case 1:
        return ~mp_limb_t{0};
      case 2:
        return 1;
      case 3:
        return ~mp_limb_t{0} - 1;
      case 4:
        return mp_limb_t{1} << 63;
      default:
        return random();
    }
  }

  mp_exp_t Exponent() { return Below(16) == 0 ? Below(12) - 6 : Below(3) - 1; }

  std::mt19937_64 random;
};

std::string Text(mpf_srcptr x)
{
  std::string text = "size " + std::to_string(x->_mp_size) + " exp " + std::to_string(x->_mp_exp);
  for (int i = std::abs(x->_mp_size); i > 0; --i) text += " " + std::to_string(x->_mp_d[i - 1]);
  return text;
}

void SumByGmp(Mpf& sum, const TermArray& a, const TermArray& b, int count)
{
  Mpf product;
  mpf_set_ui(sum, 0);
  for (int i = 0; i < count; ++i) {
    mpf_mul(product, a[i], b[count - 1 - i]);
    mpf_add(sum, sum, product);
  }
}

class ConvolutionAtPrecision : public testing::TestWithParam<int> {};

TEST_P(ConvolutionAtPrecision, EqualsGmpOnHostileOperands)
{
  const ScopedPrecision precision(static_cast<mp_bitcnt_t>(GetParam()));
  HostileNumbers numbers(20'011 + static_cast<std::uint64_t>(GetParam()));
  constexpr int kSequences = 300'000;
  for (int sequence = 0; sequence < kSequences; ++sequence) {
    const int count = 1 + sequence % 6;
    TermArray a(count - 1), b(count - 1);
    for (int i = 0; i < count; ++i) {
      numbers.Set(a[i]);
      numbers.Set(b[i]);
    }
    Mpf expected, sum;
    SumByGmp(expected, a, b, count);
    Convolve(sum, a[0], b[count - 1], count);
    if (mpf_cmp(sum, expected) == 0) continue;
    for (int i = 0; i < count; ++i) {
      ADD_FAILURE() << "a: " << Text(a[i]) << "\nb: " << Text(b[count - 1 - i]);
    }
    FAIL() << "sum      " << Text(sum) << "\nexpected " << Text(expected);
  }
}

/// Products at both ends of the range, beside one another and beside numbers around 1.
TEST_P(ConvolutionAtPrecision, EqualsGmpAtTheEndsOfTheRange)
{
  const ScopedPrecision precision(static_cast<mp_bitcnt_t>(GetParam()));
  HostileNumbers numbers(20'021 + static_cast<std::uint64_t>(GetParam()));
  constexpr mp_exp_t kEnds[] = {0, kLargestLimbExponent, -kLargestLimbExponent};
  constexpr int kSequences = 20'000;
  for (int sequence = 0; sequence < kSequences; ++sequence) {
    constexpr int kCount = 5;
    TermArray a(kCount - 1), b(kCount - 1);
    int code = sequence;
    for (int i = 0; i < kCount; ++i) {
      numbers.Set(a[i]);
      numbers.Set(b[kCount - 1 - i]);
      const mp_exp_t move = kEnds[code % 3];
      code /= 3;
      if (mpf_sgn(a[i]) != 0) a[i]->_mp_exp += move;
      if (mpf_sgn(b[kCount - 1 - i]) != 0) b[kCount - 1 - i]->_mp_exp += move;
    }
    Mpf expected, sum;
    SumByGmp(expected, a, b, kCount);
    Convolve(sum, a[0], b[kCount - 1], kCount);
    ASSERT_EQ(mpf_cmp(sum, expected), 0)
        << "sum      " << Text(sum) << "\nexpected " << Text(expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Bits, ConvolutionAtPrecision,
                         testing::Values(53, 64, 80, 128, 192, 256, 320));

TEST(Convolution, OfNothingIsZero)
{
  const ScopedPrecision precision(80);
  Mpf sum(5.0);
  Convolve(sum, nullptr, nullptr, 0);
  EXPECT_EQ(sum.Sign(), 0);
}

TEST(Convolution, PairsAscendingWithDescending)
{
  const ScopedPrecision precision(80);
  TermArray a(2), b(2);
  for (int i = 0; i < 3; ++i) {
    mpf_set_ui(a[i], static_cast<unsigned long>(i) + 1);
    mpf_set_ui(b[i], i == 0 ? 10 : i == 1 ? 100 : 1000);
  }
  Mpf sum;
  Convolve(sum, a[0], b[2], 3);
  EXPECT_EQ(mpf_cmp_ui(sum, 1 * 1000 + 2 * 100 + 3 * 10), 0);
}

}  // namespace
}  // namespace arith
