#include "tests/varno/support/scoped_global.h"

namespace varno {

ScopedGlobal::ScopedGlobal() : saved(Expr::Global), savedPrecision(mpf_get_default_prec())
{
  mpf_set_default_prec(53);
  Expr::Global = new GlobalData;
  Expr::Global->SetTermCount(30 + Expr::Global->_ZEROTERMS);
  mpf_set_default_prec(80);
}

ScopedGlobal::~ScopedGlobal()
{
  delete Expr::Global;
  Expr::Global = saved;
  mpf_set_default_prec(savedPrecision);
}

}  // namespace varno
