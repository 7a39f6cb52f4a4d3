#pragma once

#include <string>
#include <string_view>

namespace varno::solve {

/// Adds a field of comma-separated values to a line, in quotes where it needs them.
void AppendCsvField(std::string& line, std::string_view field);

}  // namespace varno::solve
