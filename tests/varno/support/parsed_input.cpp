#include "tests/varno/support/parsed_input.h"

#include <sstream>

#include "tests/varno/support/log_capture.h"
#include "varno/core/global_data.h"
#include "varno/parser/parse.h"
#include "varno/parser/scanner.h"

namespace varno {

namespace {

std::FILE* FileHolding(std::string_view text)
{
  std::FILE* const file = std::tmpfile();
  std::fwrite(text.data(), 1, text.size(), file);
  std::rewind(file);
  return file;
}

}  // namespace

ScannerInput::ScannerInput(std::string_view text) : file(FileHolding(text))
{
  SetScannerInput(file);
}

ScannerInput::~ScannerInput()
{
  SetScannerInput(stdin);
  std::fclose(file);
}

ParsedInput::ParsedInput(std::string_view text)
{
  const ScannerInput input(text);
  const LogCapture capture;
  accepted = ParseInput();
  log = capture.Text();
}

Differential& VariableNamed(const std::string& name)
{
  return VariableOf(Expr::Global->_EQUATIONS.at(name));
}

std::string Printed(const Expr& expression)
{
  std::ostringstream out;
  expression.Print(out);
  return out.str();
}

std::string PrintedRightHandSide(const std::string& name)
{
  return Printed(*VariableNamed(name).RightHandSide());
}

}  // namespace varno
