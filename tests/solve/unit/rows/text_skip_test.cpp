#include "solve/rows/text_skip.h"

#include <string>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

TextDigest DigestOf(std::string_view text)
{
  TextDigest digest;
  digest.Add(text);
  return digest;
}

}  // namespace

// The values for FNV-1a with 64 bits that its authors publish.
TEST(TextDigest, IsFnv1a)
{
  EXPECT_EQ(0xcbf29ce484222325U, TextDigest().Hash());
  EXPECT_EQ(0xaf63dc4c8601ec8cU, DigestOf("a").Hash());
  EXPECT_EQ(0x85944171f73967e8U, DigestOf("foobar").Hash());
  EXPECT_EQ(6, DigestOf("foobar").Bytes());
}

TEST(TextDigest, DoesNotDependOnThePieces)
{
  TextDigest digest = DigestOf("foo");
  digest.Add("bar");
  EXPECT_EQ(DigestOf("foobar"), digest);
}

TEST(TextSkip, LeavesOutWhatIsKnownWhateverThePieces)
{
  const std::string text = "0 1\n1 2\n2 3\n";
  for (std::size_t known = 0; known <= text.size(); ++known) {
    for (std::size_t piece = 1; piece <= text.size(); ++piece) {
      TextSkip skip(DigestOf(std::string_view(text).substr(0, known)));
      std::string rest;
      for (std::size_t i = 0; i < text.size(); i += piece)
        rest += skip.Rest(std::string_view(text).substr(i, piece));
      EXPECT_EQ(text.substr(known), rest);
      EXPECT_TRUE(skip.IsThrough());
    }
  }
}

TEST(TextSkip, NoticesAnotherText)
{
  TextSkip skip(DigestOf("abcdef"));
  EXPECT_EQ("", skip.Rest("abX"));
  EXPECT_FALSE(skip.IsThrough());
  EXPECT_THROW(skip.Rest("defg"), TextChanged);
}

}  // namespace varno::solve
