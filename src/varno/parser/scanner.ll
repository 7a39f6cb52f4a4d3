%option noyywrap nounput noinput never-interactive 8bit warn nodefault

%{
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>

#include "grammar.h"
#include "varno/parser/keywords.h"
#include "varno/parser/scanner.h"
#include "varno/sys/messages.h"
#include "varno/sys/number_checks.h"

#define YY_DECL int yylex(varno::SemanticValue* value)
#define YY_INPUT(buffer, result, maximum) result = ReadInput(buffer, maximum)
// A token is scanned again from its beginning at each refill of the buffer, which doubles for a long
// one: filling all of it keeps the time for a comment of any length in proportion to the length.
#define YY_READ_BUF_SIZE INT_MAX

namespace {

int lineNumber = 1;

void CountLines(std::string_view text)
{
  lineNumber += static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

std::size_t ReadInput(char* buffer, std::size_t maximum)
{
  const std::size_t length = std::fread(buffer, 1, maximum, yyin);
  if (length == 0 && std::ferror(yyin)) {
    varno::Fail(std::string("Cannot read the input: ") + std::strerror(errno));
  }
  return length;
}

/// A derivative order, cut to what an int holds.
int OrderFrom(const char* digits)
{
  return static_cast<int>(std::min<long>(std::strtol(digits, nullptr, 10), INT_MAX));
}

/// An integer keeps its exact value, however long it is, as far as the precision goes.
void SetNumber(varno::SemanticValue* value, const char* text)
{
  varno::SetNumberFromText(value->number.emplace(), text);
}

}  // namespace
%}

digits    [0-9]+
exponent  [eE][+-]?{digits}

%%

[ \t\v\f\r]+    { }

\n              { ++lineNumber; }

"//"[^\n]*\n?   {
                  // A comment counts its line also when the input ends with it.
                  ++lineNumber;
                }

"/*"([^*]|\*+[^*/])*\*+"/"  { CountLines({yytext, static_cast<std::size_t>(yyleng)}); }

"/*"([^*]|\*+[^*/])*\**     {
                  // Not closed: the comment ends with the input.
                  CountLines({yytext, static_cast<std::size_t>(yyleng)});
                }

{digits}        { SetNumber(value, yytext); return TOKEN_INTEGER; }

{digits}"."{digits}?{exponent}? |
"."{digits}{exponent}?          |
{digits}{exponent}              { SetNumber(value, yytext); return TOKEN_REAL; }

[A-Za-z_][A-Za-z0-9_]* {
                  value->text.assign(yytext, static_cast<std::size_t>(yyleng));
                  return varno::TokenOf(value->text);
                }

'{digits}       { value->order = OrderFrom(yytext + 1); return TOKEN_DERIV; }

'+              { value->order = yyleng; return TOKEN_DERIV; }

.               {
                  // A NUL byte would pass for the end of the input.
                  const auto code = static_cast<unsigned char>(yytext[0]);
                  return code != 0 ? code : TOKEN_YYUNDEF;
                }

%%

void yyerror(const char* message)
{
  std::clog << varno::tag::kError << "ERROR: " << message << " \"" << yytext << "\" at line #"
            << lineNumber << std::endl;
}

namespace varno {

void SetScannerInput(std::FILE* input)
{
  yyrestart(input);
  lineNumber = 1;
}

int CurrentLine()
{
  return lineNumber;
}

}  // namespace varno
