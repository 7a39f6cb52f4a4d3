#pragma once

#include <cstdio>

#include "varno/parser/semantic_value.h"

/// The next token of the input, 0 at its end. Its value goes to *value.
int yylex(varno::SemanticValue* value);

/// Reports an error with the text of the current token and the current line:
/// #(ERR) ERROR: MESSAGE "TOKEN" at line #LINE
void yyerror(const char* message);

namespace varno {

/// Makes the scanner begin with line 1 of a file. Without a call it reads standard input.
void SetScannerInput(std::FILE* input);

/// The line that the scanner has reached, from 1.
int CurrentLine();

}  // namespace varno
