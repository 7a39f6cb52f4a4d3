#pragma once

#include <cstdint>

namespace varno::solve {

/// A prime p < 2^48 with p - 1 a multiple of 2^20. Residues are doubles that are integers; reduced
/// ones are at most 0.51 p in size.
struct Modulus {
  double p;
  double inverse;  // 1/p
  /// By i: the root of unity with exponent the bits of i in reverse, in units of a quarter turn
  /// for the lowest: what the i-th half of a transform is split by, at every level.
  const double* roots;
  const double* inverseRoots;
};

inline constexpr int kModulusBits = 48;
inline constexpr int kModulusCount = 8;
inline constexpr int kMostTransform = 1 << 15;

/// The i-th prime, i < kModulusCount.
const Modulus& ModulusOf(int i);

/// x modulo p, reduced.
double ResidueOf(const Modulus& m, std::int64_t x);
/// a b modulo p, reduced.
double ProductOf(const Modulus& m, double a, double b);
double InverseOf(const Modulus& m, double a);
/// 1/q modulo p, of the j-th prime q and the i-th p.
double InverseOfModulus(int i, int j);

/// Transforms work on so many sequences at a time: element i of sequence s is data[i kLanes + s].
inline constexpr int kLanes = 8;

/// What is done with many residues at a time.
struct ResidueKernels {
  /// The values of polynomials of degree below `length`, a power of 2, at all roots of unity of
  /// that order, in an order of its own. Takes reduced residues, gives some up to 14 p.
  void (*transform)(const Modulus& m, double* data, int length);
  /// Back to coefficients, times `length`. Takes and gives residues below p.
  void (*transformBack)(const Modulus& m, double* data, int length);
  void (*reduce)(const Modulus& m, double* data, long count);
  /// result = a b, or += a b; a and b as transforms leave them
  void (*multiply)(const Modulus& m, const double* a, const double* b, double* result, long count);
  void (*addProducts)(const Modulus& m, const double* a, const double* b, double* result,
                      long count);
  /// data *= factor
  void (*scale)(const Modulus& m, double* data, double factor, long count);
  /// data = data factor + added, |added| < p
  void (*scaleAndAdd)(const Modulus& m, double* data, double factor, const double* added,
                      long count);
  /// data = (data - other) factor, reduced
  void (*subtractAndScale)(const Modulus& m, double* data, const double* other, double factor,
                           long count);
};

/// Those for any processor; those for AVX2 and FMA, null where the compiler has neither; the
/// fastest ones for this processor. All give the same residues.
const ResidueKernels* PlainResidueKernels();
const ResidueKernels* FusedResidueKernels();
const ResidueKernels* BestResidueKernels();

}  // namespace varno::solve
