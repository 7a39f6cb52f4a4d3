#include "solve/model/declarations.h"

#include <gtest/gtest.h>

#include "solve/language/parse.h"

namespace varno::solve {
namespace {

TEST(Declarations, StandInTheOrderOfTheTextWithFunctionsLast)
{
  Sources sources;
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add("f", "function f(u) = u; y'' = 1; k = 2; x' = 3;");
  const Syntax syntax = ParseProblem(sources, source, diagnostics);
  const Declarations declarations(syntax, sources, diagnostics);
  EXPECT_FALSE(diagnostics.HasErrors());

  ASSERT_EQ(declarations.Size(), 4U);
  EXPECT_EQ(declarations[0].name, "y");
  EXPECT_EQ(declarations[0].kind, DeclarationKind::kVariable);
  EXPECT_EQ(declarations[0].firstState, 0U);
  EXPECT_EQ(declarations[1].kind, DeclarationKind::kDefinition);
  EXPECT_EQ(declarations[2].firstState, 2U);
  EXPECT_EQ(declarations[3].kind, DeclarationKind::kFunction);
  EXPECT_EQ(declarations[3].parameters.size(), 1U);
  EXPECT_EQ(declarations.StateCount(), 3U);
  EXPECT_EQ(declarations.Find("x"), 2U);
  EXPECT_EQ(declarations.Find("z"), Declarations::kNone);
}

TEST(DerivativeName, HasApostrophes)
{
  EXPECT_EQ(DerivativeName("y", 0), "y");
  EXPECT_EQ(DerivativeName("y", 3), "y'''");
}

}  // namespace
}  // namespace varno::solve
