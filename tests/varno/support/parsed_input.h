#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "varno/core/expr.h"
#include "varno/expr/differential.h"

namespace varno {

/// Makes the scanner read a text for the length of the scope, and standard input afterwards.
class ScannerInput {
 public:
  explicit ScannerInput(std::string_view text);
  ~ScannerInput();
  ScannerInput(const ScannerInput&) = delete;
  ScannerInput& operator=(const ScannerInput&) = delete;

 private:
  std::FILE* const file;
};

/// What came of parsing a text into the tables of the record.
struct ParsedInput {
  explicit ParsedInput(std::string_view text);

  bool accepted;
  std::string log;
};

/// The variable of the equation table with this name, which must be there.
Differential& VariableNamed(const std::string& name);

std::string Printed(const Expr& expression);

/// The right-hand side of the variable with this name, printed.
std::string PrintedRightHandSide(const std::string& name);

}  // namespace varno
