#include "varno/expr/multiply.h"

#include <algorithm>

#include "arith/convolution.h"

namespace varno {

using arith::Convolve;

void Multiply::GetDY(int k, mpf_t& out)
{
  if (k < 0) {
    mpf_set_ui(out, 0);
    return;
  }
  if (!Convolves()) {
    const mpf_srcptr a = left->Term(left->IsConstantOverStep() ? 0 : k);
    const mpf_srcptr b = right->Term(right->IsConstantOverStep() ? 0 : k);
    mpf_mul(out, a, b);
    return;
  }
  // term k = sum over j = 0..k of a[k-j] b[j], added in this order; beyond a row's end terms are 0
  const TermRow a = left->Terms(k);
  const TermRow b = right->Terms(k);
  const int first = std::max(0, k - (a.count - 1));
  const int last = std::min(k, b.count - 1);
  Convolve(out, b.terms + first, a.terms + (k - first), last - first + 1);
}

void Multiply::MakeDerivative()
{
  // (a b)' = a' b + a b', with a' built first, hence the braces
  derivative = Ref{kPlus, Ref(kMultiply, left->Derivative(), right),
                   Ref(kMultiply, left, right->Derivative())};
}

void Multiply::GetInitValue(mpf_t& out)
{
  // Unlike the other operations, right before left: functions number their equations in this order.
  Mpf a, b;
  right->InitValue(b);
  left->InitValue(a);
  operation.apply(out, b, a);
}

}  // namespace varno
