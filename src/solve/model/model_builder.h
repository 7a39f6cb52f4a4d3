#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "solve/model/declarations.h"
#include "solve/model/dependencies.h"
#include "solve/model/expansion.h"
#include "solve/model/model.h"
#include "solve/model/resolution.h"

namespace varno::solve {

/// The steps from syntax trees to a model; see BuildModel.
class ModelBuilder {
 public:
  ModelBuilder(const Syntax& problem, const Syntax& settings, const Sources& sources,
               Diagnostics& diagnostics);

  Model Build();

 private:
  /// A start value or point, with what it is for.
  struct Start {
    Head head;
    Tree value;
  };

  void ResolveAll();
  void ResolveStart(const StartStatement& start, const Syntax& syntax);
  void CollectStarts();
  bool IsDeclaration(const EquationStatement& equation) const;
  void SetStart(const Head& head, const Tree& value, bool isSetting);
  std::optional<std::uint32_t> FindState(const Head& head, bool isSetting);
  void ApplyParameterSettings();
  void ReportUnknownParameter(Place place);
  bool IsParameter(std::uint32_t declaration) const;
  bool RequireConstant(const Tree& tree, std::string_view what);

  void AddStates();
  void ExpandDeclarations();
  NodeId ExpandDefinition(Expansion& expansion, std::uint32_t number);
  void ExpandStarts(Expansion& expansion);
  void ExpandStartPoint(Expansion& expansion);
  void ExpandPoint(Expansion& expansion, const StartStatement& start, const Syntax& syntax);
  std::vector<NodeId> ValuesNeeded() const;
  void AddColumns();
  void ExpandEvents(Expansion& expansion);
  std::vector<EventAssignment> ExpandAssignments(Expansion& expansion, const EventStatement& event);
  void AddNotes();

  const Syntax& problem;
  const Syntax& settings;
  const Sources& sources;
  Diagnostics& diagnostics;

  Model model;
  Declarations declarations;
  Resolution resolution;
  Dependencies dependencies;
  std::vector<std::optional<Start>> starts;  // one for each state
  std::vector<NodeId> definitionNodes;       // one for each declaration
  std::vector<NodeId> points;                // as they were written
  Place firstPoint;
};

}  // namespace varno::solve
