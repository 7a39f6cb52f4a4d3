#include "tests/solve/support/read_problem.h"

#include <algorithm>
#include <stdexcept>

#include "solve/language/parse.h"
#include "solve/model/build_model.h"
#include "solve/model/print.h"

namespace varno::solve {

ReadProblem::ReadProblem(std::string_view text, const std::vector<std::string>& texts)
{
  std::vector<Setting> settings;
  for (const std::string& setting : texts) settings.push_back({setting, "--set"});
  const std::uint32_t source = sources.Add("test.varno", std::string(text));
  const Syntax syntax = ParseProblem(sources, source, diagnostics);
  model = BuildModel(syntax, settings, sources, diagnostics);
}

std::string ReadProblem::Remarks() const
{
  return Render(diagnostics, sources);
}

std::vector<std::string> ReadProblem::Errors() const
{
  std::vector<std::string> errors;
  for (const Diagnostic& diagnostic : diagnostics.All()) {
    if (diagnostic.severity != Severity::kError) continue;
    std::string error = std::string(sources.Text(diagnostic.place)) + ": " + diagnostic.message;
    if (!diagnostic.hint.empty()) error += " (" + diagnostic.hint + ")";
    errors.push_back(error);
  }
  return errors;
}

NodeId ReadProblem::Column(std::string_view name) const
{
  const auto found =
      std::find_if(model.columns.begin(), model.columns.end(),
                   [name](const solve::Column& column) { return column.name == name; });
  if (found == model.columns.end())
    throw std::runtime_error("no column " + std::string(name) + "\n" + Remarks());
  return found->value;
}

const State& ReadProblem::StateNamed(std::string_view name) const
{
  const auto found = std::find_if(model.states.begin(), model.states.end(),
                                  [name](const State& state) { return state.name == name; });
  if (found == model.states.end())
    throw std::runtime_error("no state " + std::string(name) + "\n" + Remarks());
  return *found;
}

std::string ReadProblem::RightHandSide(std::string_view state) const
{
  return PrintExpression(model, StateNamed(state).rightHandSide);
}

std::string ReadProblem::Start(std::string_view state) const
{
  return PrintExpression(model, StateNamed(state).start);
}

std::string ReadProblem::ColumnText(std::string_view name) const
{
  return PrintExpression(model, Column(name));
}

}  // namespace varno::solve
