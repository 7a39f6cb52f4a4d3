#include "solve/language/parse.h"

#include "solve/language/grammar.h"  // generated
#include "solve/language/syntax_actions.h"
#include "solve/language/token_stream.h"

namespace varno::solve {

namespace {

void Parse(TokenKind text, const Sources& sources, std::uint32_t source, Syntax& syntax,
           Diagnostics& diagnostics)
{
  TokenStream tokens(text, sources, source, diagnostics);
  SyntaxActions actions(sources, syntax, diagnostics);
  Grammar(tokens, actions).parse();
  // Names of which only a broken statement tells are not reported as undefined as well.
  if (diagnostics.HasErrors()) {
    syntax.lostNames.insert(syntax.lostNames.end(), tokens.DefinedNames().begin(),
                            tokens.DefinedNames().end());
  }
}

}  // namespace

Syntax ParseProblem(const Sources& sources, std::uint32_t source, Diagnostics& diagnostics)
{
  Syntax syntax;
  Parse(Grammar::token::TOKEN_FILE_TEXT, sources, source, syntax, diagnostics);
  return syntax;
}

void ParseSetting(const Sources& sources, std::uint32_t source, Syntax& syntax,
                  Diagnostics& diagnostics)
{
  Parse(Grammar::token::TOKEN_SETTING_TEXT, sources, source, syntax, diagnostics);
}

Syntax ParseExpression(const Sources& sources, std::uint32_t source, Diagnostics& diagnostics)
{
  Syntax syntax;
  Parse(Grammar::token::TOKEN_EXPRESSION_TEXT, sources, source, syntax, diagnostics);
  return syntax;
}

}  // namespace varno::solve
