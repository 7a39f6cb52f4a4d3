#include "solve/verification/column_values.h"

#include "solve/evaluation/domain_error.h"

namespace varno::solve {

ColumnValues::ColumnValues(const Graph& graph, const std::vector<NodeId>& nodes, mpfr_prec_t bits)
    : bits(bits)
{
  for (const NodeId node : nodes) {
    Column& column = columns.emplace_back();
    if (graph[node].operation == Operation::kState) {
      column.state = graph[node].index;
    } else {
      column.definition.emplace(graph, std::vector{node}, bits);
    }
  }
}

SizedNumber ColumnValues::Value(Column& column, mpfr_srcptr time, const SizedStates& states)
{
  if (!column.definition) return {states.values[column.state], states.sizes[column.state]};
  Evaluator& definition = *column.definition;
  try {
    definition.Evaluate(time, states.values);
    definition.EvaluateSizes(states.sizes);
    return {definition[0], definition.Size(0)};
  } catch (const DomainError&) {
    return {std::nullopt, 0};
  }
}

std::vector<SizedNumber> ColumnValues::At(const Moment& time, const SizedStates& states)
{
  Real exactTime(bits);
  time.Evaluate(exactTime);
  std::vector<SizedNumber> values;
  for (Column& column : columns) values.push_back(Value(column, exactTime, states));
  return values;
}

}  // namespace varno::solve
