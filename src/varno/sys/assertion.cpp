#include "varno/sys/assertion.h"

// The C library declares its assertion entry point only while assertions are on.
#undef NDEBUG
#include <cassert>

namespace varno {

void Assert(bool holds, const char* expression, const AssertionSite& site)
{
  if (!holds) __assert_fail(expression, site.unit, site.line, site.function);
}

}  // namespace varno
