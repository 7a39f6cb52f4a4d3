#include "solve/language/token_stream.h"

#include <string_view>
#include <utility>

#include "solve/language/scanner.h"

namespace varno::solve {

namespace {

using Kind = Grammar::token;

/// True for tokens that can end an operand: what follows them is an operator.
bool EndsOperand(TokenKind kind)
{
  switch (kind) {
    case Kind::TOKEN_NAME:
    case Kind::TOKEN_NUMBER:
    case Kind::TOKEN_PI:
    case Kind::TOKEN_TIME:
    case Kind::TOKEN_DERIVATIVE:
    case Kind::TOKEN_RIGHT_PARENTHESIS:
    case Kind::TOKEN_RIGHT_BRACKET:
      return true;
    default:
      return false;
  }
}

/// One pass over scanned tokens that settles what depends on neighbours.
class Classification {
 public:
  Classification(const Sources& sources, std::vector<Token> scannedTokens, Diagnostics& diagnostics)
      : sources(sources), scanned(std::move(scannedTokens)), diagnostics(diagnostics)
  {
    FindClosedBraces();
  }

  void Run()
  {
    for (std::size_t i = 0; i < scanned.size(); ++i) Take(i);
  }

  std::vector<Token> tokens;
  std::vector<bool> beginsStatement;
  std::unordered_map<std::size_t, Place> unclosed;
  std::vector<Place> definedNames;

 private:
  TokenKind KindAt(std::size_t index) const
  {
    return index < scanned.size() ? scanned[index].kind : Kind::TOKEN_END;
  }
  std::string_view TextAt(std::size_t index) const
  {
    return index < scanned.size() ? sources.Text(scanned[index].place) : std::string_view();
  }

  /// A brace is closed if a closing one comes before the next opening one: braces do not nest.
  void FindClosedBraces()
  {
    closed.resize(scanned.size());
    bool closes = false;
    for (std::size_t i = scanned.size(); i-- > 0;) {
      if (scanned[i].kind == Kind::TOKEN_RIGHT_BRACE) closes = true;
      if (scanned[i].kind == Kind::TOKEN_LEFT_BRACE) {
        closed[i] = closes;
        closes = false;
      }
    }
  }

  void Take(std::size_t i)
  {
    switch (scanned[i].kind) {
      case Kind::TOKEN_NAME:
        TakeName(i);
        return;
      case Kind::TOKEN_LEFT_PARENTHESIS:
      case Kind::TOKEN_LEFT_BRACKET:
      case Kind::TOKEN_LEFT_BRACE:
        open.push_back(i);
        break;
      case Kind::TOKEN_RIGHT_PARENTHESIS:
        Close(Kind::TOKEN_LEFT_PARENTHESIS);
        break;
      case Kind::TOKEN_RIGHT_BRACKET:
        Close(Kind::TOKEN_LEFT_BRACKET);
        break;
      case Kind::TOKEN_RIGHT_BRACE:
        Close(Kind::TOKEN_LEFT_BRACE);
        break;
      case Kind::TOKEN_SEMICOLON:
        TakeSemicolon(i);
        return;
      case Kind::TOKEN_END:
        NoteUnclosed();
        break;
      default:
        break;
    }
    if (scanned[i].kind == Kind::TOKEN_EQUALS || scanned[i].kind == Kind::TOKEN_COLON)
      statementIsUnderWay = true;
    Append(scanned[i]);
  }

  void Append(Token token)
  {
    tokens.push_back(token);
    beginsStatement.push_back(statementBegins);
    statementBegins = false;
  }

  /// The next token will note this bracket as one that it finds open.
  void NoteUnclosed()
  {
    if (!open.empty()) unclosed.emplace(tokens.size(), scanned[open.back()].place);
  }

  void Close(TokenKind opening)
  {
    if (!open.empty() && scanned[open.back()].kind == opening) {
      open.pop_back();
    } else {
      NoteUnclosed();
    }
  }

  void EndStatement()
  {
    open.clear();
    statementBegins = true;
    statementIsUnderWay = false;
  }

  // --- Names

  void TakeName(std::size_t i)
  {
    if (LacksSemicolon(i)) InsertSemicolon();
    if (SeemsDefined(i)) definedNames.push_back(scanned[i].place);
    NoteLeibniz(i);
    Token token = scanned[i];
    token.kind = KindOfName(i);
    Append(token);
  }

  TokenKind KindOfName(std::size_t i) const
  {
    const std::string_view text = TextAt(i);
    if (statementBegins) {
      const bool introduces = KindAt(i + 1) == Kind::TOKEN_NAME;
      if (introduces && text == "function") return Kind::TOKEN_FUNCTION;
      if (introduces && text == "event") return Kind::TOKEN_EVENT;
      return Kind::TOKEN_NAME;
    }
    if (EndsOperand(tokens.back().kind)) {
      if (text == "and") return Kind::TOKEN_AND;
      if (text == "or") return Kind::TOKEN_OR;
    } else if (text == "not" && BeginsOperand(i + 1) &&
               tokens.back().kind != Kind::TOKEN_FUNCTION) {
      return Kind::TOKEN_NOT;
    }
    return Kind::TOKEN_NAME;
  }

  /// True for tokens that no name can stand before, so that "not" before them is no name. Signs are
  /// not among them: "not - 1" is a difference.
  bool BeginsOperand(std::size_t i) const
  {
    switch (KindAt(i)) {
      case Kind::TOKEN_NAME:
        return TextAt(i) != "and" && TextAt(i) != "or";
      case Kind::TOKEN_NUMBER:
      case Kind::TOKEN_PI:
      case Kind::TOKEN_TIME:
      case Kind::TOKEN_LEFT_PARENTHESIS:
      case Kind::TOKEN_LEFT_BRACKET:
        return true;
      default:
        return false;
    }
  }

  /// "name =", "name' ="
  bool SeemsDefined(std::size_t i) const
  {
    if (i > 0 && KindAt(i - 1) == Kind::TOKEN_SLASH) return false;  // dx/dt =
    const std::size_t next = KindAt(i + 1) == Kind::TOKEN_DERIVATIVE ? i + 2 : i + 1;
    return KindAt(next) == Kind::TOKEN_EQUALS ||
           (i > 0 && TextAt(i - 1) == "function" && KindAt(next) == Kind::TOKEN_LEFT_PARENTHESIS);
  }

  /// "dx/dt": x is defined by what will be reported as a mistake.
  void NoteLeibniz(std::size_t i)
  {
    const bool fraction = KindAt(i + 1) == Kind::TOKEN_SLASH && TextAt(i + 2) == "dt";
    if (!fraction || !statementBegins || TextAt(i).size() < 2 || !TextAt(i).starts_with('d'))
      return;
    Place name = scanned[i].place;
    ++name.begin;
    definedNames.push_back(name);
  }

  // --- Semicolons

  /// True before a name that begins the next statement although the one before has no end: inside
  /// an expression no name follows an operand, and none stands before "=".
  bool LacksSemicolon(std::size_t i) const
  {
    if (!statementIsUnderWay || statementBegins || !EndsOperand(tokens.back().kind)) return false;
    if (!open.empty() && scanned[open.back()].kind == Kind::TOKEN_LEFT_BRACE) return false;
    const std::size_t next = KindAt(i + 1) == Kind::TOKEN_DERIVATIVE ? i + 2 : i + 1;
    return KindAt(next) == Kind::TOKEN_EQUALS;
  }

  void InsertSemicolon()
  {
    const Place place = After(tokens.back().place);
    // With a bracket open the parser has something to say at the semicolon.
    if (open.empty()) diagnostics.Error(place, "missing ';'", "statements end with ';'");
    NoteUnclosed();
    Append({Kind::TOKEN_SEMICOLON, place});
    EndStatement();
  }

  void TakeSemicolon(std::size_t i)
  {
    NoteUnclosed();
    Token token = scanned[i];
    // What was opened inside brackets must be closed inside.
    while (!open.empty() && (scanned[open.back()].kind == Kind::TOKEN_LEFT_PARENTHESIS ||
                             IsBroken(open.back(), i))) {
      open.pop_back();
    }
    if (!open.empty()) token.kind = Kind::TOKEN_SEPARATOR;
    Append(token);
    if (open.empty()) EndStatement();
  }

  /// True for a bracket that will not be closed: then a mistake in one statement does not swallow
  /// the others.
  bool IsBroken(std::size_t bracket, std::size_t semicolon) const
  {
    if (scanned[bracket].kind == Kind::TOKEN_LEFT_BRACE) return !closed[bracket];
    if (KindAt(semicolon + 1) == Kind::TOKEN_END) return true;
    return KindAt(semicolon + 1) == Kind::TOKEN_NAME && SeemsDefined(semicolon + 1);
  }

  const Sources& sources;
  const std::vector<Token> scanned;
  Diagnostics& diagnostics;
  std::vector<std::size_t> open;  // brackets not closed yet
  std::vector<bool> closed;       // for each "{"
  bool statementBegins = true;
  bool statementIsUnderWay = false;  // "=" or ":" has been seen
};

}  // namespace

TokenStream::TokenStream(TokenKind text, const Sources& sources, std::uint32_t source,
                         Diagnostics& diagnostics)
    : sources(sources)
{
  Classification classes(sources, Scan(sources, source, diagnostics), diagnostics);
  classes.Run();
  tokens = std::move(classes.tokens);
  beginsStatement = std::move(classes.beginsStatement);
  unclosed = std::move(classes.unclosed);
  definedNames = std::move(classes.definedNames);
  // At the end something is missing after the last token, not after the blank lines.
  if (tokens.size() > 1) tokens.back().place = After(tokens[tokens.size() - 2].place);
  first = {text, {source, 0, 0}};
}

const Token& TokenStream::Next()
{
  if (given < tokens.size() + 1) ++given;
  return At(0);
}

const Token& TokenStream::At(std::ptrdiff_t offset) const
{
  const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(given) - 2 + offset;
  if (index < 0) return first;
  return index < static_cast<std::ptrdiff_t>(tokens.size())
             ? tokens[static_cast<std::size_t>(index)]
             : tokens.back();
}

bool TokenStream::BeginsStatement(std::ptrdiff_t offset) const
{
  const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(given) - 2 + offset;
  return index >= 0 && index < static_cast<std::ptrdiff_t>(tokens.size()) &&
         beginsStatement[static_cast<std::size_t>(index)];
}

std::optional<Place> TokenStream::Unclosed() const
{
  const auto found = unclosed.find(given - 2);
  if (given < 2 || found == unclosed.end()) return std::nullopt;
  return found->second;
}

}  // namespace varno::solve
