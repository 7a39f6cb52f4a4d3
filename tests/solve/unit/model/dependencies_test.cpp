#include "solve/model/dependencies.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "solve/language/parse.h"

namespace varno::solve {
namespace {

struct Found {
  explicit Found(const std::string& text) : source(sources.Add("f", text))
  {
    syntax = ParseProblem(sources, source, diagnostics);
    declarations = Declarations(syntax, sources, diagnostics);
    Resolution resolution(declarations, sources, diagnostics);
    for (const Declaration& declaration : declarations.All())
      resolution.Resolve(declaration.tree, declaration.parameters);
    dependencies = FindDependencies(declarations, resolution, diagnostics);
  }
  Dependence Of(std::string_view name) const
  {
    return dependencies.dependence[declarations.Find(name)];
  }
  bool IsBroken(std::string_view name) const
  {
    return dependencies.broken[declarations.Find(name)];
  }
  std::ptrdiff_t Position(std::string_view name) const
  {
    return std::find(dependencies.order.begin(), dependencies.order.end(),
                     declarations.Find(name)) -
           dependencies.order.begin();
  }

  Sources sources;
  Diagnostics diagnostics;
  std::uint32_t source;
  Syntax syntax;
  Declarations declarations;
  Dependencies dependencies;
};

TEST(FindDependencies, EachStandsAfterWhatItUses)
{
  const Found found("x' = a; a = f(b); b = c*c; c = 1; function f(u) = u + d; d = c;");
  EXPECT_EQ(found.dependencies.order.size(), 6U);
  EXPECT_LT(found.Position("c"), found.Position("b"));
  EXPECT_LT(found.Position("b"), found.Position("a"));
  EXPECT_LT(found.Position("d"), found.Position("f"));
  EXPECT_LT(found.Position("f"), found.Position("a"));
  EXPECT_LT(found.Position("a"), found.Position("x"));
}

TEST(FindDependencies, WhatTheyDependOn)
{
  const Found found(
      "x' = 1; a = 0*t; b = a + 1; c = x; d = a + c; e = f(3); function f(u) = u + t; g = 2; h = "
      "x';");
  EXPECT_EQ(found.Of("a"), Dependence::kTime);
  EXPECT_EQ(found.Of("b"), Dependence::kTime);
  EXPECT_EQ(found.Of("c"), Dependence::kStates);
  EXPECT_EQ(found.Of("d"), Dependence::kStates);
  EXPECT_EQ(found.Of("e"), Dependence::kTime);
  EXPECT_EQ(found.Of("g"), Dependence::kNothing);
  EXPECT_EQ(found.Of("h"), Dependence::kStates);  // although x' is 1
}

TEST(FindDependencies, CirclesBreakThoseInThemAndThoseThatUseThem)
{
  const Found found("a = b; b = c + d; c = a; d = 1; e = a; f = d; g = h; h = k; k = h;");
  for (const std::string_view name : {"a", "b", "c", "e", "g", "h", "k"})
    EXPECT_TRUE(found.IsBroken(name)) << name;
  for (const std::string_view name : {"d", "f"}) EXPECT_FALSE(found.IsBroken(name)) << name;
}

TEST(FindDependencies, CirclesThatMeetAreReportedOnce)
{
  // a-b-a and b-c-b have b in common; d-e-d is apart.
  const Found found("a = b; b = a + c; c = b; d = e; e = d + a;");
  EXPECT_EQ(std::count_if(found.diagnostics.All().begin(), found.diagnostics.All().end(),
                          [](const Diagnostic& diagnostic) {
                            return diagnostic.severity == Severity::kError;
                          }),
            2);
  for (const std::string_view name : {"a", "b", "c", "d", "e"})
    EXPECT_TRUE(found.IsBroken(name)) << name;
}

}  // namespace
}  // namespace varno::solve
