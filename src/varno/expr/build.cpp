// The constructors of Expr::Ref that build nodes. Operators and functions are made by them, so that
// constants fold and simple shapes simplify everywhere alike; where a node is made directly,
// folding is not wanted.

#include <optional>
#include <string>

#include "varno/core/expr.h"
#include "varno/expr/binary_operator.h"
#include "varno/expr/divide.h"
#include "varno/expr/function.h"
#include "varno/expr/multiply.h"
#include "varno/expr/number.h"
#include "varno/expr/simplification.h"
#include "varno/expr/sum.h"
#include "varno/expr/un_op.h"
#include "varno/sys/messages.h"

namespace varno {

namespace {

using Ref = Expr::Ref;

Expr* MakeBinary(ExprType type, const Ref& a, const Ref& b)
{
  switch (type) {
    case kPlus:
      return new Plus(a, b);
    case kMinus:
      return new Minus(a, b);
    case kMultiply:
      return new Multiply(a, b);
    default:
      return new Divide(a, b);
  }
}

}  // namespace

Expr::Ref::Ref(ExprType type, const Ref& a) : Ref()
{
  const ElementaryFunction* const function = FindElementaryFunction(type);
  if (type != kUnMinus && function == nullptr) {
    // The two messages about kinds are in two languages, and people may search for either.
    Fail("Expr::Ref::Ref(ExprType, const Expr::Ref&): neznamy typ unarni operace (" +
         std::to_string(type) + ")");
  }
  if (const mpf_ptr x = ConstantOf(a)) {
    Mpf folded;
    if (type == kUnMinus) {
      mpf_neg(folded, x);
    } else {
      function->evaluate(folded, x);
    }
    *this = Ref(new Number(folded));
  } else {
    *this = Ref(type == kUnMinus ? new UnMinus(a) : function->makeNode(a));
  }
}

Expr::Ref::Ref(ExprType type, const Ref& a, const Ref& b) : Ref()
{
  if (FindBinaryOperator(type) == nullptr) {
    Fail(
        "Expr::Ref::Ref(ExprType, const Expr::Ref&, const Expr::Ref&): unknown binary operation (" +
        std::to_string(type) + ")");
  }
  const std::optional<Ref> simpler = Simplified(type, a, b);
  *this = simpler ? *simpler : Ref(MakeBinary(type, a, b));
}

}  // namespace varno
