#include "parser/parse.h"

#include "grammar.h"
#include "parser/equation_table.h"

namespace varno {

bool ParseInput()
{
  if (yyparse() != 0) return false;
  ApplyStartValues();
  return true;
}

}  // namespace varno
