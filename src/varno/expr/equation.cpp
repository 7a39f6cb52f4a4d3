#include "varno/expr/equation.h"

#include <iostream>
#include <utility>

#include "varno/core/global_data.h"
#include "varno/sys/messages.h"

namespace varno {

Equation::Equation(std::string name, int derivativeOrder)
    : Expr(kEquation, false), name(std::move(name)), derivativeOrder(derivativeOrder)
{}

Expr::Ref Equation::ConvertExpr()
{
  const auto entry = Global->_EQUATIONS.find(name);
  if (entry == Global->_EQUATIONS.end()) {
    std::clog << '\n';
    Fail("Reference to undefined equation \"" + name + '"');
  }
  return entry->second;
}

void Equation::Print(std::ostream& out) const
{
  out << name;
}

void Equation::ResolveRef(Ref& reference)
{
  const std::string& name = static_cast<Equation&>(*reference).name;
  const auto entry = Global->_EQUATIONS.find(name);
  if (entry == Global->_EQUATIONS.end()) Fail("Undefined reference to " + name + " equation");
  reference = entry->second;
}

}  // namespace varno
