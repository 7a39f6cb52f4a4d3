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
  const GlobalData& global = *Expr::Global;
  const bool wanted = global._PRINTLIST.empty() || IsListed(global._PRINTLIST, name);
  return wanted && !IsListed(global._NOPRINTLIST, name);
}

}  // namespace varno
