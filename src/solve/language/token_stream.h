#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "solve/language/token.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// The tokens of a text as the grammar takes them.
///
/// What a token is can depend on its neighbours: "and" is an operator only after an operand,
/// "function" and "event" begin a statement only before a name, and a semicolon inside brackets
/// ends no statement.
class TokenStream {
 public:
  /// `text` tells the grammar what to expect: FILE_TEXT, SETTING_TEXT, EXPRESSION_TEXT. Reports
  /// missing semicolons between statements.
  TokenStream(TokenKind text, const Sources& sources, std::uint32_t source,
              Diagnostics& diagnostics);

  /// The next token: first `text`, then those of the text; at the end END, however often.
  const Token& Next();

  /// The token that Next gave last, `offset` tokens on; END beyond the end, `text` before the
  /// beginning.
  const Token& At(std::ptrdiff_t offset) const;
  /// True when At(offset) begins a statement.
  bool BeginsStatement(std::ptrdiff_t offset) const;
  /// The bracket that is still open at the semicolon, the closing bracket or the end that Next gave
  /// last.
  std::optional<Place> Unclosed() const;
  std::string_view Text(const Token& token) const { return sources.Text(token.place); }

  /// Names that stand before "=", or what looks like their definition.
  const std::vector<Place>& DefinedNames() const { return definedNames; }

 private:
  const Sources& sources;
  Token first;                                      // the kind of the text
  std::vector<Token> tokens;                        // last END
  std::vector<bool> beginsStatement;                // one for each token
  std::unordered_map<std::size_t, Place> unclosed;  // by the number of a token
  std::vector<Place> definedNames;
  std::size_t given = 0;  // how many tokens Next has given, with `first`
};

}  // namespace varno::solve
