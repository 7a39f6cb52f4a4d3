#include "solve/model/functions.h"

#include <set>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(BuiltInFunctions, NoNameTwice)
{
  std::set<std::string_view> names;
  for (const BuiltInFunction& function : BuiltInFunctions())
    EXPECT_TRUE(names.insert(function.name).second) << function.name;
}

TEST(BuiltInFunctions, AreFoundByName)
{
  EXPECT_EQ(FindBuiltInFunction("argtgh")->operation, Operation::kAtanh);
  EXPECT_EQ(FindBuiltInFunction("log")->operation, Operation::kLn);
  EXPECT_EQ(FindBuiltInFunction("trunc")->operation, Operation::kTrunc);
  EXPECT_EQ(FindBuiltInFunction("Sin"), nullptr);
  EXPECT_EQ(FindBuiltInFunction("acotgh"), nullptr);
}

TEST(BuiltInFunctions, OnlyTheOldNamesAreReserved)
{
  EXPECT_TRUE(FindBuiltInFunction("trunc")->reserved);
  EXPECT_TRUE(FindBuiltInFunction("ln")->reserved);
  for (const std::string_view name :
       {"log", "cbrt", "erf", "atan2", "abs", "sign", "min", "max", "floor", "ceil", "if"}) {
    EXPECT_FALSE(FindBuiltInFunction(name)->reserved) << name;
  }
}

TEST(ForeignFunctions, AreNoFunctionsOfTheLanguage)
{
  for (const std::string_view name : {"pow", "log10", "heaviside", "mod"}) {
    EXPECT_EQ(FindBuiltInFunction(name), nullptr);
    EXPECT_NE(HintOnForeignFunction(name), "");
  }
  EXPECT_EQ(HintOnForeignFunction("sin"), "");
  EXPECT_EQ(HintOnForeignName("e"), "Euler's number is exp(1)");
}

}  // namespace
}  // namespace varno::solve
