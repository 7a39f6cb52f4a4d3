// Reads any bytes as a problem, with settings, and as a constant expression; prints all that comes
// of it.
//
// The bytes up to the first 0xFF are the problem, those up to the next one a setting, and so on;
// the last part is an expression for the command line as well.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/language/parse.h"
#include "solve/model/build_model.h"
#include "solve/model/print.h"

namespace {

using namespace varno::solve;

constexpr std::size_t kMaxBytes = 65536;

std::vector<std::string> Split(std::string_view bytes)
{
  std::vector<std::string> parts;
  std::size_t end = 0;
  do {
    end = bytes.find('\xFF');
    parts.emplace_back(bytes.substr(0, end));
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
  } while (end != std::string_view::npos);
  return parts;
}

void Require(bool condition, const char* what)
{
  if (!condition) throw std::logic_error(what);
}

/// What a model promises to those that use it.
void CheckInvariants(const Model& model)
{
  const Graph& graph = model.graph;
  for (NodeId id = 0; id < graph.Size(); ++id) {
    const Node& node = graph[id];
    for (int i = 0; i < node.operandCount; ++i)
      Require(node.operands[i] < id, "an operand after its node");
    if (node.operation == Operation::kState)
      Require(node.index < model.states.size(), "no such state");
    if (node.operation == Operation::kParameter) {
      Require(node.index < model.parameters.size(), "no such parameter");
      Require(model.parameters[node.index].value < id, "a parameter before its value");
    }
  }
  for (const State& state : model.states) {
    Require(state.rightHandSide < graph.Size(), "no right-hand side");
    Require(state.start < graph.Size(), "no start value");
    Require(graph[state.start].dependence == Dependence::kNothing, "a start value that varies");
  }
  for (const Column& column : model.columns) Require(column.value < graph.Size(), "no column");
}

void ReadConstant(Model& model, const std::string& text, Sources& sources)
{
  try {
    const NodeId node = AddConstant(model, text, "--to", sources);
    std::vector<NodeId> parameters;
    for (const Parameter& parameter : model.parameters) parameters.push_back(parameter.value);
    EvaluateConstant(model.graph, node, 100, parameters);
  } catch (const ProblemError&) {
  } catch (const DomainError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  if (size > kMaxBytes) return 0;
  const std::vector<std::string> parts = Split({reinterpret_cast<const char*>(data), size});

  Sources sources;
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add("fuzz.varno", parts.front());
  std::vector<Setting> settings;
  for (std::size_t i = 1; i < parts.size(); ++i) settings.push_back({parts[i], "--set"});
  const Syntax syntax = ParseProblem(sources, source, diagnostics);
  Model model = BuildModel(syntax, settings, sources, diagnostics);
  Render(diagnostics, sources);
  if (diagnostics.HasErrors()) return 0;

  CheckInvariants(model);
  PrintModel(model);
  for (const Column& column : model.columns) PrintExpression(model, column.value);
  if (parts.size() > 1) ReadConstant(model, parts.back(), sources);
  return 0;
}
