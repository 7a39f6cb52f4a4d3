#include "varno/expr/sharing.h"

#include <cstddef>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "varno/core/global_data.h"
#include "varno/expr/binary_operator.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"

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
  /// A kind of node and its operands.
  using Operation = std::pair<ExprType, std::vector<const Expr*>>;

  struct IsLess {
    bool operator()(mpf_srcptr a, mpf_srcptr b) const { return mpf_cmp(a, b) < 0; }
  };

  /// Whether nodes of a kind do nothing but an operation on the terms of their operands.
  static bool IsOperation(ExprType type)
  {
    return type == kUnMinus || FindBinaryOperator(type) != nullptr;
  }

  void PushUnvisitedOperands(Expr& node, std::vector<Ref>& pending) const
  {
    if (!IsOperation(node.Type())) return;
    for (const Ref& operand : node.Operands()) {
      if (!visited.contains(&*operand)) pending.push_back(operand);
    }
  }

  /// The operands have been visited.
  Shared ShareNode(const Ref& node)
  {
    if (node->Type() == kNumber)
      return {numbers.emplace(ConstantOf(node), node).first->second, true};
    if (node->Type() == kDifferential) return {node, true};
    if (!IsOperation(node->Type())) return {node, false};
    Operation operation{node->Type(), {}};
    bool isPure = true;
    for (Ref& operand : node->Operands()) {
      const Shared& shared = visited.at(&*operand);
      operand = shared.node;
      operation.second.push_back(&*operand);
      isPure = isPure && shared.isPure;
    }
    if (!isPure) return {node, false};
    return {operations.emplace(std::move(operation), node).first->second, true};
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
