#pragma once

#include <vector>

#include "varno/core/expr.h"

namespace varno {

/// One of the four operations on numbers and on expressions.
struct BinaryOperator {
  ExprType type;
  char symbol;
  void (*apply)(mpf_ptr result, mpf_srcptr a, mpf_srcptr b);
};

/// The row of a binary kind; null for any other kind.
const BinaryOperator* FindBinaryOperator(ExprType type);

/// A node of two operands. What the four operations share is here: the value, the initial value,
/// the conversion and the text follow from the operation on numbers.
class BinOp : public Expr {
 public:
  void Result(mpf_t& out, bool) override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  void ReleaseReferences(std::vector<Ref>& released) override;

  const Ref& Left() const { return left; }
  const Ref& Right() const { return right; }
  void SetOperands(const Ref& a, const Ref& b)
  {
    left = a;
    right = b;
  }

 protected:
  BinOp(ExprType type, Ref a, Ref b);

  const BinaryOperator& operation;
  Ref left;
  Ref right;
};

}  // namespace varno
