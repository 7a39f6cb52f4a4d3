#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
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

  /// The node of an expression whose declarations have been set. Reports, once each, what cannot be
  /// a node yet.
  NodeId Expand(const Tree& tree);
  /// Reports operations that cannot have a value, as 1/0, each where it is written: those at and
  /// below these nodes, and those of expressions that have no node.
  void ReportValueFaults(const std::vector<NodeId>& roots);

 private:
  /// What an expression comes to: a node, or a condition that holds or does not.
  using Result = NodeId;
  static constexpr Result kTrue = UINT32_MAX - 1;
  static constexpr Result kFalse = UINT32_MAX - 2;
  static bool IsNode(Result result) { return result < kFalse; }

  /// An expression under way: the body of a function with its arguments, or the tree of Expand.
  struct Frame {
    const Syntax* syntax;
    const std::vector<Binding>* bindings;
    ExpressionId first;
    ExpressionId next;
    ExpressionId root;
    std::vector<Result> results;  // of first..next-1
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
  void Give(Result result);
  void TakeCall(const Expression& call, std::uint32_t function);
  bool MayExpand(const Expression& call, const Tree& body);

  Result Evaluate(ExpressionId id);
  Result EvaluateName(ExpressionId id);
  Result EvaluateBuiltIn(ExpressionId id, const BuiltInFunction& function);
  Result EvaluatePiecewise(ExpressionId id, const BuiltInFunction& function);
  Result EvaluateExactly(ExpressionId id, PiecewiseFunction function);
  Result EvaluateComparison(ExpressionId id);
  Result EvaluateLogic(ExpressionId id);
  Result EvaluateNumber(const Expression& number);
  Result Make(Operation operation, ExpressionId id);
  Result NotYet(Place place, ExpressionId id, const std::string& what);

  Result Operand(ExpressionId id, std::size_t i) const;
  bool HasAllOperands(ExpressionId id) const;
  bool HasExactOperands(ExpressionId id) const;

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
  std::set<std::pair<const Syntax*, ExpressionId>> reported;
  std::size_t expanded = 0;  // expressions of function bodies so far
};

}  // namespace varno::solve
