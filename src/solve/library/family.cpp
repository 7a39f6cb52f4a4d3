#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "solve/graph/substitution.h"
#include "solve/library/compiled_problem.h"
#include "solve/library/problem_data.h"
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

/// A smooth problem compiled with some values still to come.
class Template {
 public:
  Template(CompiledProblem compiled, std::vector<std::uint32_t> parameterOf,
           std::uint32_t firstStart)
      : problem(std::move(compiled)),
        inModel(problem.bound.model.graph, Times(problem.bound)),
        inTape(problem.tape->graph),
        parameterOf(std::move(parameterOf)),
        firstStart(firstStart),
        model(WithoutGraph(problem.bound.model)),
        tape(WithoutGraph(*problem.tape))
  {}

  /// Whether the value of an open name decides more than numbers.
  bool IsStructural(std::size_t name) const
  {
    const std::uint32_t parameter = parameterOf[name];
    return inModel.IsStructural(parameter) || inTape.IsStructural(parameter);
  }

  /// The problem with the values of the open names, which are fractions; none where a value changes
  /// more than numbers.
  std::optional<CompiledProblem> With(const std::vector<SweptValue>& values) const
  {
    std::vector<Rational> numbers(firstStart + problem.bound.model.states.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (parameterOf[i] == kNone) continue;
      if (values[i].fraction.empty()) return std::nullopt;
      numbers[parameterOf[i]] = Rational(values[i].fraction);
    }
    std::optional<SubstitutedGraph> inModelGraph =
        inModel.Apply(problem.bound.model.graph, numbers, firstStart);
    std::optional<SubstitutedGraph> inTapeGraph =
        inTape.Apply(problem.tape->graph, numbers, firstStart);
    if (!inModelGraph || !inTapeGraph) return std::nullopt;

    BoundProblem bound{model, problem.bound.constants};
    MoveInto(*std::move(inModelGraph), bound);
    Tape filled = tape;
    for (Line& line : filled.lines) line.node = inTapeGraph->copies[line.node];
    for (NodeId& constant : filled.constants) constant = inTapeGraph->copies[constant];
    filled.graph = std::move(inTapeGraph->graph);
    return CompiledProblem(problem.sources, std::move(bound), std::move(filled));
  }

 private:
  /// Changes all nodes of a problem to their copies.
  static void MoveInto(SubstitutedGraph substituted, BoundProblem& bound)
  {
    const std::vector<NodeId>& copies = substituted.copies;
    Model& filled = bound.model;
    std::vector<NodeId*> nodes{&bound.constants.to};
    for (State& state : filled.states)
      nodes.insert(nodes.end(), {&state.rightHandSide, &state.start});
    for (Column& column : filled.columns) nodes.push_back(&column.value);
    for (NodeId& time : bound.constants.at) nodes.push_back(&time);
    for (auto* const time : {&bound.constants.from, &bound.constants.every, &filled.startPoint}) {
      if (*time) nodes.push_back(&**time);
    }
    for (NodeId* const node : nodes) *node = copies[*node];
    filled.graph = std::move(substituted.graph);
  }

  template <class WithGraph>
  static WithGraph WithoutGraph(WithGraph whole)
  {
    whole.graph = Graph();
    return whole;
  }

  /// The times of the run are read before values come in.
  static std::vector<NodeId> Times(const BoundProblem& bound)
  {
    const OptionConstants& constants = bound.constants;
    std::vector<NodeId> times = constants.at;
    times.push_back(constants.to);
    for (const auto& time : {constants.from, constants.every, bound.model.startPoint}) {
      if (time) times.push_back(*time);
    }
    return times;
  }

  CompiledProblem problem;
  Substitution inModel, inTape;
  std::vector<std::uint32_t> parameterOf;  // for each name the number of its leaf; kNone: not open
  std::uint32_t firstStart;                // the numbers of start values begin here
  Model model;                             // without its graph, to be copied, as the tape
  Tape tape;
};

}  // namespace

class Family::Implementation {
 public:
  Implementation(const Problem& problem, Options options, std::vector<std::string> names);
  Solution At(const std::vector<SweptValue>& values);

 private:
  using Texts = std::vector<std::string>;

  Texts Settings(const std::vector<SweptValue>& values) const;
  std::shared_ptr<const Template> Make(const std::vector<SweptValue>& values) const;
  std::shared_ptr<const Template> TemplateFor(const std::vector<SweptValue>& values);
  std::optional<CompiledProblem> TryTemplate(const std::vector<SweptValue>& values);

  Problem problem;
  Options options;
  Texts names;
  std::vector<bool> isOpen;  // for each name, whether its value comes in last

  std::mutex mutex;
  std::map<Texts, std::shared_ptr<const Template>> templates;  // by the values that are not open
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
    const std::shared_ptr<const Template> all = Make(ones);
    for (std::size_t i = 0; i < names.size(); ++i)
      isOpen[i] = isOpen[i] && all && !all->IsStructural(i);
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

/// The problem with the values of the names that are not open; null where it is piecewise smooth.
std::shared_ptr<const Template> Family::Implementation::Make(
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
  if (!compiled.tape) return nullptr;
  Model& bound = compiled.bound.model;
  for (const std::uint32_t leaf : leaves) {
    if (leaf == kNone || leaf < firstStart) continue;
    State& state = bound.states[leaf - firstStart];
    state.start = bound.graph.Parameter(leaf, state.place);
  }
  return std::make_shared<const Template>(std::move(compiled), std::move(leaves), firstStart);
}

std::shared_ptr<const Template> Family::Implementation::TemplateFor(
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
    const std::shared_ptr<const Template> found = TemplateFor(values);
    return found ? found->With(values) : std::nullopt;
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
