#include "varno/core/nothing_expr.h"

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"

namespace varno {

using namespace support;
namespace {

TEST(NothingExprTest, HasNoValueNoDerivativeAndNoOtherForm)
{
  const ScopedGlobal global;
  const Expr::Ref empty;
  EXPECT_EQ(empty->Type(), 0);
  EXPECT_EQ(TextOf(empty), "[NULL]");
  EXPECT_TRUE(IsExactly(0, ValueOf(empty)));
  EXPECT_TRUE(IsExactly(0, InitValueOf(empty)));
  EXPECT_TRUE(empty->Derivative().IsEmpty());
  EXPECT_TRUE(empty->Convert().IsEmpty());
}

}  // namespace
}  // namespace varno
