#include "varno/config/print_list.h"

#include "varno/core/expr.h"
#include "varno/core/global_data.h"

namespace varno {

namespace {

bool IsListed(const std::string& list, const std::string& name)
{
  return list.find(name + ':') != std::string::npos;
}

}  // namespace

bool IsSelectedForPrint(const std::string& name)
{
  const bool wanted = Expr::Global->_PRINTLIST.empty() || IsListed(Expr::Global->_PRINTLIST, name);
  return wanted && !IsListed(Expr::Global->_NOPRINTLIST, name);
}

}  // namespace varno
