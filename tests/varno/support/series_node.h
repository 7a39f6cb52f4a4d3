#pragma once

#include <vector>

#include "varno/core/expr.h"

namespace varno {

/// A node with prescribed Taylor terms, 0 from some index on, that counts what is computed.
///
/// Its value at the end of the step is the sum of the terms, its initial value is term 0. It has no
/// derivative, and every conversion gives a new copy of it.
class SeriesNode final : public Expr {
 public:
  explicit SeriesNode(std::vector<double> series);
  ~SeriesNode() override;

  void GetDY(int k, mpf_t& out) override;
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
  void GetInitValue(mpf_t& out) override;
  Ref ConvertExpr() override;
  OperandHandles Operands() override { return {}; }
  void Print(std::ostream& out) const override;

  void SetStartValue(double start);

  std::vector<int> computedTerms;  ///< the indices, in the order of computation
  int computedValues = 0;
  int computedInitialValues = 0;
  int derivativesAskedFor = 0;

  static int alive;  ///< nodes that exist now

 private:
  std::vector<double> series;
};

inline Expr::Ref Series(std::vector<double> series)
{
  return Expr::Ref(new SeriesNode(std::move(series)));
}

inline SeriesNode& SeriesOf(const Expr::Ref& node)
{
  return static_cast<SeriesNode&>(*node);
}

}  // namespace varno
