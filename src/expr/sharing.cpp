#include "expr/sharing.h"

#include <map>
#include <tuple>
#include <unordered_map>

#include "config/global_data.h"
#include "expr/bin_op.h"
#include "expr/differential.h"
#include "expr/number.h"
#include "expr/un_op.h"
#include "sys/stack_guard.h"

namespace varno {

namespace {

using Ref = Expr::Ref;

/// What takes the place of a node.
struct Shared {
  Ref node;
  bool isPure;  ///< made of numbers, differential variables and operations only
};

class SubexpressionPool {
 public:
  Shared Share(const Ref& expr)
  {
    CheckStack();
    if (const auto known = visited.find(&*expr); known != visited.end()) return known->second;
    const Shared shared = ShareNew(expr);
    visited.emplace(&*expr, shared);
    return shared;
  }

 private:
  using Operation = std::tuple<ExprType, const Expr*, const Expr*>;

  struct IsLess {
    bool operator()(mpf_srcptr a, mpf_srcptr b) const { return mpf_cmp(a, b) < 0; }
  };

  Shared ShareNew(const Ref& expr)
  {
    switch (expr->Type()) {
      case kNumber:
        return {numbers.emplace(ConstantOf(expr), expr).first->second, true};
      case kDifferential:
        return {expr, true};
      case kPlus:
      case kMinus:
      case kMultiply:
      case kDivide: {
        auto& operation = static_cast<BinOp&>(*expr);
        const Shared a = Share(operation.Left());
        const Shared b = Share(operation.Right());
        operation.SetOperands(a.node, b.node);
        return ShareOperation(expr, {expr->Type(), &*a.node, &*b.node}, a.isPure && b.isPure);
      }
      case kUnMinus: {
        auto& negation = static_cast<UnOp&>(*expr);
        const Shared a = Share(negation.Operand());
        negation.SetOperand(a.node);
        return ShareOperation(expr, {kUnMinus, &*a.node, nullptr}, a.isPure);
      }
      default:
        return {expr, false};
    }
  }

  Shared ShareOperation(const Ref& expr, const Operation& operation, bool isPure)
  {
    if (!isPure) return {expr, false};
    return {operations.emplace(operation, expr).first->second, true};
  }

  std::unordered_map<const Expr*, Shared> visited;
  std::map<mpf_srcptr, Ref, IsLess> numbers;
  std::map<Operation, Ref> operations;
};

}  // namespace

void ShareSubexpressions()
{
  SubexpressionPool pool;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    Differential& variable = VariableOf(entry);
    variable.SetRightHandSide(pool.Share(variable.RightHandSide()).node);
  }
}

}  // namespace varno
