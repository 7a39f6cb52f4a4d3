#include "solve/verification/column_values.h"

#include "solve/evaluation/constant.h"

namespace varno::solve {

ColumnValues::ColumnValues(const Graph& graph, const std::vector<NodeId>& nodes, mpfr_prec_t bits,
                           const EdgeRule& edges)
    : bits(bits), edges(edges)
{
  for (const NodeId node : nodes) {
    Column& column = columns.emplace_back();
    if (graph[node].operation == Operation::kState) {
      column.state = graph[node].index;
    } else {
      hasDefinitions = true;
      const std::vector<NodeId> root{node};
      column.definition.emplace(graph, root, bits, std::span<const NodeId>(),
                                ConstantsIn(graph, root, bits));
    }
  }
}

SizedNumber ColumnValues::Value(Column& column, mpfr_srcptr time, const Rational* exactTime,
                                const SizedStates& states) const
{
  if (!column.definition) return {states.values[column.state], states.sizes[column.state]};
  Evaluator& definition = *column.definition;
  try {
    definition.EvaluateSized(time, states.values, states.sizes, edges, exactTime);
    return {definition[0], definition.Size(0), false, definition.IsAtJump()};
  } catch (const EdgeInDoubt& doubt) {
    return {.value = {}, .size = 0, .isInDoubt = true, .bitsForDoubt = doubt.noiseBits};
  } catch (const DomainError& error) {
    // A number that the arithmetic cannot hold is there all the same.
    if (error.outcome != Outcome::kUndefined) throw;
    return {std::nullopt, 0};
  }
}

std::vector<SizedNumber> ColumnValues::At(const Moment& time, const SizedStates& states)
{
  Real roundedTime(bits);
  if (hasDefinitions) time.Evaluate(roundedTime);
  const Rational* const exactTime = time.IsRational() ? &time.RationalPart() : nullptr;
  std::vector<SizedNumber> values;
  values.reserve(columns.size());
  try {
    for (Column& column : columns) values.push_back(Value(column, roundedTime, exactTime, states));
  } catch (const DomainError& error) {
    throw RowOutOfRange{error, time};
  }
  return values;
}

}  // namespace varno::solve
