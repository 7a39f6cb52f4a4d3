#pragma once

#include "varno/core/expr.h"

namespace varno {

/// The empty expression. It has neither terms nor a value; a term asked of it ends the run.
class NothingExpr final : public Expr {
 public:
  NothingExpr() = default;
  void GetDY(int, mpf_t&) override {}
  void Result(mpf_t&, bool) override {}
  void MakeDerivative() override {}
  void GetInitValue(mpf_t&) override {}
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  OperandHandles Operands() override { return {}; }
};

}  // namespace varno
