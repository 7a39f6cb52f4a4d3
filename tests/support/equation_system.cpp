#include "support/equation_system.h"

#include <cstdio>
#include <sstream>

#include <gtest/gtest.h>

#include "config/global_data.h"
#include "parser/parse.h"
#include "parser/scanner.h"
#include "solver/driver.h"

namespace varno {

EquationSystem::EquationSystem(std::string_view input)
{
  std::FILE* const file = std::tmpfile();
  std::fwrite(input.data(), 1, input.size(), file);
  std::rewind(file);
  SetScannerInput(file);
  EXPECT_TRUE(ParseInput()) << input;
  SetScannerInput(stdin);
  std::fclose(file);
}

void EquationSystem::Initialize()
{
  InitializeEquations();
}

std::vector<std::string> EquationSystem::Names() const
{
  std::vector<std::string> names;
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) names.push_back(name);
  return names;
}

Differential& EquationSystem::operator[](const std::string& name) const
{
  return VariableOf(Expr::Global->_EQUATIONS.at(name));
}

std::string EquationSystem::RightHandSide(const std::string& name) const
{
  return Shown((*this)[name].RightHandSide());
}

Mpf EquationSystem::StartValue(const std::string& name) const
{
  Mpf value;
  (*this)[name].GetInitValue(value);
  return value;
}

std::string Shown(const Expr::Ref& expression)
{
  std::ostringstream out;
  expression->Print(out);
  return out.str();
}

Mpf InitialValue(const Expr::Ref& expression)
{
  Mpf value;
  expression->InitValue(value);
  return value;
}

}  // namespace varno
