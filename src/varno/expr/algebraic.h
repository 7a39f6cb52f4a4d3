#pragma once

#include <string>

#include "varno/expr/differential.h"

namespace varno {

/// A variable defined by an expression, x = f.
///
/// It enters the series of other expressions as a constant over the step, equal to its value at the
/// start of the step. It starts from 0, or from the constant behind "&".
class Algebraic final : public Differential {
 public:
  Algebraic(std::string name, Ref rightHandSide);

  /// Never called: terms are answered directly.
  void GetDY(int k, mpf_t& out) override;
  /// On a new step, also after a rejected one: the last value becomes the start value.
  void ResetTerms() override;
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
  TermRow Terms(int k) override;
  void GetInitValue(mpf_t& out) override;
  void Print(std::ostream& out) const override;
  void DumpTree(std::ostream& out) const override;
  /// There is none: k is -1.
  void LastTerm(int& k, mpf_t& out) const override;

 private:
  class ScopedVisit;

  bool visited = false;  ///< its initial value or derivative is being worked out
};

}  // namespace varno
