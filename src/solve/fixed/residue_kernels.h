#pragma once

#include "solve/fixed/residues.h"

namespace varno::solve {

/// x to the next integer, |x| < 2^51
inline double RoundToInteger(double x)
{
  constexpr double kShift = 0x1.8p52;
  return (x + kShift) - kShift;
}

/// The kernels, by a way to multiply two residues and to reduce a number modulo p. That is a type
/// of its own in each source that has one, which may be compiled for one kind of processor.
template <class Residue>
struct KernelsBy {
  static void Transform(const Modulus& m, double* data, int length)
  {
    const Residue by{m.p, m.inverse};
    // The polynomial is split modulo x^half - w and x^half + w, and so on.
    int blocks = 1;
    for (int half = length / 2; half > 0; half /= 2, blocks *= 2) {
      for (int block = 0; block < blocks; ++block) {
        const double w = m.roots[block];
        double* __restrict x = data + 2L * half * block * kLanes;
        double* __restrict y = x + long{half} * kLanes;
        for (long i = 0; i < long{half} * kLanes; i += kLanes) {
          for (int lane = 0; lane < kLanes; ++lane) {
            const double first = x[i + lane], second = by.Multiply(y[i + lane], w);
            x[i + lane] = first + second;
            y[i + lane] = first - second;
          }
        }
      }
    }
  }

  static void TransformBack(const Modulus& m, double* data, int length)
  {
    const Residue by{m.p, m.inverse};
    int blocks = length / 2;
    for (int half = 1; half < length; half *= 2, blocks /= 2) {
      for (int block = 0; block < blocks; ++block) {
        const double w = m.inverseRoots[block];
        double* __restrict x = data + 2L * half * block * kLanes;
        double* __restrict y = x + long{half} * kLanes;
        for (long i = 0; i < long{half} * kLanes; i += kLanes) {
          for (int lane = 0; lane < kLanes; ++lane) {
            const double sum = x[i + lane] + y[i + lane], rest = x[i + lane] - y[i + lane];
            x[i + lane] = by.Reduce(sum);
            y[i + lane] = by.Multiply(rest, w);
          }
        }
      }
    }
  }

  static void Reduce(const Modulus& m, double* __restrict data, long count)
  {
    const Residue by{m.p, m.inverse};
    for (long i = 0; i < count; ++i) data[i] = by.Reduce(data[i]);
  }

  static void Multiply(const Modulus& m, const double* __restrict a, const double* __restrict b,
                       double* __restrict result, long count)
  {
    const Residue by{m.p, m.inverse};
    for (long i = 0; i < count; ++i) result[i] = by.Multiply(by.Reduce(a[i]), by.Reduce(b[i]));
  }

  static void AddProducts(const Modulus& m, const double* __restrict a, const double* __restrict b,
                          double* __restrict result, long count)
  {
    const Residue by{m.p, m.inverse};
    for (long i = 0; i < count; ++i)
      result[i] = by.Reduce(result[i] + by.Multiply(by.Reduce(a[i]), by.Reduce(b[i])));
  }

  static void Scale(const Modulus& m, double* __restrict data, double factor, long count)
  {
    const Residue by{m.p, m.inverse};
    for (long i = 0; i < count; ++i) data[i] = by.Multiply(data[i], factor);
  }

  static void ScaleAndAdd(const Modulus& m, double* __restrict data, double factor,
                          const double* __restrict added, long count)
  {
    const Residue by{m.p, m.inverse};
    for (long i = 0; i < count; ++i) data[i] = by.Multiply(data[i], factor) + added[i];
  }

  static void SubtractAndScale(const Modulus& m, double* __restrict data,
                               const double* __restrict other, double factor, long count)
  {
    const Residue by{m.p, m.inverse};
    for (long i = 0; i < count; ++i) data[i] = by.Reduce(by.Multiply(data[i] - other[i], factor));
  }

  static const ResidueKernels* All()
  {
    static constexpr ResidueKernels kKernels = {Transform,   TransformBack,   Reduce,
                                                Multiply,    AddProducts,     Scale,
                                                ScaleAndAdd, SubtractAndScale};
    return &kKernels;
  }
};

}  // namespace varno::solve
