#include "varno/expr/sharing.h"

#include <cstddef>
#include <map>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "varno/core/global_data.h"
#include "varno/expr/bin_op.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"
#include "varno/expr/un_op.h"

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
  Ref Share(const Ref& root)
  {
    // Operands first, with a stack of its own: expressions may be deep.
    std::vector<Ref> pending{root};
    while (!pending.empty()) {
      const Ref node = pending.back();
      const std::size_t count = pending.size();
      if (!visited.contains(&*node)) PushUnvisitedOperands(*node, pending);
      if (pending.size() > count) continue;
      pending.pop_back();
      if (!visited.contains(&*node)) visited.emplace(&*node, ShareNode(node));
    }
    return visited.at(&*root).node;
  }

 private:
  using Operation = std::tuple<ExprType, const Expr*, const Expr*>;

  struct IsLess {
    bool operator()(mpf_srcptr a, mpf_srcptr b) const { return mpf_cmp(a, b) < 0; }
  };

  void PushUnvisitedOperands(Expr& node, std::vector<Ref>& pending) const
  {
    const auto push = [&](const Ref& operand) {
      if (!visited.contains(&*operand)) pending.push_back(operand);
    };
    switch (node.Type()) {
      case kPlus:
      case kMinus:
      case kMultiply:
      case kDivide:
        push(static_cast<BinOp&>(node).Left());
        push(static_cast<BinOp&>(node).Right());
        break;
      case kUnMinus:
        push(static_cast<UnOp&>(node).Operand());
        break;
      default:
        break;
    }
  }

  /// The operands have been visited.
  Shared ShareNode(const Ref& node)
  {
    switch (node->Type()) {
      case kNumber:
        return {numbers.emplace(ConstantOf(node), node).first->second, true};
      case kDifferential:
        return {node, true};
      case kPlus:
      case kMinus:
      case kMultiply:
      case kDivide: {
        auto& operation = static_cast<BinOp&>(*node);
        const Shared a = visited.at(&*operation.Left());
        const Shared b = visited.at(&*operation.Right());
        operation.SetOperands(a.node, b.node);
        return ShareOperation(node, {node->Type(), &*a.node, &*b.node}, a.isPure && b.isPure);
      }
      case kUnMinus: {
        auto& negation = static_cast<UnOp&>(*node);
        const Shared a = visited.at(&*negation.Operand());
        negation.SetOperand(a.node);
        return ShareOperation(node, {kUnMinus, &*a.node, nullptr}, a.isPure);
      }
      default:
        return {node, false};
    }
  }

  Shared ShareOperation(const Ref& node, const Operation& operation, bool isPure)
  {
    if (!isPure) return {node, false};
    return {operations.emplace(operation, node).first->second, true};
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
    variable.SetRightHandSide(pool.Share(variable.RightHandSide()));
  }
}

}  // namespace varno
