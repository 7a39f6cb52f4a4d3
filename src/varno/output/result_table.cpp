#include "varno/output/result_table.h"

#include <iomanip>
#include <ostream>
#include <string>

#include "arith/magnitude.h"
#include "varno/core/global_data.h"
#include "varno/format/number_format.h"

namespace varno {

using arith::BinaryExponent;

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
  const GlobalData& global = *Expr::Global;
  out << (global._PRINTORDER ? "# ORDER" : "# ") << " TIME";
  for (const auto& [name, entry] : global._EQUATIONS) {
    if (HasColumn(VariableOf(entry))) out << ' ' << name;
  }
  // Both labels say max, though the first of the two columns holds the smallest measure.
  if (global._USEALLTERMS) out << " log(|DY(max)|)     log(|DY(max)|)    h";
  out << std::endl;
}

void WriteMatrixHeader(std::ostream& out)
{
  const GlobalData& global = *Expr::Global;
  out << "#\xA0";
  int names = 0;
  for (const auto& [name, entry] : global._EQUATIONS) {
    if (!IsInMatrix(VariableOf(entry))) continue;
    out << ' ' << name;
    if (++names % global._3DPOINTS == 0) out << "\n#";
  }
  out << std::endl;
}

void WriteTableRow(std::ostream& out)
{
  const GlobalData& global = *Expr::Global;
  if (global._PRINTORDER) out << std::setfill(' ') << std::setw(3) << global._WORK0 << ' ';
  out << global._T;
  for (const auto& [name, entry] : global._EQUATIONS) {
    if (!HasColumn(VariableOf(entry))) continue;
    WriteNumber(out << ' ', entry->Value());
  }
  if (global._USEALLTERMS) {
    out << ' ' << BinaryExponent(global._STIFFMIN) << ' ' << BinaryExponent(global._STIFFMAX) << ' '
        << global._STEP;
  }
  out << std::endl;
}

void WriteMatrix(std::ostream& out)
{
  const GlobalData& global = *Expr::Global;
  if (global._ALL3DVALUES) {
    // On purpose every block names the same output file.
    out << "e\n\nset output 'o" << std::setfill('0') << std::setw(6) << 1 << '.'
        << global._GNUPLOTOUTPUT << "'\nsplot '-'  matrix with lines\n";
  }
  int values = 0;
  for (const auto& [name, entry] : global._EQUATIONS) {
    if (!IsInMatrix(VariableOf(entry))) continue;
    WriteNumber(out << ' ', entry->Value());
    if (++values % global._3DPOINTS == 0) out << '\n';
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
  const GlobalData& global = *Expr::Global;
  if (global._3DPOINTS > 0) {
    if (global._ALL3DVALUES || holdBack) WriteMatrix(out);
  } else if (!holdBack) {
    WriteTableRow(out);
  }
}

}  // namespace varno
