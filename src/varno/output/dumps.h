#pragma once

#include <gmp.h>

namespace varno {

/// Write every cached Taylor term, or every derivative h^-k k! times the term, of every equation
/// for the step that begins at `startTime`, as commentary. Print lists and switches do not apply.
void DumpTerms(mpf_srcptr startTime);
void DumpDerivatives(mpf_srcptr startTime);

/// Writes every equation's tree and start value as commentary.
void DumpTrees();

}  // namespace varno
