#include "varno/expr/divide.h"

#include <algorithm>

#include "arith/convolution.h"

namespace varno {

using arith::Convolve;

void Divide::GetDY(int k, mpf_t& out)
{
  // term k = (a[k] - sum over j = 0..k-1 of c[j] b[k-j]) / b[0], c[j] being this node's own terms
  const mpf_srcptr a = left->Term(k);
  const TermRow b = right->Terms(k);
  const mpf_srcptr c = k > 0 ? Terms(k - 1).terms : nullptr;
  const int first = std::max(0, k - (b.count - 1));
  Convolve(out, c + first, b.terms + (k - first), k - first);
  mpf_sub(out, a, out);
  mpf_div(out, out, b.terms);
}

void Divide::MakeDerivative()
{
  // (a / b)' = (a' b - a b') / (b b), with a' built first, hence the braces
  const Ref numerator{kMinus, Ref(kMultiply, left->Derivative(), right),
                      Ref(kMultiply, left, right->Derivative())};
  derivative = Ref(kDivide, numerator, Ref(kMultiply, right, right));
}

}  // namespace varno
