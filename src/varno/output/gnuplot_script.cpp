#include "varno/output/gnuplot_script.h"

#include <ostream>
#include <string>

#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/output/result_table.h"

namespace varno {

namespace {

void WriteTableLabels(std::ostream& out)
{
  out << "set xlabel \"Time\"\nset ylabel \"";
  if (Expr::Global->_PRINTORDER) out << "ORD ";
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    if (HasColumn(VariableOf(entry))) out << ' ' << name;
  }
  out << "\"\n\n";
}

void WriteMatrixLabels(std::ostream& out)
{
  out << "set xlabel \"x\"\nset ylabel \"y\"\nset surface\nset hidden3d\nset contour\n"
         "set cntrparam cubicspline\nset cntrparam levels 16\n\n";
}

/// The name inside gnuplot's single quotes, where an apostrophe is written twice.
std::string QuotedTitle(const std::string& name)
{
  std::string title;
  for (const char character : name) {
    title += character;
    if (character == '\'') title += character;
  }
  return title;
}

/// On purpose only a '%' at the beginning hides a plot, while one anywhere in the name hides the
/// column: behind such a column plots and data no longer match.
bool IsPlotted(const Differential& variable)
{
  const bool temporary = variable.Name().starts_with('%');
  return variable.IsPrinted() && (Expr::Global->_PRINTTEMPEQ || !temporary);
}

void WriteTablePlot(std::ostream& out)
{
  const std::string& base = Expr::Global->_GNUPLOTFILE;
  int timeColumn = 1;
  bool first = true;
  out << "plot ";
  if (Expr::Global->_PRINTORDER) {
    timeColumn = 2;
    first = false;
    out << '\'' << base << ".dat' using " << timeColumn << ":1 title 'ORD' with histeps";
  }
  int valueColumn = timeColumn + 1;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    if (!IsPlotted(VariableOf(entry))) continue;
    if (!first) out << ", \\\n";
    first = false;
    out << "     '" << base << ".dat' using " << timeColumn << ':' << valueColumn++ << " title '"
        << QuotedTitle(name) << "' with lines";
  }
}

}  // namespace

void WriteScriptHead(std::ostream& out)
{
  const std::string& base = Expr::Global->_GNUPLOTFILE;
  const std::string& terminal = Expr::Global->_GNUPLOTOUTPUT;
  const bool matrices = Expr::Global->_3DPOINTS > 0;
  out << "#!/bin/bash\n# RUN THIS SCRIPT TO GET THE FILES REQUIRED FOR GNUPLOT!!!\n"
         "cat<<END_OF_CMDS > "
      << base << ".p\n# --8<---file: " << base
      << ".p ----------------------------------\n"
         "# Note: for persistent window in x11 start gnuplot:  gnuplot -persist "
      << base << ".p\n#\n#\nset title \"Output from VARNO/C\"\n";
  if (matrices) {
    WriteMatrixLabels(out);
  } else {
    WriteTableLabels(out);
  }
  out << "set term " << terminal << '\n';
  if (terminal != "x11") out << "set out \"" << base << '.' << terminal << "\"\n\n";
  if (!matrices) {
    WriteTablePlot(out);
  } else if (!Expr::Global->_ALL3DVALUES) {
    out << "splot '" << base << ".dat'  matrix with lines\n";
  }
  out << "\n\nEND_OF_CMDS\ncat <<END_OF_DATA > " << base << ".dat\n\n# --8<---file: " << base
      << ".dat ----------------\n";
}

void WriteScriptTail(std::ostream& out)
{
  out << "\nEND_OF_DATA\n\ngnuplot " << Expr::Global->_GNUPLOTFILE << ".p \n\n";
}

}  // namespace varno
