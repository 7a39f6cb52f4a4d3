#pragma once

#include "solve/tape/line_table.h"
#include "solve/tape/linear_form.h"

namespace varno::solve {

/// Adds the lines of an elementary function of one argument and returns the one that is its value.
///
/// Each function is the integral of its derivative, which is a line of its own
/// (docs/solve/recurrences.md, 9 and 10):
///     exp' = exp,  ln' = 1/u,  sin' = cos,  cos' = -sin,  tan' = 1 + tan^2,  cot' = -(1 + cot^2),
///     sinh' = cosh,  cosh' = sinh,  tanh' = 1/cosh^2,  coth' = -1/sinh^2,
///     asin' = 1/sqrt(1 - u^2),  acos' = -asin',  atan' = 1/(1 + u^2),  acot' = -atan',
///     asinh' = 1/sqrt(1 + u^2),  acosh' = 1/sqrt(u^2 - 1),  atanh' = acoth' = 1/(1 - u^2),
///     erf' = 2/sqrt(pi) exp(-u^2);  sqrt and cbrt have recurrences of their own.
LineId AddFunction(LineTable& lines, LinearArithmetic& arithmetic, Operation function, LineId u,
                   NodeId id);

/// Adds the lines of atan2(y, x): angle' = (x y' - y x') / (x^2 + y^2), see (11) there.
LineId AddAngle(LineTable& lines, LinearArithmetic& arithmetic, LineId y, LineId x, NodeId id);

}  // namespace varno::solve
