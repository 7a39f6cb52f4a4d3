#pragma once

#include <iosfwd>

namespace varno {

// With a gnuplot terminal chosen, the result table stands inside a bash script that writes the
// gnuplot commands and the data into two files and runs gnuplot. The terminal and the base name of
// the files are written as they are, without any quoting.

/// Everything before the result table.
void WriteScriptHead(std::ostream& out);

/// Everything behind the result table.
void WriteScriptTail(std::ostream& out);

}  // namespace varno
