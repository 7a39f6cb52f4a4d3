#pragma once

#include "varno/core/expr.h"

namespace varno {

/// The independent variable t; each occurrence of t in the input is a node of its own.
///
/// On purpose, in the series of a right-hand side t does not behave as a textbook would have it:
/// term 1 is 1 whatever the step, and term 0 is the node's own `value`, which follows `_T` only
/// where somebody asks the node for its value at the end of the step. In the right-hand side of a
/// differential equation nobody does, and term 0 stays 0.
class Time final : public Expr {
 public:
  Time();

  /// Never called: terms are answered directly.
  void GetDY(int k, mpf_t& out) override;
  void ResetTerms() override;
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
  TermRow Terms(int k) override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  OperandHandles Operands() override { return {}; }

 private:
  TermArray row{1};  ///< term 0, always `value`, and term 1
};

}  // namespace varno
