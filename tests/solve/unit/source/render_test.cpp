#include "solve/source/render.h"

#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

std::string RenderError(const std::string& text, std::uint32_t begin, std::uint32_t end)
{
  Sources sources;
  const std::uint32_t source = sources.Add("f", text);
  Diagnostics diagnostics;
  diagnostics.Error({source, begin, end}, "m");
  return Render(diagnostics, sources);
}

TEST(Render, MarksThePlace)
{
  EXPECT_EQ(RenderError("x' = foo + 1;\n", 5, 8),
            "f:1:6: error: m\n"
            "  x' = foo + 1;\n"
            "       ^~~\n");
}

TEST(Render, AnEmptyPlaceHasACaret)
{
  EXPECT_EQ(RenderError("x", 1, 1), "f:1:2: error: m\n  x\n   ^\n");
}

TEST(Render, TabsKeepTheCaretInItsPlace)
{
  EXPECT_EQ(RenderError("\tx\ty", 3, 4), "f:1:4: error: m\n  \tx\ty\n  \t \t^\n");
}

TEST(Render, CharactersOfSeveralBytesAreOneColumn)
{
  EXPECT_EQ(RenderError("\u00e9\u00e9 \u2032\u2032", 5, 11),
            "f:1:4: error: m\n  \u00e9\u00e9 \u2032\u2032\n     ^~\n");
}

TEST(Render, ControlCharactersAndWrongBytesAreNotPrinted)
{
  EXPECT_EQ(RenderError(std::string("\0\x1b[2J\xff x", 8), 7, 8),
            "f:1:8: error: m\n  ??[2J? x\n         ^\n");
}

TEST(Render, MessagesHoldNoControlCharactersEither)
{
  Sources sources;
  sources.Add("f", "x");
  Diagnostics diagnostics;
  diagnostics.Error({0, 0, 1}, "unexpected '\x1b'");
  EXPECT_THAT(Render(diagnostics, sources), HasSubstr("error: unexpected '?'\n"));
}

TEST(Render, PlacesOfSeveralLinesAreMarkedOnTheFirst)
{
  EXPECT_EQ(RenderError("ab\ncd\n", 1, 5), "f:1:2: error: m\n  ab\n   ^\n");
}

TEST(Render, LongLinesAreCut)
{
  const std::string text = std::string(100000, 'a') + "b" + std::string(100000, 'c');
  const std::string rendered = RenderError(text, 100000, 100001);
  EXPECT_LT(rendered.size(), 500U);
  EXPECT_THAT(rendered,
              HasSubstr("  ..." + std::string(80, 'a') + "b" + std::string(79, 'c') + "...\n"));
  EXPECT_THAT(rendered, EndsWith("\n" + std::string(2 + 3 + 80, ' ') + "^\n"));
}

TEST(Render, ErrorsComeInTheOrderOfTheTextWithTheirNotes)
{
  Sources sources;
  sources.Add("f", "a b c");
  sources.Add("--set", "d");
  Diagnostics diagnostics;
  diagnostics.Error({1, 0, 1}, "fourth");
  diagnostics.Error({0, 4, 5}, "second");
  diagnostics.Note({0, 2, 3}, "third");
  diagnostics.Error({0, 0, 1}, "first", "do it");
  EXPECT_EQ(Render(diagnostics, sources),
            "f:1:1: error: first\n  a b c\n  ^\n  hint: do it\n"
            "f:1:5: error: second\n  a b c\n      ^\n"
            "f:1:3: note: third\n  a b c\n    ^\n"
            "--set:1:1: error: fourth\n  d\n  ^\n");
}

TEST(Render, AFloodOfErrorsIsCounted)
{
  Sources sources;
  sources.Add("f", "a");
  Diagnostics diagnostics;
  for (int i = 0; i < 100; ++i) diagnostics.Error({0, 0, 1}, "m");
  EXPECT_THAT(Render(diagnostics, sources), Not(HasSubstr("more errors")));
  for (int i = 0; i < 3; ++i) diagnostics.Error({0, 0, 1}, "m");
  const std::string text = Render(diagnostics, sources);
  EXPECT_THAT(text, EndsWith("3 more errors are not shown\n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), ':'), 4 * 100);  // f:1:1: error: m
}

TEST(Render, NoRemarksNoText)
{
  EXPECT_EQ(Render(Diagnostics(), Sources()), "");
}

}  // namespace
}  // namespace varno::solve
