#include "solve/fixed/residue_kernels.h"

namespace varno::solve {

namespace {

/// By halves of 26 bits: T. J. Dekker, A floating-point technique for extending the available
/// precision, Numerische Mathematik 18, 1971.
struct SplitResidue {
  double p, inverse;

  static double HighHalf(double x)
  {
    const double shifted = x * 134217729.0;  // 2^27 + 1
    return shifted - (shifted - x);
  }

  /// a b - fl(a b)
  static double RestOf(double a, double b, double product)
  {
    const double aHigh = HighHalf(a), aLow = a - aHigh;
    const double bHigh = HighHalf(b), bLow = b - bHigh;
    return ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow;
  }

  double Multiply(double a, double b) const
  {
    const double h = a * b, q = RoundToInteger(h * inverse), qp = q * p;
    return ((h - qp) - RestOf(q, p, qp)) + RestOf(a, b, h);
  }

  double Reduce(double x) const { return x - RoundToInteger(x * inverse) * p; }
};

}  // namespace

const ResidueKernels* PlainResidueKernels()
{
  return KernelsBy<SplitResidue>::All();
}

}  // namespace varno::solve
