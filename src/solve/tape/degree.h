#pragma once

#include "solve/tape/tape.h"

namespace varno::solve {

/// Sets Line::degree: the degree in t of the lines that are polynomials of t by their structure, as
/// t, its powers, and the states of x' = v, v' = -g; -1 for all others.
void SetDegrees(Tape& tape);

}  // namespace varno::solve
