#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "solve/graph/graph.h"
#include "solve/model/declarations.h"
#include "solve/model/resolution.h"
#include "solve/model/value_faults.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// Of expressions that have no node, because something in them was reported.
inline constexpr NodeId kNoNode = UINT32_MAX;

/// Builds the nodes of expressions: definitions and functions are put in where they are used.
///
/// The same call of a function with the same arguments is expanded once, and no depth of calls
/// exhausts a stack.
class Expansion {
 public:
  Expansion(Graph& graph, ValueFaults& valueFaults, const Declarations& declarations,
            const Resolution& resolution, const Sources& sources, Diagnostics& diagnostics);

  /// What a name stands for from now on; kNoNode until then.
  void SetDeclaration(std::uint32_t declaration, NodeId node)
  {
    declarationNodes[declaration] = node;
  }
  NodeId DeclarationNode(std::uint32_t declaration) const { return declarationNodes[declaration]; }

  /// The node of an expression whose declarations have been set. Conditions are nodes, too: 1 where
  /// they hold, else 0.
  NodeId Expand(const Tree& tree);
  /// Reports operations that cannot have a value, as 1/0, each where it is written: those at and
  /// below these nodes, and those of expressions that have no node. Branches of an `if` count where
  /// it is known that they are chosen.
  void ReportValueFaults(const std::vector<NodeId>& roots);

 private:
  /// An expression under way: the body of a function with its arguments, or the tree of Expand.
  struct Frame {
    const Syntax* syntax;
    const std::vector<Binding>* bindings;
    ExpressionId first;
    ExpressionId next;
    ExpressionId root;
    std::vector<NodeId> results;  // of first..next-1
    std::vector<NodeId> call;     // the function and its arguments; empty for the tree of Expand
  };
  /// An operation without a value.
  struct Fault {
    NodeId node;
    Place place;
    std::string message;
    bool inBroken;  // in an expression without a node
  };
  struct CallHash {
    std::size_t operator()(const std::vector<NodeId>& call) const;
  };

  NodeId Run(const Tree& tree);
  void Push(const Tree& tree, std::vector<NodeId> call);
  void Finish();
  void Step();
  void Give(NodeId result);
  void TakeCall(const Expression& call, std::uint32_t function);
  void MarkNeeded(NodeId id, std::vector<bool>& isNeeded);
  bool MayExpand(const Expression& call, const Tree& body);

  NodeId Evaluate(ExpressionId id);
  NodeId EvaluateName(ExpressionId id);
  NodeId EvaluateBuiltIn(ExpressionId id, const BuiltInFunction& function);
  NodeId EvaluateStep(ExpressionId id);
  NodeId EvaluateSegment(NodeId subject, ExpressionId segment, NodeId otherwise);
  NodeId EvaluateNumber(const Expression& number);
  NodeId Make(Operation operation, ExpressionId id);
  NodeId MakeSwapped(Operation operation, ExpressionId id);
  NodeId Extreme(Operation operation, ExpressionId id);

  NodeId Operand(ExpressionId id, std::size_t i) const;
  bool HasAllOperands(ExpressionId id) const;

  Graph& graph;
  ValueFaults& valueFaults;
  const Declarations& declarations;
  const Resolution& resolution;
  const Sources& sources;
  Diagnostics& diagnostics;

  std::vector<NodeId> declarationNodes;
  std::vector<Frame> frames;
  NodeId finished = kNoNode;  // what the outermost frame came to
  using Calls = std::unordered_map<std::vector<NodeId>, NodeId, CallHash>;
  Calls calls;
  std::vector<Fault> faults;
  std::size_t expanded = 0;  // expressions of function bodies so far
};

}  // namespace varno::solve
