#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "solve/library/compiled_problem.h"
#include "solve/library/problem_data.h"
#include "solve/library/problem_template.h"
#include "solve/library/solution_data.h"
#include "solve/library/solve.h"
#include "solve/number/exponent_range.h"

namespace varno::solve {

namespace {

/// What is compiled for different values of structural names is kept for so many of them.
constexpr std::size_t kMostTemplates = 64;
/// What stands for a value in messages.
constexpr const char* kOrigin = "--sweep";

/// The name of the state that a start value such as "x'3(0)" is about.
std::string StateName(const std::string& name)
{
  std::string state;
  for (std::size_t i = 0; i < name.size() && name[i] != '('; ++i) {
    if (name[i] != ' ' && name[i] != '\t') state += name[i];
  }
  const auto apostrophe = state.find('\'');
  if (apostrophe + 1 < state.size() && apostrophe != std::string::npos &&
      state[apostrophe + 1] != '\'') {
    const int order = std::atoi(state.c_str() + apostrophe + 1);
    state.resize(apostrophe);
    if (order > 0 && order < 1000) state.append(static_cast<std::size_t>(order), '\'');
  }
  return state;
}

/// Whether one of several things has this name.
template <class Named>
bool HasName(const std::vector<Named>& things, const std::string& name)
{
  return std::ranges::find(things, name, &Named::name) != things.end();
}

}  // namespace

class Family::Implementation {
 public:
  Implementation(const Problem& problem, Options options, std::vector<std::string> names);
  Solution At(const std::vector<SweptValue>& values);

 private:
  using Texts = std::vector<std::string>;

  Texts Settings(const std::vector<SweptValue>& values) const;
  std::shared_ptr<const ProblemTemplate> Make(const std::vector<SweptValue>& values) const;
  std::shared_ptr<const ProblemTemplate> TemplateFor(const std::vector<SweptValue>& values);
  std::optional<CompiledProblem> TryTemplate(const std::vector<SweptValue>& values);

  Problem problem;
  Options options;
  Texts names;
  std::vector<bool> isOpen;  // for each name, whether its value comes in last

  std::mutex mutex;
  /// By the values that are not open.
  std::map<Texts, std::shared_ptr<const ProblemTemplate>> templates;
};

Family::Implementation::Implementation(const Problem& given, Options givenOptions, Texts givenNames)
    : problem(given), options(std::move(givenOptions)), names(std::move(givenNames))
{
  const Model& model = problem.implementation->model;
  for (const std::string& name : names) {
    isOpen.push_back(HasName(model.parameters, name) || HasName(model.states, StateName(name)));
  }
  Texts others;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!HasName(model.parameters, names[i])) others.push_back(names[i] + "=1");
  }
  problem.With(others, kOrigin);  // tells of names that are none
  try {
    const std::vector<SweptValue> ones(names.size(), SweptValue{"1", "1", "1"});
    const std::shared_ptr<const ProblemTemplate> all = Make(ones);
    for (std::size_t i = 0; i < names.size(); ++i) isOpen[i] = isOpen[i] && !all->IsStructural(i);
  } catch (const InputError&) {
    // Without values it is not to be understood, and wrong options are told with them.
    isOpen.assign(names.size(), false);
  }
}

Family::Implementation::Texts Family::Implementation::Settings(
    const std::vector<SweptValue>& values) const
{
  Texts settings;
  for (std::size_t i = 0; i < names.size(); ++i)
    settings.push_back(names[i] + "=" + values[i].expression);
  return settings;
}

/// The problem with the values of the names that are not open.
std::shared_ptr<const ProblemTemplate> Family::Implementation::Make(
    const std::vector<SweptValue>& values) const
{
  // Start values bring their point in, whatever they are.
  Texts settings;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!isOpen[i]) {
      settings.push_back(names[i] + "=" + values[i].expression);
    } else if (names[i].find('(') != std::string::npos) {
      settings.push_back(names[i] + "=1");
    }
  }
  const Problem with = problem.With(settings, kOrigin);
  const Model& model = with.implementation->model;

  std::vector<std::uint32_t> open, leaves(names.size(), kNone);
  const auto firstStart = static_cast<std::uint32_t>(model.parameters.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!isOpen[i]) continue;
    const auto parameter = std::ranges::find(model.parameters, names[i], &Parameter::name);
    const auto state = std::ranges::find(model.states, StateName(names[i]), &State::name);
    if (parameter != model.parameters.end()) {
      leaves[i] = static_cast<std::uint32_t>(parameter - model.parameters.begin());
      open.push_back(leaves[i]);
    } else {
      leaves[i] = firstStart + static_cast<std::uint32_t>(state - model.states.begin());
    }
  }
  CompiledProblem compiled(with.implementation->sources, model, options, open);
  Model& bound = compiled.bound.model;
  for (const std::uint32_t leaf : leaves) {
    if (leaf == kNone || leaf < firstStart) continue;
    State& state = bound.states[leaf - firstStart];
    state.start = bound.graph.Parameter(leaf, state.place);
  }
  return std::make_shared<const ProblemTemplate>(std::move(compiled), std::move(leaves),
                                                 firstStart);
}

std::shared_ptr<const ProblemTemplate> Family::Implementation::TemplateFor(
    const std::vector<SweptValue>& values)
{
  Texts key;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!isOpen[i]) key.push_back(values[i].expression);
  }
  // Held while one is made: the others would make the same.
  const std::scoped_lock lock(mutex);
  const auto found = templates.find(key);
  if (found != templates.end()) return found->second;
  if (templates.size() >= kMostTemplates) templates.clear();
  return templates[key] = Make(values);
}

/// None where the values must be read together with the equations, as for times that will be asked
/// for in their terms.
std::optional<CompiledProblem> Family::Implementation::TryTemplate(
    const std::vector<SweptValue>& values)
{
  if (options.keepSteps || std::ranges::find(isOpen, true) == isOpen.end()) return std::nullopt;
  try {
    return TemplateFor(values)->With(values);
  } catch (const InputError&) {
    return std::nullopt;  // it is told with the settings as they are
  }
}

Solution Family::Implementation::At(const std::vector<SweptValue>& values)
{
  const ScopedExponentRange range;
  std::optional<CompiledProblem> compiled = TryTemplate(values);
  if (!compiled) return Solution(problem.With(Settings(values), kOrigin), options);
  return Solution(std::make_unique<Solution::Implementation>(*std::move(compiled), options));
}

Family::Family(const Problem& problem, Options options, std::vector<std::string> names)
{
  const ScopedExponentRange range;
  implementation = std::make_unique<Implementation>(problem, std::move(options), std::move(names));
}

Family::Family(Family&&) noexcept = default;
Family& Family::operator=(Family&&) noexcept = default;
Family::~Family() = default;

Solution Family::At(const std::vector<SweptValue>& values) const
{
  return implementation->At(values);
}

}  // namespace varno::solve
