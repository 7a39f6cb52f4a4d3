#include "varno/expr/term_history.h"

#include <unordered_map>
#include <vector>

#include "varno/core/global_data.h"
#include "varno/expr/bin_op.h"
#include "varno/expr/differential.h"
#include "varno/expr/multiply.h"
#include "varno/expr/un_op.h"

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

  void EnterOperands(Expr& node)
  {
    const auto enter = [this](const Expr::Ref& operand, bool needsHistory) {
      pending.push_back({&*operand, needsHistory});
    };
    switch (node.Type()) {
      case kPlus:
      case kMinus:
      case kMultiply:
      case kDivide: {
        const auto& operation = static_cast<BinOp&>(node);
        const bool convolves = node.Type() == kMultiply && static_cast<Multiply&>(node).Convolves();
        enter(operation.Left(), convolves);
        enter(operation.Right(), convolves || node.Type() == kDivide);
        break;
      }
      case kUnMinus:
        enter(static_cast<UnOp&>(node).Operand(), false);
        break;
      default:
        break;
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
