#include "varno/parser/parse.h"

#include <cstddef>

#include "grammar.h"
#include "varno/parser/equation_table.h"
#include "varno/parser/semantic_value.h"
#include "varno/sys/stack_guard.h"

namespace varno {

namespace {

/// A symbol of the parser's stack has a state, of two bytes at most, beside its value.
constexpr std::size_t kSymbolBytes = sizeof(SemanticValue) + 2;

}  // namespace

bool ParseInput()
{
  RequireStack(kParserStackDepth * kSymbolBytes);
  if (yyparse() != 0) return false;
  ApplyStartValues();
  return true;
}

}  // namespace varno
