#pragma once

#include "varno/core/expr.h"

namespace varno {

/// A constant. Term 0 is the constant, all others are 0.
class Number final : public Expr {
 public:
  explicit Number(mpf_srcptr constant);
  /// From a decimal text, such as "0.5".
  explicit Number(const char* decimal);
  explicit Number(double constant);
  explicit Number(int constant);

  /// Never called: terms are answered directly.
  void GetDY(int k, mpf_t& out) override;
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
  TermRow Terms(int k) override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  OperandHandles Operands() override { return {}; }

  mpf_ptr Constant() { return value; }
};

/// The constant of a Number; null for any other node.
mpf_ptr ConstantOf(const Expr::Ref& node);

}  // namespace varno
