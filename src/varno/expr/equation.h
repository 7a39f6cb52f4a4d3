#pragma once

#include <string>

#include "varno/core/expr.h"

namespace varno {

/// A reference to a variable by name, as the parser reads it. Conversion puts the variable itself
/// in its place; until then it has neither terms nor a value nor a derivative.
class Equation final : public Expr {
 public:
  /// `derivativeOrder` is that of the reference, as in y''. It is kept with the reference, which
  /// means the variable y whatever the order.
  Equation(std::string name, int derivativeOrder);

  void GetDY(int, mpf_t&) override {}
  void Result(mpf_t&, bool) override {}
  void MakeDerivative() override {}
  void GetInitValue(mpf_t&) override {}
  /// The variable of that name; ends the run with a message when no equation defines it.
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  OperandHandles Operands() override { return {}; }

  int DerivativeOrder() const { return derivativeOrder; }

  /// Makes a handle of a reference point at the variable; ends the run with a message when no
  /// equation defines it.
  static void ResolveRef(Ref& reference);

 private:
  std::string name;
  int derivativeOrder;
};

}  // namespace varno
