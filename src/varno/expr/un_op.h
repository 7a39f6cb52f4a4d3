#pragma once

#include <utility>

#include "varno/core/expr.h"

namespace varno {

/// A node of one operand. By itself it has neither terms nor a value nor a derivative: only
/// UnMinus has terms, and the elementary functions are replaced before the integration.
class UnOp : public Expr {
 public:
  /// Ends the run with a message: the class has no terms.
  void GetDY(int k, mpf_t& out) override;
  /// Ends the run with a message: the class has no value of its own.
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override {}
  OperandHandles Operands() override { return OperandHandles(operand); }

  const Ref& Operand() const { return operand; }

 protected:
  UnOp(ExprType type, Ref a) : Expr(type, true), operand(std::move(a)) {}

  Ref operand;
};

/// Negation -a. Term k is -a[k].
class UnMinus final : public UnOp {
 public:
  explicit UnMinus(Ref a) : UnOp(kUnMinus, std::move(a)) {}
  void GetDY(int k, mpf_t& out) override;
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
};

}  // namespace varno
