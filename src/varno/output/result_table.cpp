#include "varno/output/result_table.h"

#include <iomanip>
#include <ostream>
#include <string>

#include "arith/magnitude.h"
#include "arith/wide_integer.h"
#include "varno/core/global_data.h"
#include "varno/core/number_output.h"

namespace varno {

using arith::BinaryExponent;
using arith::ToText;

namespace {

bool HasTemporaryName(const Differential& variable)
{
  return variable.Name().find('%') != std::string::npos;
}

/// Whether a variable stands in the matrices, where temporary variables never do.
bool IsInMatrix(const Differential& variable)
{
  return variable.IsPrinted() && !HasTemporaryName(variable);
}

void WriteTableHeader(std::ostream& out)
{
  out << (Expr::Global->_PRINTORDER ? "# ORDER" : "# ") << " TIME";
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    if (HasColumn(VariableOf(entry))) out << ' ' << name;
  }
  // Both labels say max, though the first of the two columns holds the smallest measure.
  if (Expr::Global->_USEALLTERMS) out << " log(|DY(max)|)     log(|DY(max)|)    h";
  out << std::endl;
}

void WriteMatrixHeader(std::ostream& out)
{
  out << "#\xA0";
  int names = 0;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    if (!IsInMatrix(VariableOf(entry))) continue;
    out << ' ' << name;
    if (++names % Expr::Global->_3DPOINTS == 0) out << "\n#";
  }
  out << std::endl;
}

void WriteTableRow(std::ostream& out)
{
  if (Expr::Global->_PRINTORDER)
    out << std::setfill(' ') << std::setw(3) << Expr::Global->_WORK0 << ' ';
  out << Expr::Global->_T;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    if (!HasColumn(VariableOf(entry))) continue;
    WriteNumber(out << ' ', entry->Value());
  }
  if (Expr::Global->_USEALLTERMS) {
    out << ' ' << ToText(BinaryExponent(Expr::Global->_STIFFMIN)) << ' '
        << ToText(BinaryExponent(Expr::Global->_STIFFMAX)) << ' ' << Expr::Global->_STEP;
  }
  out << std::endl;
}

void WriteMatrix(std::ostream& out)
{
  if (Expr::Global->_ALL3DVALUES) {
    // On purpose every block names the same output file.
    out << "e\n\nset output 'o" << std::setfill('0') << std::setw(6) << 1 << '.'
        << Expr::Global->_GNUPLOTOUTPUT << "'\nsplot '-'  matrix with lines\n";
  }
  int values = 0;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    if (!IsInMatrix(VariableOf(entry))) continue;
    WriteNumber(out << ' ', entry->Value());
    if (++values % Expr::Global->_3DPOINTS == 0) out << '\n';
  }
  out << std::endl;
}

}  // namespace

bool HasColumn(const Differential& variable)
{
  return variable.IsPrinted() && (Expr::Global->_PRINTTEMPEQ || !HasTemporaryName(variable));
}

void WriteHeader(std::ostream& out)
{
  if (Expr::Global->_3DPOINTS > 0) {
    WriteMatrixHeader(out);
  } else {
    WriteTableHeader(out);
  }
}

void WriteRow(std::ostream& out, bool holdBack)
{
  if (Expr::Global->_3DPOINTS > 0) {
    if (Expr::Global->_ALL3DVALUES || holdBack) WriteMatrix(out);
  } else if (!holdBack) {
    WriteTableRow(out);
  }
}

}  // namespace varno
