#include "varno/expr/binary_operator.h"

#include "varno/sys/number_checks.h"

namespace varno {

namespace {

template <auto kOperation>
void Apply(mpf_ptr result, mpf_srcptr a, mpf_srcptr b)
{
  kOperation(result, a, b);
  RequireRange(result);
}

}  // namespace

const BinaryOperator* FindBinaryOperator(ExprType type)
{
  static constexpr BinaryOperator kOperators[] = {
      {kPlus, '+', Apply<mpf_add>},
      {kMinus, '-', Apply<mpf_sub>},
      {kMultiply, '*', Apply<mpf_mul>},
      {kDivide, '/', Apply<mpf_div>},
  };
  for (const BinaryOperator& row : kOperators) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

}  // namespace varno
