#include "varno/sys/messages.h"

#include <gtest/gtest.h>

namespace varno {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

TEST(Tags, BeginTheLinesOfCommentary)
{
  EXPECT_EQ(tag::kInfo, "#(INFO) ");
  EXPECT_EQ(tag::kWarning, "#(WARN) ");
  EXPECT_EQ(tag::kError, "#(ERR) ");
  EXPECT_EQ(tag::kSolver, "#(COMP) ");
  EXPECT_EQ(tag::kStiffnessTest, "#(TST) ");
  EXPECT_EQ(tag::kTermDump, "#(DY) ");
  EXPECT_EQ(tag::kDerivativeDump, "#(DER) ");
  EXPECT_EQ(tag::kTreeDump, "#(TREEDUMP) ");
  EXPECT_EQ(tag::kSetting, "#(RES_SET) ");
}

TEST(Tags, SettingsFileWarningHasNoHash)
{
  EXPECT_EQ(tag::kSettingsFileWarning, "(WARN) ");
}

TEST(Exit, EndsTheProcessWithItsStatus)
{
  EXPECT_EXIT(Exit(kSuccess), ExitedWithCode(0), Eq(""));
  EXPECT_EXIT(Exit(kFailure), ExitedWithCode(1), Eq(""));
  EXPECT_EXIT(Exit(kSyntaxError), ExitedWithCode(3), Eq(""));
  EXPECT_EXIT(Exit(kStoppedByOperator), ExitedWithCode(255), Eq(""));
}

TEST(Fail, WritesOneErrorLineAndExitsWithStatus1)
{
  EXPECT_EXIT(Fail("No such thing"), ExitedWithCode(1), Eq("#(ERR) No such thing\n"));
}

TEST(Fail, ExitsWithTheStatusGiven)
{
  EXPECT_EXIT(Fail("Compile error occured...", kSyntaxError), ExitedWithCode(3),
              Eq("#(ERR) Compile error occured...\n"));
}

}  // namespace
}  // namespace varno
