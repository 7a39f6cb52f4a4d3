#pragma once

#include <utility>

#include "varno/expr/bin_op.h"

namespace varno {

/// Product a b. Terms follow the Cauchy product, docs/varno/recurrences.md (3); term k costs k + 1
/// multiplications.
class Multiply final : public BinOp {
 public:
  Multiply(Ref a, Ref b) : BinOp(kMultiply, std::move(a), std::move(b)) {}
  void GetDY(int k, mpf_t& out) override;
  void MakeDerivative() override;
  void GetInitValue(mpf_t& out) override;

  /// Whether a term needs all earlier terms of the factors: not where just one factor varies.
  bool Convolves() const { return left->IsConstantOverStep() == right->IsConstantOverStep(); }
};

}  // namespace varno
