#include "varno/solver/run_report.h"

#include <ostream>

#include "varno/core/expr.h"
#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "varno/output/result_table.h"
#include "varno/sys/signals.h"

namespace varno {

namespace {

void WriteTime(std::ostream& out)
{
  out << Expr::Global->_T;
}

/// On purpose with the flag that holds rows back, so that only the matrix layout shows values.
void WriteCurrentRow(std::ostream& out)
{
  WriteRow(out, true);
}

}  // namespace

void ReportRunAtPrompt()
{
  SetRunReport({WriteTime, WriteCurrentRow});
}

}  // namespace varno
