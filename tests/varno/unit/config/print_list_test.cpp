#include "varno/config/print_list.h"

#include <gtest/gtest.h>

#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {
namespace {

class PrintList : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(PrintList, WithoutListsEverythingIsSelected)
{
  EXPECT_TRUE(IsSelectedForPrint("y"));
}

TEST_F(PrintList, AListSelectsItsNames)
{
  global->_PRINTLIST = "a:y':";
  EXPECT_TRUE(IsSelectedForPrint("a"));
  EXPECT_TRUE(IsSelectedForPrint("y'"));
  EXPECT_FALSE(IsSelectedForPrint("y"));
  EXPECT_FALSE(IsSelectedForPrint("A"));
}

TEST_F(PrintList, ANameWithoutAColonBehindItIsNotListed)
{
  global->_PRINTLIST = "a:b";
  EXPECT_FALSE(IsSelectedForPrint("b"));
}

TEST_F(PrintList, AListedNameSelectsEveryNameThatItEndsWith)
{
  global->_PRINTLIST = "xy2:";
  EXPECT_TRUE(IsSelectedForPrint("y2"));
  EXPECT_TRUE(IsSelectedForPrint("2"));
  EXPECT_FALSE(IsSelectedForPrint("x"));
}

TEST_F(PrintList, TheListOfExcludedNamesWins)
{
  global->_PRINTLIST = "a:b:";
  global->_NOPRINTLIST = "b:";
  EXPECT_TRUE(IsSelectedForPrint("a"));
  EXPECT_FALSE(IsSelectedForPrint("b"));
  global->_PRINTLIST = "";
  EXPECT_TRUE(IsSelectedForPrint("c"));
  EXPECT_FALSE(IsSelectedForPrint("b"));
}

}  // namespace
}  // namespace varno
