#pragma once

#include <iosfwd>

namespace varno {

/// Writes the usage text with the current values of the settings.
void WriteUsage(std::ostream& out);

}  // namespace varno
