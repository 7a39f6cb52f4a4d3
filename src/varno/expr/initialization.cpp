#include "varno/expr/initialization.h"

#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/sharing.h"
#include "varno/expr/term_history.h"
#include "varno/sys/messages.h"

namespace varno {

void InitializeEquations()
{
  // Temporary equations enter the table meanwhile. Their names sort before all others, so that the
  // walk does not meet them.
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    Differential& variable = VariableOf(entry);
    if (variable.UsesStepFunction()) {
      Fail("Equation \"" + name + "\" uses a step function, which has no value");
    }
    variable.SetRightHandSide(variable.RightHandSide()->Convert());
    const auto start = Expr::Global->_STARTVALUES.try_emplace(name, Expr::Global->_ZERO).first;
    variable.SetStartValue(start->second);
  }
  ShareSubexpressions();
  ForgetTermsNobodyNeeds();
}

}  // namespace varno
