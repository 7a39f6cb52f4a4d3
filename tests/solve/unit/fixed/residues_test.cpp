// Products of polynomials modulo primes, against exact integers.

#include "solve/fixed/residues.h"

#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "solve/fixed/int128.h"

namespace varno::solve {
namespace {

class Residues : public testing::TestWithParam<const ResidueKernels*> {};

std::int64_t Modulo(Int128 x, double p)
{
  const auto modulus = static_cast<Int128>(p);
  const auto rest = static_cast<std::int64_t>(x % modulus);
  return rest < 0 ? rest + static_cast<std::int64_t>(p) : rest;
}

/// Element i of sequence s: as large as residues come, of either sign, or any.
double Element(std::mt19937_64& random, const Modulus& m, int s)
{
  const double largest = (m.p - 1) / 2;
  if (s < 2) return largest;
  if (s < 4) return -largest;
  return ResidueOf(m, static_cast<std::int64_t>(random() >> 1));
}

TEST_P(Residues, MultiplyPolynomials)
{
  const ResidueKernels& kernels = *GetParam();
  std::mt19937_64 random(4);
  for (int prime = 0; prime < kModulusCount; ++prime) {
    const Modulus& m = ModulusOf(prime);
    for (const int length : {1, 2, 8, 64}) {
      std::vector<double> a(static_cast<std::size_t>(length) * kLanes), b = a, product = a;
      for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = Element(random, m, static_cast<int>(i % kLanes));
        b[i] = Element(random, m, static_cast<int>(i % kLanes % 3));
      }
      std::vector<double> x = a, y = b;
      const auto count = static_cast<long>(a.size());
      kernels.transform(m, x.data(), length);
      kernels.transform(m, y.data(), length);
      kernels.multiply(m, x.data(), y.data(), product.data(), count);
      kernels.addProducts(m, x.data(), y.data(), product.data(), count);
      kernels.transformBack(m, product.data(), length);
      kernels.scale(m, product.data(), InverseOf(m, ResidueOf(m, std::int64_t{2} * length)), count);
      kernels.reduce(m, product.data(), count);
      for (int s = 0; s < kLanes; ++s) {
        for (int k = 0; k < length; ++k) {
          Int128 expected = 0;
          for (int j = 0; j < length; ++j) {
            const int other = (k - j + length) % length;
            expected += Modulo(
                static_cast<Int128>(a[j * kLanes + s]) * static_cast<Int128>(b[other * kLanes + s]),
                m.p);
          }
          const double found = product[k * kLanes + s];
          EXPECT_LE(std::abs(found), 0.51 * m.p);
          ASSERT_EQ(Modulo(expected, m.p), Modulo(static_cast<Int128>(found), m.p))
              << "term " << k << " of " << length << ", sequence " << s;
        }
      }
    }
  }
}

// Sums grow with the length: the longest transforms, of elements all alike
TEST_P(Residues, TransformTheLongest)
{
  const ResidueKernels& kernels = *GetParam();
  const Modulus& m = ModulusOf(0);
  const double largest = (m.p - 1) / 2;
  for (const auto transform : {kernels.transform, kernels.transformBack}) {
    std::vector<double> x(static_cast<std::size_t>(kMostTransform) * kLanes, largest);
    transform(m, x.data(), kMostTransform);
    kernels.reduce(m, x.data(), static_cast<long>(x.size()));
    EXPECT_EQ(Modulo(static_cast<Int128>(largest) * kMostTransform, m.p),
              Modulo(static_cast<Int128>(x[0]), m.p));
    for (std::size_t i = kLanes; i < x.size(); ++i) ASSERT_EQ(x[i], 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Plain, Residues, testing::Values(PlainResidueKernels()));
INSTANTIATE_TEST_SUITE_P(Best, Residues, testing::Values(BestResidueKernels()));

}  // namespace
}  // namespace varno::solve
