#pragma once

namespace varno {

/// Reads the scanner's input to its end and fills the equation and start-value tables. Returns
/// whether the input was accepted; what is wrong has been reported otherwise.
bool ParseInput();

}  // namespace varno
