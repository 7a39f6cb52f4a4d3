#include "varno/expr/equation.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class EquationTest : public testing::Test {
 protected:
  ScopedGlobal global;
};

TEST_F(EquationTest, IsConvertedToTheVariableOfItsName)
{
  const Ref reference(new Equation("y", 0));
  const Ref y = MakeVariable("y", 1.0);
  EXPECT_TRUE(reference->Convert() == y);
}

TEST_F(EquationTest, TheDerivativeOrderIsKeptAndDoesNotCount)
{
  const Ref reference(new Equation("y", 2));
  const Ref y = MakeVariable("y", 1.0);
  EXPECT_EQ(static_cast<const Equation&>(*reference).DerivativeOrder(), 2);
  EXPECT_TRUE(reference->Convert() == y);
  EXPECT_EQ(TextOf(reference), "y");
}

TEST_F(EquationTest, ConversionToAnUndefinedEquationEndsTheRun)
{
  MakeVariable("y", 1.0);
  for (const std::string name : {"b", "Y", "y1"}) {
    EXPECT_EXIT(Ref(new Equation(name, 0))->Convert(), testing::ExitedWithCode(1),
                ExactText("\n#(ERR) Reference to undefined equation \"" + name + "\"\n"));
  }
}

TEST_F(EquationTest, ResolvingReplacesTheReferenceByTheVariable)
{
  const Ref y = MakeVariable("y", 1.0);
  Ref reference(new Equation("y", 0));
  Equation::ResolveRef(reference);
  EXPECT_TRUE(reference == y);
}

TEST_F(EquationTest, ResolvingAnUndefinedEquationEndsTheRun)
{
  Ref reference(new Equation("b", 0));
  EXPECT_EXIT(Equation::ResolveRef(reference), testing::ExitedWithCode(1),
              ExactText("#(ERR) Undefined reference to b equation\n"));
}

TEST_F(EquationTest, AnUnresolvedReferenceHasNoValueAndNoDerivative)
{
  const Ref reference(new Equation("y", 0));
  EXPECT_EQ(reference->Type(), kEquation);
  EXPECT_TRUE(IsExactly(0, ValueOf(reference)));
  EXPECT_TRUE(IsExactly(0, InitValueOf(reference)));
  EXPECT_TRUE(reference->Derivative().IsEmpty());
}

}  // namespace
}  // namespace varno
