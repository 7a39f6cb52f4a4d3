#include "solve/fixed/residues.h"

#include <array>
#include <vector>

#include "solve/fixed/int128.h"

namespace varno::solve {

namespace {

constexpr int kRootOrderLog2 = 20;

/// The largest such primes, and an element of order 2^20 for each.
struct Prime {
  std::int64_t p, root;
};
constexpr std::array<Prime, kModulusCount> kPrimes = {{{281474975662081, 234064648989829},
                                                       {281474945253377, 228734306123773},
                                                       {281474941059073, 34924242519586},
                                                       {281474931621889, 38591293501225},
                                                       {281474919038977, 31028276965411},
                                                       {281474904358913, 18564171010086},
                                                       {281474898067457, 216432682853520},
                                                       {281474872901633, 67283959008370}}};

std::int64_t Multiply(std::int64_t a, std::int64_t b, std::int64_t p)
{
  return static_cast<std::int64_t>(static_cast<Int128>(a) * b % p);
}

std::int64_t Power(std::int64_t a, std::int64_t exponent, std::int64_t p)
{
  std::int64_t power = 1;
  for (; exponent > 0; exponent >>= 1) {
    if (exponent % 2 != 0) power = Multiply(power, a, p);
    a = Multiply(a, a, p);
  }
  return power;
}

double Reduced(std::int64_t x, std::int64_t p)
{
  x %= p;
  if (x > p / 2) x -= p;
  if (x < -(p / 2)) x += p;
  return static_cast<double>(x);
}

/// Bit k of i stands for the root of order 2^(k + 2).
std::vector<double> RootsByReversedBits(std::int64_t root, std::int64_t p)
{
  std::vector<std::int64_t> powers = {1};
  for (int k = 0; (2 << k) < kMostTransform; ++k) {
    const std::int64_t next = Power(root, std::int64_t{1} << (kRootOrderLog2 - k - 2), p);
    for (std::size_t i = 0, count = powers.size(); i < count; ++i)
      powers.push_back(Multiply(powers[i], next, p));
  }
  std::vector<double> roots;
  roots.reserve(powers.size());
  for (const std::int64_t power : powers) roots.push_back(Reduced(power, p));
  return roots;
}

struct ModulusWithRoots {
  explicit ModulusWithRoots(const Prime& prime)
      : roots(RootsByReversedBits(prime.root, prime.p)),
        inverseRoots(RootsByReversedBits(Power(prime.root, prime.p - 2, prime.p), prime.p)),
        modulus{static_cast<double>(prime.p), 1 / static_cast<double>(prime.p), roots.data(),
                inverseRoots.data()}
  {}

  std::vector<double> roots, inverseRoots;
  Modulus modulus;
};

}  // namespace

const Modulus& ModulusOf(int i)
{
  static const std::vector<ModulusWithRoots> moduli(kPrimes.begin(), kPrimes.end());
  return moduli[i].modulus;
}

double ResidueOf(const Modulus& m, std::int64_t x)
{
  return Reduced(x, static_cast<std::int64_t>(m.p));
}

double ProductOf(const Modulus& m, double a, double b)
{
  const auto p = static_cast<std::int64_t>(m.p);
  return Reduced(Multiply(static_cast<std::int64_t>(a), static_cast<std::int64_t>(b), p), p);
}

double InverseOf(const Modulus& m, double a)
{
  const auto p = static_cast<std::int64_t>(m.p);
  return Reduced(Power(static_cast<std::int64_t>(a), p - 2, p), p);
}

double InverseOfModulus(int i, int j)
{
  static const std::vector<double> inverses = [] {
    std::vector<double> found;
    for (const Prime& p : kPrimes) {
      for (const Prime& q : kPrimes) found.push_back(Reduced(Power(q.p, p.p - 2, p.p), p.p));
    }
    return found;
  }();
  return inverses[static_cast<std::size_t>(i) * kModulusCount + j];
}

const ResidueKernels* BestResidueKernels()
{
#if defined(__x86_64__)
  const bool isFused = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
  if (isFused && FusedResidueKernels() != nullptr) return FusedResidueKernels();
#endif
  return PlainResidueKernels();
}

}  // namespace varno::solve
