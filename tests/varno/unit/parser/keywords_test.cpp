#include "varno/parser/keywords.h"

#include <string>

#include <gtest/gtest.h>

namespace varno {

namespace {

constexpr int kName = 257;

struct KeywordRow {
  const char* text;
  int token;
};

constexpr KeywordRow kKeywords[] = {
    {"sin", 263},      {"cos", 264},     {"tg", 265},       {"tan", 265},       {"cotg", 266},
    {"cotan", 266},    {"arcsin", 267},  {"asin", 267},     {"arccos", 268},    {"acos", 268},
    {"arctg", 269},    {"arctan", 269},  {"atg", 269},      {"atan", 269},      {"arccotg", 270},
    {"arccotan", 270}, {"acotg", 270},   {"acotan", 270},   {"sinh", 271},      {"cosh", 272},
    {"tgh", 273},      {"tanh", 273},    {"cotgh", 274},    {"cotanh", 274},    {"argsinh", 275},
    {"asinh", 275},    {"argcosh", 276}, {"acosh", 276},    {"argtgh", 277},    {"argtanh", 277},
    {"atgh", 277},     {"atanh", 277},   {"argcotgh", 278}, {"argcotanh", 278}, {"exp", 279},
    {"ln", 280},       {"pi", 261},      {"t", 262},        {"sqrt", 281},      {"trunc", 282},
};

TEST(Keywords, EverySpellingHasItsToken)
{
  for (const auto& [text, token] : kKeywords) EXPECT_EQ(TokenOf(text), token) << text;
}

TEST(Keywords, ATokenBelongsToTheWholeWordInLowerCase)
{
  for (const auto& [text, token] : kKeywords) {
    std::string capital = text;
    capital[0] = static_cast<char>(capital[0] - 'a' + 'A');
    EXPECT_EQ(TokenOf(capital), kName) << capital;
    EXPECT_EQ(TokenOf(text + std::string("_")), kName) << text;
    EXPECT_EQ(TokenOf(std::string("x") + text), kName) << text;
  }
}

TEST(Keywords, TheInverseHyperbolicCotangentHasNoSpellingWithA)
{
  EXPECT_EQ(TokenOf("acotgh"), kName);
  EXPECT_EQ(TokenOf("acotanh"), kName);
}

TEST(Keywords, SpellingsThatLookAlikeAreNames)
{
  for (const char* const text : {"", "arcsinh", "argsin", "ctg", "cot", "log", "abs", "pow", "T"}) {
    EXPECT_EQ(TokenOf(text), kName) << text;
  }
}

}  // namespace

}  // namespace varno
