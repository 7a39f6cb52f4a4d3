#pragma once

#include <utility>

#include "varno/expr/bin_op.h"

namespace varno {

/// Sum a + b. Term k is a[k] + b[k].
class Plus final : public BinOp {
 public:
  Plus(Ref a, Ref b) : BinOp(kPlus, std::move(a), std::move(b)) {}
  void GetDY(int k, mpf_t& out) override;
  void MakeDerivative() override;
};

/// Difference a - b. Term k is a[k] - b[k].
class Minus final : public BinOp {
 public:
  Minus(Ref a, Ref b) : BinOp(kMinus, std::move(a), std::move(b)) {}
  void GetDY(int k, mpf_t& out) override;
  void MakeDerivative() override;
};

}  // namespace varno
