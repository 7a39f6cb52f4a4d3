#pragma once

#include "varno/core/expr.h"
#include "varno/core/global_data.h"

namespace varno {

/// Installs a fresh settings record at 80 bits default precision, as a run has, and puts the old
/// record and precision back at the end of the scope.
class ScopedGlobal {
 public:
  ScopedGlobal();
  ~ScopedGlobal();
  ScopedGlobal(const ScopedGlobal&) = delete;
  ScopedGlobal& operator=(const ScopedGlobal&) = delete;

  GlobalData* operator->() const { return Expr::Global; }

 private:
  GlobalData* const saved;
  const mp_bitcnt_t savedPrecision;
};

}  // namespace varno
