#include "solve/source/utf8.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(Utf8, CharactersOfOneToFourBytes)
{
  EXPECT_EQ(CharacterBytes("a"), 1U);
  EXPECT_EQ(CharacterBytes("\u00e9x"), 2U);
  EXPECT_EQ(CharacterBytes("\u2032x"), 3U);
  EXPECT_EQ(CharacterBytes("\U0001F600x"), 4U);
}

TEST(Utf8, BytesThatBeginNoCharacterCountOneByOne)
{
  EXPECT_EQ(CharacterBytes("\x80x"), 1U);      // a following byte
  EXPECT_EQ(CharacterBytes("\xE2\x80"), 1U);   // cut off
  EXPECT_EQ(CharacterBytes("\xE2x\x80"), 1U);  // interrupted
  EXPECT_EQ(CharacterBytes("\xC0\x80"), 1U);   // longer than it needs to be
  EXPECT_EQ(CharacterBytes("\xFF"), 1U);
  EXPECT_EQ(CountCharacters("\xE2\x80\u00e9z"), 4U);
}

TEST(Utf8, ControlCharactersAreNotPrintable)
{
  EXPECT_TRUE(IsPrintable("a"));
  EXPECT_TRUE(IsPrintable("\u2212"));
  EXPECT_FALSE(IsPrintable("\x1b"));
  EXPECT_FALSE(IsPrintable("\x7f"));
  EXPECT_FALSE(IsPrintable("\u009b"));
  EXPECT_FALSE(IsPrintable("\xff"));
  EXPECT_FALSE(IsPrintable(std::string_view("\0", 1)));
}

}  // namespace
}  // namespace varno::solve
