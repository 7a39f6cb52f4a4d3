#pragma once

namespace varno {

/// Converts every equation and sets its start value: the one that the input gives, otherwise 0.
void InitializeEquations();

}  // namespace varno
