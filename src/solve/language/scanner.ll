%option reentrant noyywrap nounput noinput never-interactive 8bit warn nodefault
%option prefix="varnoSolve"

%{
#include "solve/language/scanner.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>

/// Where the scanner stands: yytext is the stretch of the text that ends there.
struct ScanState {
  std::uint32_t source;
  std::uint32_t position;
  varno::solve::Diagnostics* diagnostics;
};

#define YY_EXTRA_TYPE ScanState*
#define YY_DECL static varno::solve::Token NextToken(yyscan_t yyscanner)
#define YY_USER_ACTION yyextra->position += static_cast<std::uint32_t>(yyleng);
// The scanner's memory is the only thing that can fail. On purpose no exit: a library must not end
// its program.
#define YY_FATAL_ERROR(message) throw std::bad_alloc()
#define TOKEN(name) return MakeToken(varno::solve::Grammar::token::TOKEN_##name, *yyextra, yyleng)

namespace {

using varno::solve::Place;
using varno::solve::Token;
using varno::solve::TokenKind;

Place PlaceOf(const ScanState& state, int length)
{
  return {state.source, state.position - static_cast<std::uint32_t>(length), state.position};
}

Token MakeToken(TokenKind kind, const ScanState& state, int length)
{
  return {kind, PlaceOf(state, length)};
}

/// The order that digits stand for, cut to what its type holds.
std::uint32_t OrderFrom(std::string_view digits)
{
  std::uint64_t order = 0;
  for (const char digit : digits) {
    order = std::min<std::uint64_t>(order * 10 + static_cast<std::uint64_t>(digit - '0'),
                                    std::numeric_limits<std::uint32_t>::max());
  }
  return static_cast<std::uint32_t>(order);
}

Token MakeMark(std::uint32_t order, const ScanState& state, int length)
{
  Token token = MakeToken(varno::solve::Grammar::token::TOKEN_DERIVATIVE, state, length);
  token.order = order;
  return token;
}

}  // namespace
%}

digits    [0-9]+
exponent  [eE][+-]?{digits}
name      [A-Za-z_][A-Za-z0-9_]*
following [\x80-\xBF]

%%

[ \t\v\f\r\n]+  { }

"//"[^\n]*      { }

"/*"([^*]|\*+[^*/])*\*+"/"  { }

"/*"([^*]|\*+[^*/])*\**     {
                  // Not closed: the comment ends with the text.
                  Place opening = PlaceOf(*yyextra, yyleng);
                  opening.end = opening.begin + 2;
                  yyextra->diagnostics->Note(opening, "this comment is not closed and ends with the text");
                }

"#"[^\n]*       {
                  Place sign = PlaceOf(*yyextra, yyleng);
                  sign.end = sign.begin + 1;
                  yyextra->diagnostics->Error(sign, "unexpected '#'", "comments begin with //");
                }

{digits}                             |
{digits}"."{digits}?{exponent}?      |
"."{digits}{exponent}?               |
{digits}{exponent}                   { TOKEN(NUMBER); }

"pi"            { TOKEN(PI); }
"t"             { TOKEN(TIME); }
{name}          { TOKEN(NAME); }

'{digits}       { return MakeMark(OrderFrom({yytext + 1, static_cast<std::size_t>(yyleng - 1)}), *yyextra, yyleng); }
'+              { return MakeMark(static_cast<std::uint32_t>(yyleng), *yyextra, yyleng); }

"+"             { TOKEN(PLUS); }
"-"             { TOKEN(MINUS); }
"*"             { TOKEN(STAR); }
"/"             { TOKEN(SLASH); }
"^"             { TOKEN(CARET); }
"<"             { TOKEN(LESS); }
"<="            { TOKEN(LESS_EQUAL); }
">"             { TOKEN(GREATER); }
">="            { TOKEN(GREATER_EQUAL); }
"="             { TOKEN(EQUALS); }
"&"             { TOKEN(AMPERSAND); }
"("             { TOKEN(LEFT_PARENTHESIS); }
")"             { TOKEN(RIGHT_PARENTHESIS); }
"["             { TOKEN(LEFT_BRACKET); }
"]"             { TOKEN(RIGHT_BRACKET); }
"{"             { TOKEN(LEFT_BRACE); }
"}"             { TOKEN(RIGHT_BRACE); }
","             { TOKEN(COMMA); }
":"             { TOKEN(COLON); }
";"             { TOKEN(SEMICOLON); }

"**"|"&&"|"||"|"=="|"!="|"<>"|":="|"+="|"-="|"*="|"/="|"=<"|"=>"  { TOKEN(FOREIGN); }

[\xC2-\xDF]{following} |
[\xE0-\xEF]{following}{2} |
[\xF0-\xF4]{following}{3}  { TOKEN(FOREIGN); }

.               { TOKEN(FOREIGN); }

<<EOF>>         { return MakeToken(varno::solve::Grammar::token::TOKEN_END, *yyextra, 0); }

%%

namespace varno::solve {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// A scanner of flex over a text.
class FlexScanner {
 public:
  FlexScanner(std::string_view text, ScanState& state)
  {
    if (yylex_init_extra(&state, &scanner) != 0) throw std::bad_alloc();
    try {
      yy_scan_bytes(text.data(), static_cast<int>(text.size()), scanner);
    } catch (...) {
      yylex_destroy(scanner);
      throw;
    }
  }
  FlexScanner(const FlexScanner&) = delete;
  FlexScanner& operator=(const FlexScanner&) = delete;
  ~FlexScanner() { yylex_destroy(scanner); }

  Token Next() { return NextToken(scanner); }

 private:
  yyscan_t scanner = nullptr;
};

}  // namespace

std::vector<Token> Scan(const Sources& sources, std::uint32_t source, Diagnostics& diagnostics)
{
  std::string_view text = sources.Text(source);
  ScanState state{source, 0, &diagnostics};
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
    state.position = kByteOrderMark.size();
  }

  FlexScanner scanner(text, state);
  std::vector<Token> tokens;
  do {
    tokens.push_back(scanner.Next());
  } while (tokens.back().kind != Grammar::token::TOKEN_END);
  return tokens;
}

}  // namespace varno::solve
