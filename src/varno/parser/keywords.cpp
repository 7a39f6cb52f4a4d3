#include "varno/parser/keywords.h"

#include "grammar.h"

namespace varno {

namespace {

struct Keyword {
  std::string_view text;
  int token;
};

// "acotgh" and "acotanh" are deliberately absent: they are names.
constexpr Keyword kKeywords[] = {
    {"sin", TOKEN_SIN},
    {"cos", TOKEN_COS},
    {"tg", TOKEN_TAN},
    {"tan", TOKEN_TAN},
    {"cotg", TOKEN_COTAN},
    {"cotan", TOKEN_COTAN},
    {"arcsin", TOKEN_ASIN},
    {"asin", TOKEN_ASIN},
    {"arccos", TOKEN_ACOS},
    {"acos", TOKEN_ACOS},
    {"arctg", TOKEN_ATAN},
    {"arctan", TOKEN_ATAN},
    {"atg", TOKEN_ATAN},
    {"atan", TOKEN_ATAN},
    {"arccotg", TOKEN_ACOTAN},
    {"arccotan", TOKEN_ACOTAN},
    {"acotg", TOKEN_ACOTAN},
    {"acotan", TOKEN_ACOTAN},
    {"sinh", TOKEN_SINH},
    {"cosh", TOKEN_COSH},
    {"tgh", TOKEN_TANH},
    {"tanh", TOKEN_TANH},
    {"cotgh", TOKEN_COTANH},
    {"cotanh", TOKEN_COTANH},
    {"argsinh", TOKEN_ASINH},
    {"asinh", TOKEN_ASINH},
    {"argcosh", TOKEN_ACOSH},
    {"acosh", TOKEN_ACOSH},
    {"argtgh", TOKEN_ATANH},
    {"argtanh", TOKEN_ATANH},
    {"atgh", TOKEN_ATANH},
    {"atanh", TOKEN_ATANH},
    {"argcotgh", TOKEN_ACOTANH},
    {"argcotanh", TOKEN_ACOTANH},
    {"exp", TOKEN_EXP},
    {"ln", TOKEN_LN},
    {"pi", TOKEN_PI},
    {"t", TOKEN_TIME},
    {"sqrt", TOKEN_SQRT},
    {"trunc", TOKEN_TRUNC},
};

}  // namespace

int TokenOf(std::string_view identifier)
{
  for (const Keyword& keyword : kKeywords) {
    if (keyword.text == identifier) return keyword.token;
  }
  return TOKEN_NAME;
}

}  // namespace varno
