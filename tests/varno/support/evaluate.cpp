#include "tests/varno/support/evaluate.h"

#include <gtest/gtest.h>

#include "tests/support/real.h"

namespace varno {

using namespace support;

Mpf Evaluate(MpfFunction function, const Mpf& x)
{
  Mpf value, argument(x);
  function(value, argument);
  EXPECT_EQ(mpf_cmp(argument, x), 0) << "the argument has changed, from " << Real(x);

  function(argument, argument);
  EXPECT_EQ(mpf_cmp(argument, value), 0)
      << "the value in place of the argument differs, at " << Real(x);
  return value;
}

}  // namespace varno
