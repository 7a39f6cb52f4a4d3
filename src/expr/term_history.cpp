#include "expr/term_history.h"

#include <unordered_map>

#include "config/global_data.h"
#include "expr/bin_op.h"
#include "expr/differential.h"
#include "expr/un_op.h"
#include "sys/stack_guard.h"

namespace varno {

namespace {

/// How the nodes of the right-hand sides are used.
class Uses {
 public:
  /// Enters a use of a node, and at the first one those of its operands. `needsHistory`: whether
  /// the user looks back at the terms before the latest.
  void Enter(Expr& node, bool needsHistory)
  {
    CheckStack();
    Use& use = uses[&node];
    use.needsHistory = use.needsHistory || needsHistory || use.count > 0;
    if (use.count++ > 0) return;
    switch (node.Type()) {
      case kPlus:
      case kMinus:
        EnterOperands(static_cast<BinOp&>(node), false, false);
        break;
      case kMultiply: {
        auto& product = static_cast<BinOp&>(node);
        const bool convolves =
            product.Left()->IsConstantOverStep() == product.Right()->IsConstantOverStep();
        EnterOperands(product, convolves, convolves);
        break;
      }
      case kDivide:
        EnterOperands(static_cast<BinOp&>(node), false, true);
        break;
      case kUnMinus:
        Enter(*static_cast<UnOp&>(node).Operand(), false);
        break;
      default:
        break;
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

  void EnterOperands(BinOp& operation, bool leftNeedsHistory, bool rightNeedsHistory)
  {
    Enter(*operation.Left(), leftNeedsHistory);
    Enter(*operation.Right(), rightNeedsHistory);
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
};

}  // namespace

void ForgetTermsNobodyNeeds()
{
  Uses uses;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    uses.Enter(*VariableOf(entry).RightHandSide(), false);
  }
  uses.LimitTerms();
}

}  // namespace varno
