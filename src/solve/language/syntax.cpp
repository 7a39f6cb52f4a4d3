#include "solve/language/syntax.h"

namespace varno::solve {

bool IsCondition(ExpressionKind kind)
{
  switch (kind) {
    case ExpressionKind::kLess:
    case ExpressionKind::kLessEqual:
    case ExpressionKind::kGreater:
    case ExpressionKind::kGreaterEqual:
    case ExpressionKind::kAnd:
    case ExpressionKind::kOr:
    case ExpressionKind::kNot:
      return true;
    default:
      return false;
  }
}

ExpressionId Syntax::AddLeaf(ExpressionKind kind, Place place, std::uint32_t order)
{
  const auto id = static_cast<ExpressionId>(expressions.size());
  expressions.push_back(
      {kind, false, order, id, static_cast<std::uint32_t>(operandLists.size()), 0, place, place});
  return id;
}

ExpressionId Syntax::AddName(Place name, std::uint32_t order, Place place)
{
  const ExpressionId id = AddLeaf(ExpressionKind::kName, place, order);
  expressions[id].name = name;
  return id;
}

ExpressionId Syntax::Add(ExpressionKind kind, std::span<const ExpressionId> operands, Place place,
                         Place name)
{
  const ExpressionId id = AddLeaf(kind, place);
  Expression& added = expressions[id];
  added.name = name;
  added.operandCount = static_cast<std::uint32_t>(operands.size());
  if (!operands.empty()) added.first = expressions[operands.front()].first;
  operandLists.insert(operandLists.end(), operands.begin(), operands.end());
  return id;
}

ExpressionId Syntax::Parenthesise(ExpressionId id, Place place)
{
  expressions[id].parenthesised = true;
  expressions[id].place = place;
  return id;
}

std::span<const ExpressionId> Syntax::Operands(ExpressionId id) const
{
  const Expression& user = expressions[id];
  return std::span(operandLists).subspan(user.operandBegin, user.operandCount);
}

}  // namespace varno::solve
