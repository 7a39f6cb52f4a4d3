#include "solve/source/diagnostics.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(Diagnostics, NotesAreNoErrors)
{
  Diagnostics diagnostics;
  diagnostics.Note({}, "a note");
  EXPECT_FALSE(diagnostics.HasErrors());
  diagnostics.Error({}, "an error", "a hint");
  EXPECT_TRUE(diagnostics.HasErrors());
  ASSERT_EQ(diagnostics.All().size(), 2U);
  EXPECT_EQ(diagnostics.All()[1].severity, Severity::kError);
  EXPECT_EQ(diagnostics.All()[1].hint, "a hint");
}

TEST(ProblemError, CarriesTheRemarksAndTheirText)
{
  Sources sources;
  sources.Add("a.varno", "x");
  Diagnostics diagnostics;
  diagnostics.Error({0, 0, 1}, "wrong");
  const ProblemError error(diagnostics, sources);
  EXPECT_STREQ(error.what(), "a.varno:1:1: error: wrong\n  x\n  ^\n");
  EXPECT_EQ(error.Remarks().All().size(), 1U);
}

}  // namespace
}  // namespace varno::solve
