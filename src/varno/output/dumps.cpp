#include "varno/output/dumps.h"

#include <iostream>

#include "arith/mpf.h"
#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "varno/expr/differential.h"
#include "varno/sys/messages.h"
#include "varno/sys/number_checks.h"

namespace varno {

using arith::Mpf;

void DumpTerms(mpf_srcptr startTime)
{
  std::clog << tag::kTermDump << "Dumping DYs (START) ###############################" << std::endl;
  std::clog << tag::kTermDump << "Dumping DYs (TIME)  ";
  WriteNumber(std::clog, startTime) << std::endl;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    const Differential& variable = VariableOf(entry);
    for (int k = 0; k < variable.CachedTerms(); ++k) {
      std::clog << tag::kTermDump << "DY_" << name << '[' << k << "](" << variable.TermStamp()
                << ") = ";
      WriteNumber(std::clog, variable.CachedTerm(k)) << '\n';
    }
  }
  std::clog << tag::kTermDump << "Dumping DYs (END)   ###############################" << std::endl;
}

void DumpDerivatives(mpf_srcptr startTime)
{
  std::clog << tag::kDerivativeDump << "Dumping Derivatives (START) ###############################"
            << std::endl;
  std::clog << tag::kDerivativeDump << "Dumping Derivatives (TIME)  ";
  WriteNumber(std::clog, startTime) << std::endl;
  Mpf factor, derivative;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    const Differential& variable = VariableOf(entry);
    mpf_set(factor, Expr::Global->_ONE);
    for (int k = 1; k < variable.CachedTerms(); ++k) {
      // factor = k! / h^k
      mpf_mul_ui(factor, factor, static_cast<unsigned long>(k));
      mpf_div(factor, factor, Expr::Global->_STEP);
      RequireRoom(factor);
      mpf_mul(derivative, variable.CachedTerm(k), factor);
      RequireRange(derivative);
      std::clog << tag::kDerivativeDump << 'd' << name << "^[" << k << "](" << variable.TermStamp()
                << ") = " << derivative << '\n';
    }
  }
  std::clog << tag::kDerivativeDump << "Dumping Derivatives (END) ###############################"
            << std::endl;
}

void DumpTrees()
{
  std::clog << tag::kTreeDump << "Dumping tree" << std::endl;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) VariableOf(entry).DumpTree(std::clog);
  std::clog << tag::kTreeDump << "Tree dumped" << std::endl;
}

}  // namespace varno
