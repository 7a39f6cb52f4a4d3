#include "varno/parser/equation_table.h"

#include <cstddef>

#include "varno/core/global_data.h"
#include "varno/expr/differential.h"

namespace varno {

std::string DerivativeName(const std::string& name, int order)
{
  return name + std::string(static_cast<std::size_t>(order), '\'');
}

void EnterEquation(const Expr::Ref& variable)
{
  Expr::Global->_EQUATIONS[VariableOf(variable).Name()] = variable;
}

void EnterStartValue(const std::string& name, const Mpf& start)
{
  Expr::Global->_STARTVALUES.insert_or_assign(name, start);
}

void ApplyStartValues()
{
  for (const auto& [name, start] : Expr::Global->_STARTVALUES) {
    const auto entry = Expr::Global->_EQUATIONS.find(name);
    if (entry != Expr::Global->_EQUATIONS.end()) VariableOf(entry->second).SetStartValue(start);
  }
}

}  // namespace varno
