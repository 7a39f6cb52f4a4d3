#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "expr/differential.h"

namespace varno {

/// Equations in the words of the input language, in the tables of the record in force.
class EquationSystem {
 public:
  /// Reads the equations; expects that they are accepted.
  explicit EquationSystem(std::string_view input);

  /// Converts the equations and sets the start values, as a run does before the integration.
  void Initialize();

  /// The names in the order of the equation table.
  std::vector<std::string> Names() const;
  /// The variable with this name, which must be there.
  Differential& operator[](const std::string& name) const;
  /// Its right-hand side, printed.
  std::string RightHandSide(const std::string& name) const;
  /// The start value of the variable.
  Mpf StartValue(const std::string& name) const;
};

/// An expression as it prints itself.
std::string Shown(const Expr::Ref& expression);

/// The value of an expression at the initial time.
Mpf InitialValue(const Expr::Ref& expression);

}  // namespace varno
