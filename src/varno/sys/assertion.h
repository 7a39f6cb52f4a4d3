#pragma once

namespace varno {

/// Where a checked promise stands, in the words its failure message uses.
struct AssertionSite {
  const char* unit;
  unsigned line;
  const char* function;
};

/// Ends the process through the C library's assertion facility, in release builds too: prints
/// "PROGRAM: UNIT:LINE: FUNCTION: Assertion `EXPRESSION' failed." and aborts, unless `holds`.
void Assert(bool holds, const char* expression, const AssertionSite& site);

}  // namespace varno
