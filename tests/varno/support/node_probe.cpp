#include "tests/varno/support/node_probe.h"

#include <sstream>

#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"
#include "varno/parser/equation_table.h"

namespace varno {

Expr::Ref Constant(double constant)
{
  return Expr::Ref(new Number(constant));
}

Expr::Ref MakeVariable(const std::string& name, double start, const Expr::Ref& rightHandSide)
{
  Expr::Ref variable(new Differential(name, rightHandSide));
  VariableOf(variable).SetStartValue(Mpf(start));
  EnterEquation(variable);
  return variable;
}

Mpf TermOf(const Expr::Ref& node, int k)
{
  Mpf term;
  node->GetTerm(k, term);
  return term;
}

Mpf ValueOf(const Expr::Ref& node)
{
  Mpf value;
  node->Value(value);
  return value;
}

Mpf InitValueOf(const Expr::Ref& node)
{
  Mpf value;
  node->InitValue(value);
  return value;
}

std::string TextOf(const Expr::Ref& node)
{
  std::ostringstream out;
  node->Print(out);
  return out.str();
}

void AcceptStep()
{
  Expr::Global->_STEPNO_AUX = Expr::Global->_STEPNO;
  ++Expr::Global->_STEPNO;
}

void RejectStep()
{
  ++Expr::Global->_STEPNO;
  Expr::Global->_STEPNO_AUX = Expr::Global->_STEPNO;
}

}  // namespace varno
