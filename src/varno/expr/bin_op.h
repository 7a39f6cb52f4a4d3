#pragma once

#include "varno/core/expr.h"
#include "varno/expr/binary_operator.h"

namespace varno {

/// A node of two operands. What the four operations share is here: the value, the initial value,
/// the conversion and the text follow from the operation on numbers.
class BinOp : public Expr {
 public:
  void Result(mpf_t& out, bool) override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  OperandHandles Operands() override { return {left, right}; }

  const Ref& Left() const { return left; }
  const Ref& Right() const { return right; }

 protected:
  BinOp(ExprType type, Ref a, Ref b);

  const BinaryOperator& operation;
  Ref left;
  Ref right;
};

}  // namespace varno
