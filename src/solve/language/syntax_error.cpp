#include "solve/language/syntax_error.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "solve/language/token_stream.h"

namespace varno::solve {

namespace {

using Kind = Grammar::token;
using Symbol = Grammar::symbol_kind;

/// Longer tokens are not quoted in full.
constexpr std::size_t kMaxQuoted = 40;

std::string Quoted(std::string_view text)
{
  if (text.size() > kMaxQuoted) return "'" + std::string(text.substr(0, kMaxQuoted)) + "...'";
  return "'" + std::string(text) + "'";
}

// ------------------------------------------------------------------------------
// What was found

std::string NameOfFound(const TokenStream& tokens)
{
  const Token& token = tokens.At(0);
  const std::string_view text = tokens.Text(token);
  switch (token.kind) {
    case Kind::TOKEN_END:
      return "unexpected end of the text";
    case Kind::TOKEN_SEMICOLON:
      // Where it was missing as well
      return "unexpected end of the statement";
    case Kind::TOKEN_NUMBER:
      return "unexpected number " + Quoted(text);
    case Kind::TOKEN_NAME:
      return "unexpected name " + Quoted(text);
    default:
      break;
  }
  if (text.size() == 1 && (text[0] < ' ' || text[0] > '~')) {
    return "unexpected byte " + std::to_string(static_cast<unsigned char>(text[0]));
  }
  return "unexpected " + Quoted(text);
}

// ------------------------------------------------------------------------------
// What was expected

struct Expectation {
  Grammar::symbol_kind_type symbol;
  std::string_view text;
};

/// In the order in which they are listed. Operators and what else can begin an expression are named
/// together.
constexpr Expectation kExpectations[] = {
    {Symbol::S_NUMBER, "an expression"},
    {Symbol::S_PLUS, "an operator"},
    {Symbol::S_NAME, "a name"},
    {Symbol::S_EQUALS, "'='"},
    {Symbol::S_LESS, "'<'"},
    {Symbol::S_COLON, "':'"},
    {Symbol::S_COMMA, "','"},
    {Symbol::S_LEFT_PARENTHESIS, "'('"},
    {Symbol::S_RIGHT_PARENTHESIS, "')'"},
    {Symbol::S_RIGHT_BRACKET, "']'"},
    {Symbol::S_RIGHT_BRACE, "'}'"},
    {Symbol::S_SEPARATOR, "';'"},
    {Symbol::S_AMPERSAND, "'&'"},
    {Symbol::S_SEMICOLON, "';'"},
    {Symbol::S_YYEOF, "the end of the text"},
};

bool IsExpected(std::span<const Grammar::symbol_kind_type> expected,
                Grammar::symbol_kind_type symbol)
{
  return std::find(expected.begin(), expected.end(), symbol) != expected.end();
}

std::string ListOfExpected(std::span<const Grammar::symbol_kind_type> expected)
{
  const bool expression = IsExpected(expected, Symbol::S_NUMBER);
  const bool operation = IsExpected(expected, Symbol::S_PLUS) && !expression;
  if (IsExpected(expected, Symbol::S_FUNCTION)) return "a statement, as in y' = expression;";
  std::string list;
  for (const Expectation& each : kExpectations) {
    if (!IsExpected(expected, each.symbol)) continue;
    if (each.symbol == Symbol::S_PLUS && expression) continue;
    if (each.symbol == Symbol::S_LESS && operation) continue;
    if (each.symbol == Symbol::S_NAME && expression) continue;
    if (each.symbol == Symbol::S_LEFT_PARENTHESIS && (expression || operation)) continue;
    if (!list.empty()) list += " or ";
    list += each.text;
  }
  return list;
}

// ------------------------------------------------------------------------------
// What was probably meant

struct Habit {
  std::string_view text;
  std::string_view hint;
};

constexpr std::string_view kProductHint = "a product is written with '*', as in 2*x";
constexpr std::string_view kDerivativeMarkHint =
    "derivatives are marked with the apostrophe ', as in y' and y''";
constexpr std::string_view kParameterHint = "a parameter is written mu = 3;";

/// Operators and characters of other languages.
constexpr Habit kForeign[] = {
    {"**", "powers are written x^y"},
    {"&&", "write and"},
    {"||", "write or"},
    {"!", "write not"},
    {"!=", "write a < b or a > b"},
    {"<>", "write a < b or a > b"},
    {"==", "comparisons are <, <=, > and >="},
    {"=<", "write <="},
    {"=>", "write >="},
    {":=", "write ="},
    {"+=", "new values are written y = y + 1"},
    {"-=", "new values are written y = y - 1"},
    {"*=", "new values are written y = 2*y"},
    {"/=", "new values are written y = y/2"},
    {"%", "comments begin with //; the remainder of a by b is a - b*floor(a/b)"},
    {"\"", kDerivativeMarkHint},
    {"`", kDerivativeMarkHint},
    {"\u2019", kDerivativeMarkHint},
    {"\u2018", kDerivativeMarkHint},
    {"\u2032", kDerivativeMarkHint},
    {"\u2033", kDerivativeMarkHint},
    {"\u00b4", kDerivativeMarkHint},
    {"\u2212", "write the minus sign of the keyboard, -"},
    {"\u2013", "write the minus sign of the keyboard, -"},
    {"\u00b7", kProductHint},
    {"\u00d7", kProductHint},
    {"\u00f7", "quotients are written a/b"},
    {"\u00b2", "powers are written x^2"},
    {"\u00b3", "powers are written x^3"},
    {"\u2264", "write <="},
    {"\u2265", "write >="},
    {"\u03c0", "write pi"},
    {"\u221a", "write sqrt(x)"},
};

/// Words that begin declarations elsewhere.
constexpr Habit kDeclarations[] = {
    {"par", kParameterHint},
    {"param", kParameterHint},
    {"params", kParameterHint},
    {"parameter", kParameterHint},
    {"p", kParameterHint},
    {"const", kParameterHint},
    {"constant", kParameterHint},
    {"let", "a definition is written y = expression;"},
    {"def", "a function is written function f(u) = expression;"},
    {"var", "a variable needs no declaration: y' = expression;"},
    {"double", "a variable needs no declaration: y' = expression;"},
    {"init", "a start value is written y(0) = 1;"},
    {"aux", "a definition is written y = expression;"},
};

/// Functions that are written without parentheses elsewhere.
constexpr std::string_view kOftenBare[] = {"sin", "cos", "tan", "exp", "ln", "log", "sqrt", "abs"};

template <std::size_t n>
std::string HintFor(const Habit (&habits)[n], std::string_view text)
{
  for (const Habit& habit : habits) {
    if (habit.text == text) return std::string(habit.hint);
  }
  return {};
}

bool Touch(const Token& left, const Token& right)
{
  return left.place.end == right.place.begin;
}

bool BeginsOperand(TokenKind kind)
{
  return kind == Kind::TOKEN_NAME || kind == Kind::TOKEN_NUMBER || kind == Kind::TOKEN_PI ||
         kind == Kind::TOKEN_TIME || kind == Kind::TOKEN_LEFT_PARENTHESIS;
}

/// "dx/dt = ...", "d/dt x = ...": the slash after the beginning of a statement.
std::string LeibnizHint(const TokenStream& tokens)
{
  const std::string_view upper = tokens.Text(tokens.At(-1));
  const std::string_view lower = tokens.Text(tokens.At(1));
  if (!tokens.BeginsStatement(-1) || !upper.starts_with('d') || !lower.starts_with('d')) return {};
  const std::string name(upper.size() > 1 ? upper.substr(1) : "x");
  return "the derivative of " + name + " is written " + name + "' = ...";
}

/// "sin x": a function whose argument stands without parentheses.
std::string ArgumentHint(const TokenStream& tokens)
{
  const std::string_view name = tokens.Text(tokens.At(-1));
  if (std::ranges::find(kOftenBare, name) == std::end(kOftenBare)) return {};
  return "an argument stands in parentheses: " + std::string(name) + "(" +
         std::string(tokens.Text(tokens.At(0)).substr(0, kMaxQuoted)) + ")";
}

/// A missing operator between two operands.
std::string JuxtapositionHint(const TokenStream& tokens)
{
  const Token& left = tokens.At(-1);
  const Token& right = tokens.At(0);
  if (!BeginsOperand(right.kind)) return {};
  switch (left.kind) {
    case Kind::TOKEN_NUMBER:
      return "a product is written with '*': " +
             std::string(tokens.Text(left).substr(0, kMaxQuoted)) + "*" +
             (right.kind == Kind::TOKEN_LEFT_PARENTHESIS
                  ? "(...)"
                  : std::string(tokens.Text(right).substr(0, kMaxQuoted)));
    case Kind::TOKEN_DERIVATIVE:
      if (right.kind != Kind::TOKEN_LEFT_PARENTHESIS) return std::string(kProductHint);
      return "a start value cannot be read back; give it a name: v0 = 1; y'(0) = v0;";
    case Kind::TOKEN_NAME:
      if (std::string hint = ArgumentHint(tokens); !hint.empty()) return hint;
      return std::string(kProductHint);
    case Kind::TOKEN_PI:
    case Kind::TOKEN_TIME:
      return std::string(kProductHint);
    case Kind::TOKEN_RIGHT_PARENTHESIS:
    case Kind::TOKEN_RIGHT_BRACKET:
      return Touch(left, right) || right.kind != Kind::TOKEN_NAME ? std::string(kProductHint)
                                                                  : std::string();
    default:
      return {};
  }
}

std::string HintOn(const TokenStream& tokens, std::span<const Grammar::symbol_kind_type> expected)
{
  const bool afterOperand =
      IsExpected(expected, Symbol::S_PLUS) && !IsExpected(expected, Symbol::S_NUMBER);
  const Token& found = tokens.At(0);
  const Token& before = tokens.At(-1);
  switch (found.kind) {
    case Kind::TOKEN_FOREIGN:
      if (tokens.Text(found) == "==" && IsExpected(expected, Symbol::S_EQUALS))
        return "an equation is written with one '='";
      return HintFor(kForeign, tokens.Text(found));
    case Kind::TOKEN_SLASH:
      return LeibnizHint(tokens);
    case Kind::TOKEN_COMMA:
      if (before.kind == Kind::TOKEN_NUMBER && tokens.At(1).kind == Kind::TOKEN_NUMBER &&
          Touch(before, found)) {
        return "decimals are written with a point: " +
               std::string(tokens.Text(before).substr(0, kMaxQuoted)) + "." +
               std::string(tokens.Text(tokens.At(1)).substr(0, kMaxQuoted));
      }
      return {};
    case Kind::TOKEN_LEFT_BRACKET:
      return before.kind == Kind::TOKEN_NAME ? "names have no indices; write x1, x2" : "";
    case Kind::TOKEN_EQUALS:
      return tokens.BeginsStatement(0)
                 ? ""
                 : "comparisons are <, <=, > and >=; '=' stands in statements only";
    case Kind::TOKEN_COLON:
      return tokens.BeginsStatement(-1) ? "write name = expression; or event name: expression;"
                                        : "";
    case Kind::TOKEN_RIGHT_PARENTHESIS:
    case Kind::TOKEN_RIGHT_BRACKET:
    case Kind::TOKEN_RIGHT_BRACE:
    case Kind::TOKEN_AMPERSAND:
      return {};
    default:
      break;
  }
  if (before.kind == Kind::TOKEN_NAME && tokens.BeginsStatement(-1) &&
      found.kind == Kind::TOKEN_NAME) {
    return HintFor(kDeclarations, tokens.Text(before));
  }
  return afterOperand ? JuxtapositionHint(tokens) : "";
}

std::string HintOnUnclosed(const TokenStream& tokens, const Sources& sources)
{
  const std::optional<Place> bracket = tokens.Unclosed();
  if (!bracket) return {};
  const Position position = sources.Begin(*bracket);
  return "the " + Quoted(sources.Text(*bracket)) + " of line " + std::to_string(position.line) +
         ", column " + std::to_string(position.column) + " is not closed";
}

}  // namespace

SyntaxError DescribeSyntaxError(const TokenStream& tokens,
                                std::span<const Grammar::symbol_kind_type> expected,
                                const Sources& sources)
{
  SyntaxError error{tokens.At(0).place, NameOfFound(tokens), HintOn(tokens, expected)};
  if (const std::string list = ListOfExpected(expected); !list.empty())
    error.message += ", expected " + list;
  if (error.hint.empty()) error.hint = HintOnUnclosed(tokens, sources);
  if (error.hint.empty() && tokens.At(0).kind == Kind::TOKEN_END &&
      IsExpected(expected, Symbol::S_SEMICOLON))
    error.hint = "a statement ends with ';', the last one too";
  return error;
}

}  // namespace varno::solve
