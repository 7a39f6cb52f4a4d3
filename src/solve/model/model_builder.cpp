#include "solve/model/model_builder.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "solve/model/equal_constants.h"

namespace varno::solve {

namespace {

std::string Quoted(std::string_view name)
{
  return "'" + std::string(name) + "'";
}

}  // namespace

ModelBuilder::ModelBuilder(const Syntax& problem, const Syntax& settings, const Sources& sources,
                           Diagnostics& diagnostics)
    : problem(problem),
      settings(settings),
      sources(sources),
      diagnostics(diagnostics),
      declarations(problem, sources, diagnostics),
      resolution(declarations, sources, diagnostics),
      starts(declarations.StateCount())
{}

Model ModelBuilder::Build()
{
  if (problem.IsEmpty() && !diagnostics.HasErrors()) {
    diagnostics.Error({}, "there is no equation",
                      "equations are written y' = expression & start value;");
  }
  ResolveAll();
  dependencies = FindDependencies(declarations, resolution, diagnostics);
  CollectStarts();
  ApplyParameterSettings();

  AddStates();
  ExpandDeclarations();
  AddColumns();
  AddNotes();
  return std::move(model);
}

// ------------------------------------------------------------------------------
// Names

void ModelBuilder::ResolveAll()
{
  resolution.AddLostNames(problem);
  resolution.AddLostNames(settings);
  for (const EquationStatement& equation : problem.equations) {
    resolution.Resolve({&problem, equation.right});
    if (equation.start) resolution.Resolve({&problem, *equation.start});
  }
  for (const FunctionStatement& function : problem.functions) {
    resolution.Resolve({&problem, function.body}, function.parameters);
  }
  for (const StartStatement& start : problem.starts) ResolveStart(start, problem);
  for (const EventStatement& event : problem.events) {
    resolution.Resolve({&problem, event.expression}, {}, "write event name: a - b");
    for (const Assignment& assignment : event.assignments)
      resolution.Resolve({&problem, assignment.value});
  }
  for (const StartStatement& start : settings.starts) ResolveStart(start, settings);
  for (const ParameterSetting& setting : settings.settings)
    resolution.Resolve({&settings, setting.value});
}

void ModelBuilder::ResolveStart(const StartStatement& start, const Syntax& syntax)
{
  resolution.Resolve({&syntax, start.point});
  resolution.Resolve({&syntax, start.value});
}

/// Reports what varies in an expression that must not; false if anything does. Names in circles are
/// constant, for all that is known.
bool ModelBuilder::RequireConstant(const Tree& tree, std::string_view what)
{
  bool isConstant = true;
  const Syntax& syntax = *tree.syntax;
  for (ExpressionId id = syntax[tree.root].first; id <= tree.root; ++id) {
    const Binding& binding = resolution.Of(syntax)[id];
    std::string reason;
    if (syntax[id].kind == ExpressionKind::kTime) {
      reason = "'t' is the time";
    } else if (binding.kind == Binding::Kind::kState) {
      reason = Quoted(sources.Text(syntax[id].name)) + " is a variable";
    } else if (binding.kind == Binding::Kind::kDeclaration ||
               binding.kind == Binding::Kind::kFunction) {
      const Dependence dependence = dependencies.dependence[binding.index];
      if (dependence == Dependence::kTime)
        reason = Quoted(sources.Text(syntax[id].name)) + " depends on the time";
      if (dependence == Dependence::kStates)
        reason = Quoted(sources.Text(syntax[id].name)) + " depends on variables";
    }
    if (reason.empty()) continue;
    diagnostics.Error(syntax[id].place, std::string(what) + " must be constant, and " + reason);
    isConstant = false;
  }
  return isConstant;
}

// ------------------------------------------------------------------------------
// Start values and settings

void ModelBuilder::CollectStarts()
{
  for (const EquationStatement& equation : problem.equations) {
    // The second of two equations for a name has been reported, and its start value is not looked
    // at.
    if (equation.start && equation.head.order > 0 && IsDeclaration(equation)) {
      SetStart({equation.head.name, 0, problem[*equation.start].place}, {&problem, *equation.start},
               false);
    }
  }
  for (const StartStatement& start : problem.starts)
    SetStart(start.head, {&problem, start.value}, false);
  for (const StartStatement& start : settings.starts)
    SetStart(start.head, {&settings, start.value}, true);
}

bool ModelBuilder::IsDeclaration(const EquationStatement& equation) const
{
  const std::uint32_t number = declarations.Find(sources.Text(equation.head.name));
  return number != Declarations::kNone && declarations[number].place == equation.head.place;
}

void ModelBuilder::SetStart(const Head& head, const Tree& value, bool isSetting)
{
  RequireConstant(value, "a start value");
  const std::optional<std::uint32_t> state = FindState(head, isSetting);
  if (!state) return;
  std::optional<Start>& start = starts[*state];
  if (start && !isSetting) {
    diagnostics.Error(head.place,
                      "the start value of " + Quoted(sources.Text(head.name)) + " is given twice");
    diagnostics.Note(start->head.place, "it is given here first");
    return;
  }
  start = Start{head, value};
}

/// The state that a start statement or an assignment is about.
std::optional<std::uint32_t> ModelBuilder::FindState(const Head& head, bool isSetting)
{
  const std::string_view name = sources.Text(head.name);
  const std::uint32_t number = declarations.Find(name);
  if (number == Declarations::kNone) {
    if (!isSetting && resolution.IsLost(name)) return std::nullopt;
    const std::string hint = resolution.Suggest(name, [this](NearName& near) {
      for (const Declaration& declaration : declarations.All()) {
        if (declaration.kind == DeclarationKind::kVariable) near.Consider(declaration.name);
      }
    });
    diagnostics.Error(head.name, "there is no equation for " + Quoted(name), hint);
    return std::nullopt;
  }
  const Declaration& declaration = declarations[number];
  if (declaration.kind != DeclarationKind::kVariable) {
    const bool isFunction = declaration.kind == DeclarationKind::kFunction;
    diagnostics.Error(head.name, Quoted(name) +
                                     (isFunction ? " is a function" : " is a definition") +
                                     ", no variable with a value of its own");
    diagnostics.Note(declaration.place, Quoted(name) + " is defined here");
    return std::nullopt;
  }
  if (head.order >= declaration.order) {
    diagnostics.Error(
        head.place, "this derivative has no value of its own: the equation gives it",
        "the equation of " + Quoted(name) + " has the order " + std::to_string(declaration.order));
    diagnostics.Note(declaration.place, "the equation of " + Quoted(name) + " is here");
    return std::nullopt;
  }
  return declaration.firstState + head.order;
}

bool ModelBuilder::IsParameter(std::uint32_t declaration) const
{
  return declarations[declaration].kind == DeclarationKind::kDefinition &&
         !dependencies.broken[declaration] &&
         dependencies.dependence[declaration] == Dependence::kNothing;
}

/// Puts the settings' expressions in the place of the definitions' own.
void ModelBuilder::ApplyParameterSettings()
{
  std::vector<std::pair<std::uint32_t, Tree>> changes;
  for (const ParameterSetting& setting : settings.settings) {
    const std::string_view name = sources.Text(setting.head.name);
    const std::uint32_t number = declarations.Find(name);
    RequireConstant({&settings, setting.value}, "the value of a parameter");
    if (setting.head.order > 0 || (number != Declarations::kNone &&
                                   declarations[number].kind == DeclarationKind::kVariable)) {
      diagnostics.Error(setting.head.place,
                        Quoted(sources.Text(setting.head.place)) + " is no parameter",
                        "a start value is set with its point, as in " +
                            std::string(sources.Text(setting.head.place)) + "(0)=1");
    } else if (number == Declarations::kNone) {
      ReportUnknownParameter(setting.head.name);
    } else if (IsParameter(number)) {
      changes.push_back({number, {&settings, setting.value}});
    } else if (!dependencies.broken[number]) {
      const bool isFunction = declarations[number].kind == DeclarationKind::kFunction;
      diagnostics.Error(setting.head.name, Quoted(name) + " is no parameter",
                        isFunction ? "only definitions without t and variables can be set"
                                   : "its definition depends on t or on variables");
      diagnostics.Note(declarations[number].place, Quoted(name) + " is defined here");
    }
  }
  if (changes.empty() || diagnostics.HasErrors()) return;

  for (const auto& [number, tree] : changes) declarations[number].tree = tree;
  dependencies = FindDependencies(declarations, resolution, diagnostics);
}

void ModelBuilder::ReportUnknownParameter(Place place)
{
  const std::string hint = resolution.Suggest(sources.Text(place), [this](NearName& near) {
    for (std::uint32_t i = 0; i < declarations.Size(); ++i) {
      if (IsParameter(i)) near.Consider(declarations[i].name);
    }
  });
  diagnostics.Error(place, "there is no parameter " + Quoted(sources.Text(place)), hint);
}

// ------------------------------------------------------------------------------
// Nodes

void ModelBuilder::AddStates()
{
  model.states.resize(declarations.StateCount());
  for (const Declaration& declaration : declarations.All()) {
    for (std::uint32_t k = 0; k < declaration.order; ++k) {
      const std::uint32_t index = declaration.firstState + k;
      State& state = model.states[index];
      state.name = DerivativeName(declaration.name, k);
      state.place = declaration.place;
      state.start = kNoNode;
      state.rightHandSide =
          k + 1 < declaration.order ? model.graph.State(index + 1, declaration.place) : kNoNode;
    }
  }
}

void ModelBuilder::ExpandDeclarations()
{
  ValueFaults valueFaults(model.graph, model.parameters);
  Expansion expansion(model.graph, valueFaults, declarations, resolution, sources, diagnostics);
  for (const std::uint32_t number : dependencies.order) {
    if (dependencies.broken[number]) continue;
    const Declaration& declaration = declarations[number];
    switch (declaration.kind) {
      case DeclarationKind::kFunction:
        expansion.SetDeclaration(number, 0);  // it may be called now
        break;
      case DeclarationKind::kVariable: {
        const NodeId node = expansion.Expand(declaration.tree);
        expansion.SetDeclaration(number, node);
        model.states[declaration.firstState + declaration.order - 1].rightHandSide = node;
        break;
      }
      case DeclarationKind::kDefinition:
        expansion.SetDeclaration(number, ExpandDefinition(expansion, number));
        break;
    }
  }
  definitionNodes.resize(declarations.Size(), kNoNode);
  for (std::uint32_t i = 0; i < declarations.Size(); ++i)
    definitionNodes[i] = expansion.DeclarationNode(i);
  ExpandStarts(expansion);
  ExpandStartPoint(expansion);
  ExpandEvents(expansion);
  expansion.ReportValueFaults(ValuesNeeded());
}

/// What must have a value: all but definitions that are columns only, which may be undefined at a
/// row.
std::vector<NodeId> ModelBuilder::ValuesNeeded() const
{
  std::vector<NodeId> needed = points;
  for (const Parameter& parameter : model.parameters) needed.push_back(parameter.value);
  for (const State& state : model.states) {
    needed.push_back(state.rightHandSide);
    needed.push_back(state.start);
  }
  for (const Event& event : model.events) {
    needed.push_back(event.expression);
    for (const EventAssignment& assignment : event.assignments) needed.push_back(assignment.value);
  }
  return needed;
}

NodeId ModelBuilder::ExpandDefinition(Expansion& expansion, std::uint32_t number)
{
  const Declaration& declaration = declarations[number];
  if (!IsParameter(number)) return expansion.Expand(declaration.tree);
  const NodeId value = expansion.Expand(declaration.tree);
  if (value == kNoNode) return kNoNode;
  const auto index = static_cast<std::uint32_t>(model.parameters.size());
  model.parameters.push_back({std::string(declaration.name), value, declaration.place});
  return model.graph.Parameter(index, declaration.place);
}

void ModelBuilder::ExpandStarts(Expansion& expansion)
{
  for (std::size_t i = 0; i < starts.size(); ++i) {
    State& state = model.states[i];
    state.start =
        starts[i] ? expansion.Expand(starts[i]->value) : model.graph.Number(0, state.place);
  }
}

void ModelBuilder::ExpandStartPoint(Expansion& expansion)
{
  for (const StartStatement& start : problem.starts) ExpandPoint(expansion, start, problem);
  for (const StartStatement& start : settings.starts) ExpandPoint(expansion, start, settings);
}

/// All points must be the same.
void ModelBuilder::ExpandPoint(Expansion& expansion, const StartStatement& start,
                               const Syntax& syntax)
{
  const Tree tree{&syntax, start.point};
  if (!RequireConstant(tree, "the point of a start value")) return;
  const NodeId point = expansion.Expand(tree);
  if (point == kNoNode) return;
  points.push_back(point);
  const Place place = syntax[start.point].place;
  if (!model.startPoint) {
    model.startPoint = point;
    firstPoint = place;
  } else if (!AreEqualConstants(model.graph, model.parameters, *model.startPoint, point)) {
    diagnostics.Error(place, "start values are given at different points",
                      "all start values must be given at the same point");
    diagnostics.Note(firstPoint, "the first point is here");
  }
}

void ModelBuilder::AddColumns()
{
  for (std::uint32_t i = 0; i < declarations.Size(); ++i) {
    const Declaration& declaration = declarations[i];
    for (std::uint32_t k = 0; k < declaration.order; ++k) {
      const std::uint32_t index = declaration.firstState + k;
      model.columns.push_back(
          {model.states[index].name, model.graph.State(index, declaration.place)});
    }
    if (declaration.kind == DeclarationKind::kDefinition && !IsParameter(i)) {
      model.columns.push_back({std::string(declaration.name), definitionNodes[i]});
    }
  }
}

// ------------------------------------------------------------------------------
// Events

void ModelBuilder::ExpandEvents(Expansion& expansion)
{
  std::unordered_map<std::string_view, Place> known;
  for (const EventStatement& statement : problem.events) {
    const std::string_view name = sources.Text(statement.name);
    if (const auto [first, isNew] = known.try_emplace(name, statement.name); !isNew) {
      diagnostics.Error(statement.name, "two events are named " + Quoted(name));
      diagnostics.Note(first->second, "the first event of this name is here");
    }
    Event event{std::string(name),
                expansion.Expand({&problem, statement.expression}),
                statement.crossing,
                statement.stops,
                ExpandAssignments(expansion, statement),
                statement.name};
    if (event.expression != kNoNode &&
        model.graph[event.expression].dependence == Dependence::kNothing) {
      diagnostics.Error(problem[statement.expression].place,
                        "this event never happens: its expression is constant",
                        "an event is where an expression crosses zero, as in event hit: y falling");
    }
    model.events.push_back(std::move(event));
  }
}

std::vector<EventAssignment> ModelBuilder::ExpandAssignments(Expansion& expansion,
                                                             const EventStatement& event)
{
  std::vector<EventAssignment> assignments;
  for (const Assignment& assignment : event.assignments) {
    const std::optional<std::uint32_t> state = FindState(assignment.head, false);
    const NodeId value = expansion.Expand({&problem, assignment.value});
    if (!state) continue;
    const auto before = std::ranges::find(assignments, *state, &EventAssignment::state);
    if (before != assignments.end()) {
      diagnostics.Error(assignment.head.place,
                        Quoted(model.states[*state].name) + " is assigned twice in this event");
      diagnostics.Note(before->place, "it is assigned here first");
    }
    assignments.push_back({*state, value, assignment.head.place});
  }
  return assignments;
}

// ------------------------------------------------------------------------------
// Remarks

void ModelBuilder::AddNotes()
{
  if (diagnostics.HasErrors()) return;
  if (const Expression* derivative = resolution.FirstDerivative()) {
    const std::string_view name = sources.Text(derivative->name);
    diagnostics.Note(derivative->place, Quoted(DerivativeName(name, derivative->order)) +
                                            " is the derivative here; in varno it means " +
                                            Quoted(name));
  }
}

}  // namespace varno::solve
