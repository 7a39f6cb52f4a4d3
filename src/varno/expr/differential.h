#pragma once

#include <string>

#include "varno/core/expr.h"

namespace varno {

/// A variable y with the differential equation y' = f.
///
/// Term 0 is the value at the start of the step; term k is f[k-1] h / k, docs/varno/recurrences.md
/// (5). The value at the end of the step is the sum of the terms.
class Differential : public Expr {
 public:
  /// The print lists of the settings decide, by name, whether the variable is printed.
  Differential(std::string name, Ref rightHandSide);

  void GetDY(int k, mpf_t& out) override;
  /// On a new step: the value at the end of the step before becomes `value` and term 0, unless the
  /// step before was rejected.
  void ResetTerms() override;
  /// Sums the terms until `_ZEROTERMS` terms in a row are small against the sum or `_NTERMS` terms
  /// are added, and raises `_WORK0` to the number of terms that counted.
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  OperandHandles Operands() override { return OperandHandles(rightHandSide); }

  /// Writes the equation as one line of the tree dump.
  virtual void DumpTree(std::ostream& out) const;
  /// The last term but one of those computed in this step, with its index k; k is negative and
  /// `out` untouched when there is none. On purpose not the very last one: the stiffness test
  /// compares what this gives.
  virtual void LastTerm(int& k, mpf_t& out) const;

  const std::string& Name() const { return name; }
  /// Whether the print lists let the variable into the output.
  bool IsPrinted() const { return printed; }
  const Ref& RightHandSide() const { return rightHandSide; }
  void SetRightHandSide(Ref expression);
  /// Sets the value at the start of the step, at its end, and at the initial time.
  void SetStartValue(mpf_srcptr start);

  /// A step function in the right-hand side, which is accepted by the language but has no value.
  void MarkStepFunction() { usesStepFunction = true; }
  bool UsesStepFunction() const { return usesStepFunction; }

  /// The step number under which they are cached.
  int TermStamp() const { return termStamp; }
  /// Cached term k, 0 <= k < CachedTerms().
  mpf_srcptr CachedTerm(int k) const { return terms[k]; }

 protected:
  Differential(ExprType type, bool withTerms, std::string name, Ref rightHandSide);

  std::string name;
  Ref rightHandSide;

 private:
  bool printed;
  bool usesStepFunction = false;
};

/// The variable that a handle of the equation table points at.
inline Differential& VariableOf(const Expr::Ref& entry)
{
  return static_cast<Differential&>(*entry);
}

}  // namespace varno
