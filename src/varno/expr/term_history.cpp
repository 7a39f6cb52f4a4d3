#include "varno/expr/term_history.h"

#include <unordered_map>
#include <vector>

#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/multiply.h"

namespace varno {

namespace {

/// How the nodes of the right-hand sides are used.
class Uses {
 public:
  /// Enters what a variable's right-hand side uses.
  void Enter(const Expr::Ref& rightHandSide)
  {
    pending.push_back({&*rightHandSide, false});
    while (!pending.empty()) {
      const auto [node, needsHistory] = pending.back();
      pending.pop_back();
      Use& use = uses[node];
      use.needsHistory = use.needsHistory || needsHistory || use.count > 0;
      if (use.count++ == 0) EnterOperands(*node);
    }
  }

  void LimitTerms() const
  {
    for (const auto& [node, use] : uses) {
      if (!use.needsHistory && LooksAtOperandsOnly(*node)) node->KeepLatestTermOnly();
    }
  }

 private:
  struct Use {
    int count = 0;
    bool needsHistory = false;
  };

  /// A node that is used, and whether the user looks back at the terms before the latest.
  struct PendingUse {
    Expr* node;
    bool needsHistory;
  };

  /// A variable is where another right-hand side begins.
  void EnterOperands(Expr& node)
  {
    if (node.Type() == kDifferential || node.Type() == kAlgebraic) return;
    bool isFirst = true;
    for (const Expr::Ref& operand : node.Operands()) {
      pending.push_back({&*operand, LooksBack(node, isFirst)});
      isFirst = false;
    }
  }

  /// Whether a node asks its first operand, or its second one, for earlier terms than the latest.
  static bool LooksBack(const Expr& node, bool first)
  {
    switch (node.Type()) {
      case kPlus:
      case kMinus:
      case kUnMinus:
        return false;
      case kMultiply:
        return static_cast<const Multiply&>(node).Convolves();
      case kDivide:
        return !first;
      default:
        return true;
    }
  }

  /// A quotient looks at its own terms, too; a variable's are written out.
  static bool LooksAtOperandsOnly(const Expr& node)
  {
    switch (node.Type()) {
      case kPlus:
      case kMinus:
      case kMultiply:
      case kUnMinus:
        return true;
      default:
        return false;
    }
  }

  std::unordered_map<Expr*, Use> uses;
  std::vector<PendingUse> pending;  ///< a stack, because expressions may be deep
};

}  // namespace

void ForgetTermsNobodyNeeds()
{
  Uses uses;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    uses.Enter(VariableOf(entry).RightHandSide());
  }
  uses.LimitTerms();
}

}  // namespace varno
