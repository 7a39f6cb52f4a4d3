#pragma once

#include <utility>

#include "varno/expr/bin_op.h"

namespace varno {

/// Quotient c = a / b. Terms follow from c b = a, docs/varno/recurrences.md (4); term k costs k
/// multiplications and a division. A zero b[0] is not caught: GMP ends the process by SIGFPE.
class Divide final : public BinOp {
 public:
  Divide(Ref a, Ref b) : BinOp(kDivide, std::move(a), std::move(b)) {}
  void GetDY(int k, mpf_t& out) override;
  void MakeDerivative() override;
};

}  // namespace varno
