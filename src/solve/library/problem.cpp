#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "solve/library/problem_data.h"
#include "solve/library/solve.h"
#include "solve/model/build_model.h"
#include "solve/source/diagnostics.h"

namespace varno::solve {

Problem::Implementation::Implementation(std::string text, std::string name,
                                        std::vector<Setting> given)
    : settings(std::move(given))
{
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add(std::move(name), std::move(text));
  try {
    model = ReadModel(source, settings, sources, diagnostics);
  } catch (const ProblemError& error) {
    throw InputError(error.what());
  }
  notes = Render(diagnostics, sources);
}

Problem::Problem(std::unique_ptr<Implementation> implementation)
    : implementation(std::move(implementation))
{}
Problem::Problem(const Problem& other)
    : implementation(std::make_unique<Implementation>(*other.implementation))
{}
Problem& Problem::operator=(const Problem& other)
{
  return *this = Problem(other);
}
Problem::Problem(Problem&&) noexcept = default;
Problem& Problem::operator=(Problem&&) noexcept = default;
Problem::~Problem() = default;

Problem Problem::Parse(std::string text, std::string name)
{
  return Problem(
      std::make_unique<Implementation>(std::move(text), std::move(name), std::vector<Setting>()));
}

void Problem::Set(std::string setting)
{
  *this = With({std::move(setting)});
}

Problem Problem::With(std::vector<std::string> settings, const std::string& origin) const
{
  std::vector<Setting> all = implementation->settings;
  for (std::string& setting : settings) all.push_back({std::move(setting), origin});
  const Sources& sources = implementation->sources;
  return Problem(
      std::make_unique<Implementation>(sources.Text(0), sources.Name(0), std::move(all)));
}

bool Problem::HasParameter(const std::string& name) const
{
  const auto& parameters = implementation->model.parameters;
  return std::ranges::find(parameters, name, &Parameter::name) != parameters.end();
}

const std::string& Problem::Notes() const
{
  return implementation->notes;
}

}  // namespace varno::solve
