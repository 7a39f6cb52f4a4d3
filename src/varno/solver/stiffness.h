#pragma once

namespace varno {

/// Compares the last Taylor terms of all differential equations and reports the comparison.
///
/// Finds the equations whose last term (Differential::LastTerm) is smallest and largest in size,
/// keeps the two sizes in `_STIFFMIN` and `_STIFFMAX`, and calls the system stiff when their binary
/// exponents differ by more than `_STIFFEXPDIFF`.
bool TestStiffness();

/// Gives the two sizes the precision in force and the values that stand for "none".
void ResetStiffnessMeasures();

}  // namespace varno
