#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "solve/model/model.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// A text that was read as a problem named "test.varno", with all remarks.
struct ReadProblem {
  explicit ReadProblem(std::string_view text, const std::vector<std::string>& settings = {});

  /// The remarks as they are printed.
  std::string Remarks() const;
  /// "message (hint)" of the errors, each with the text at its place before it: "foo: 'foo' is not
  /// defined".
  std::vector<std::string> Errors() const;
  /// The node of a column; fails the test when there is none.
  NodeId Column(std::string_view name) const;
  const State& StateNamed(std::string_view name) const;
  /// The text of an expression.
  std::string RightHandSide(std::string_view state) const;
  std::string Start(std::string_view state) const;
  std::string ColumnText(std::string_view name) const;

  Sources sources;
  Diagnostics diagnostics;
  Model model;
};

}  // namespace varno::solve
