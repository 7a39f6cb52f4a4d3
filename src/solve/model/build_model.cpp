#include "solve/model/build_model.h"

#include <utility>

#include "solve/language/parse.h"
#include "solve/model/model_builder.h"

namespace varno::solve {

Model BuildModel(const Syntax& syntax, const std::vector<Setting>& settings, Sources& sources,
                 Diagnostics& diagnostics)
{
  Syntax settingSyntax;
  for (const Setting& setting : settings)
    ParseSetting(sources, sources.Add(setting.origin, setting.text), settingSyntax, diagnostics);
  return ModelBuilder(syntax, settingSyntax, sources, diagnostics).Build();
}

Model ReadModel(std::uint32_t source, const std::vector<Setting>& settings, Sources& sources,
                Diagnostics& diagnostics)
{
  const Syntax syntax = ParseProblem(sources, source, diagnostics);
  Model model = BuildModel(syntax, settings, sources, diagnostics);
  if (diagnostics.HasErrors()) throw ProblemError(diagnostics, sources);
  return model;
}

NodeId AddConstant(Model& model, std::string text, std::string name, Sources& sources)
{
  Diagnostics diagnostics;
  const Syntax syntax =
      ParseExpression(sources, sources.Add(std::move(name), std::move(text)), diagnostics);
  if (diagnostics.HasErrors()) throw ProblemError(diagnostics, sources);

  // Names are those of the parameters, and of states for the message that they vary.
  const Tree tree{&syntax, *syntax.expression};
  Declarations declarations;
  for (const Parameter& parameter : model.parameters)
    declarations.AddDefinition(parameter.name, parameter.place);
  Resolution resolution(declarations, sources, diagnostics);
  resolution.Resolve(tree);
  for (ExpressionId id = 0; id < syntax.Size(); ++id) {
    if (syntax[id].kind == ExpressionKind::kTime) {
      diagnostics.Error(syntax[id].place, "this must be constant, and 't' is the time");
    }
  }
  if (diagnostics.HasErrors()) throw ProblemError(diagnostics, sources);

  ValueFaults valueFaults(model.graph, model.parameters);
  Expansion expansion(model.graph, valueFaults, declarations, resolution, sources, diagnostics);
  for (std::uint32_t i = 0; i < model.parameters.size(); ++i) {
    expansion.SetDeclaration(i, model.graph.Parameter(i, model.parameters[i].place));
  }
  const NodeId node = expansion.Expand(tree);
  expansion.ReportValueFaults({node});
  if (diagnostics.HasErrors()) throw ProblemError(diagnostics, sources);
  return node;
}

}  // namespace varno::solve
