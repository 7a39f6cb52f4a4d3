// Compiled for processors with AVX2 and FMA, where the compiler can.

#include "solve/fixed/residue_kernels.h"

namespace varno::solve {

#if defined(__FMA__)

namespace {

struct FusedResidue {
  double p, inverse;

  double Multiply(double a, double b) const
  {
    // h + l = a b; h - q p is a double, and so is its sum with l (docs/solve/fixed-point.md).
    const double h = a * b, l = __builtin_fma(a, b, -h);
    return __builtin_fma(-RoundToInteger(h * inverse), p, h) + l;
  }

  double Reduce(double x) const { return __builtin_fma(-RoundToInteger(x * inverse), p, x); }
};

}  // namespace

const ResidueKernels* FusedResidueKernels()
{
  return KernelsBy<FusedResidue>::All();
}

#else

const ResidueKernels* FusedResidueKernels()
{
  return nullptr;
}

#endif

}  // namespace varno::solve
