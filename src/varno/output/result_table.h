#pragma once

#include <iosfwd>

#include "varno/expr/differential.h"

namespace varno {

// The result table: a header, then one line for each printed step with the order, the time and the
// values of the printed variables; or, with `_3DPOINTS`, matrices of values for a surface plot.

/// Whether a variable has a column: its print flag is on and, with `_PRINTTEMPEQ` off, its name has
/// no '%'.
bool HasColumn(const Differential& variable);

void WriteHeader(std::ostream& out);

/// Writes the time `_T` and the values at the end of the step that begins there; this pairing is on
/// purpose. With `holdBack` the table layout writes nothing; the matrix layout writes its one
/// matrix when `holdBack` is set, or every one with `_ALL3DVALUES`.
void WriteRow(std::ostream& out, bool holdBack);

}  // namespace varno
