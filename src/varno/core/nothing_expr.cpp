#include "varno/core/nothing_expr.h"

#include <ostream>

namespace varno {

Expr::Ref NothingExpr::ConvertExpr()
{
  return Ref();
}

void NothingExpr::Print(std::ostream& out) const
{
  out << "[NULL]";
}

}  // namespace varno
