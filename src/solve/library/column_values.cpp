#include "solve/library/column_values.h"

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

std::optional<Real> ColumnValues::Value(Column& column, mpfr_srcptr time, std::span<const Real> states)
{
  if (!column.definition) return states[column.state];
  try {
    column.definition->Evaluate(time, states);
    return (*column.definition)[0];
  } catch (const DomainError&) {
    return std::nullopt;
  }
}

std::vector<std::optional<Real>> ColumnValues::At(const Moment& time, std::span<const Real> states)
{
  Real exactTime(bits);
  time.Evaluate(exactTime);
  std::vector<std::optional<Real>> values;
  for (Column& column : columns) values.push_back(Value(column, exactTime, states));
  return values;
}

}  // namespace varno::solve
