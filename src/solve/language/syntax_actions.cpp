#include "solve/language/syntax_actions.h"

#include <array>
#include <unordered_set>
#include <utility>

#include "solve/language/syntax_error.h"
#include "solve/language/token_stream.h"

namespace varno::solve {

void SyntaxActions::AddEquation(const Head& head, ExpressionId right,
                                std::optional<ExpressionId> start)
{
  if (CheckHead(head)) syntax.equations.push_back({head, right, start});
}

void SyntaxActions::AddStart(const Head& head, ExpressionId point, ExpressionId value)
{
  if (CheckHead(head)) syntax.starts.push_back({head, point, value});
}

void SyntaxActions::AddSetting(const Head& head, ExpressionId value)
{
  if (CheckHead(head)) syntax.settings.push_back({head, value});
}

void SyntaxActions::AddFunction(Place name, std::vector<Place> parameters, ExpressionId body)
{
  std::unordered_set<std::string_view> seen;
  for (const Place& parameter : parameters) {
    const std::string_view text = sources.Text(parameter);
    CheckNewName(parameter);
    if (!seen.insert(text).second) {
      diagnostics.Error(parameter,
                        "two parameters of this function are named '" + std::string(text) + "'");
    }
  }
  syntax.functions.push_back({name, std::move(parameters), body});
}

void SyntaxActions::AddEvent(Place name, ExpressionId expression, const std::vector<Place>& words,
                             std::vector<Assignment> assignments)
{
  EventStatement event{name, expression, Crossing::kBoth, false, std::move(assignments)};
  for (const Place& word : words) {
    const std::string_view text = sources.Text(word);
    if (text == "stop" && !event.stops) {
      event.stops = true;
    } else if (text == "rising" && event.crossing == Crossing::kBoth) {
      event.crossing = Crossing::kRising;
    } else if (text == "falling" && event.crossing == Crossing::kBoth) {
      event.crossing = Crossing::kFalling;
    } else {
      diagnostics.Error(word, "unexpected '" + std::string(text) + "' in an event",
                        "an event is written: event name: expression rising stop; or falling, or "
                        "neither for both");
    }
  }
  for (const Assignment& assignment : event.assignments) CheckHead(assignment.head);
  syntax.events.push_back(std::move(event));
}

/// Reports a head that nothing can have; then the statement is left out.
bool SyntaxActions::CheckHead(const Head& head)
{
  if (!CheckNewName(head.name)) return false;
  if (head.order <= kMaxOrder) return true;
  diagnostics.Error(head.place, "derivative order too large",
                    "the highest order is " + std::to_string(kMaxOrder));
  syntax.lostNames.push_back(head.name);
  return false;
}

bool SyntaxActions::CheckNewName(Place name)
{
  const std::string_view text = sources.Text(name);
  if (text != "t" && text != "pi") return true;
  diagnostics.Error(name,
                    text == "t" ? "'t' is the time and cannot be defined"
                                : "'pi' is a number and cannot be defined",
                    "choose another name");
  return false;
}

ExpressionId SyntaxActions::Leaf(ExpressionKind kind, Place place)
{
  return syntax.AddLeaf(kind, place);
}

ExpressionId SyntaxActions::Name(Place name, std::uint32_t order, Place place)
{
  return syntax.AddName(name, order, place);
}

ExpressionId SyntaxActions::Unary(ExpressionKind kind, ExpressionId a, Place place, Place sign)
{
  return syntax.Add(kind, {&a, 1}, place, sign);
}

ExpressionId SyntaxActions::Binary(ExpressionKind kind, ExpressionId a, ExpressionId b, Place place,
                                   Place sign)
{
  const std::array operands = {a, b};
  return syntax.Add(kind, operands, place, sign);
}

ExpressionId SyntaxActions::Compare(ExpressionKind kind, ExpressionId a, ExpressionId b,
                                    Place place, Place sign)
{
  const auto isComparison = [](const Expression& expression) {
    return expression.kind >= ExpressionKind::kLess &&
           expression.kind <= ExpressionKind::kGreaterEqual && !expression.parenthesised;
  };
  if (isComparison(syntax[a])) {
    diagnostics.Error(sign, "comparisons cannot be chained", "write a < b and b < c");
  }
  return Binary(kind, a, b, place, sign);
}

ExpressionId SyntaxActions::Call(Place name, const std::vector<ExpressionId>& arguments,
                                 Place place)
{
  return syntax.Add(ExpressionKind::kCall, arguments, place, name);
}

ExpressionId SyntaxActions::Parenthesise(ExpressionId id, Place place)
{
  return syntax.Parenthesise(id, place);
}

ExpressionId SyntaxActions::Step(ExpressionId subject, const std::vector<ExpressionId>& segments,
                                 Place place, Place sign)
{
  std::vector<ExpressionId> operands = {subject};
  operands.insert(operands.end(), segments.begin(), segments.end());
  return syntax.Add(ExpressionKind::kStep, operands, place, sign);
}

ExpressionId SyntaxActions::Segment(std::vector<ExpressionId> limits, ExpressionId value,
                                    Place place, Place colon)
{
  if (limits.size() > 2) {
    diagnostics.Error(syntax[limits[2]].place,
                      "a segment of a step function has at most two limits",
                      "a, b : v is v for a <= t < b");
  }
  limits.push_back(value);
  return syntax.Add(ExpressionKind::kSegment, limits, place, colon);
}

void SyntaxActions::Report(Place place, const std::string& message)
{
  diagnostics.Error(place, message);
}

void SyntaxActions::ReportSyntaxError(const TokenStream& tokens,
                                      std::span<const Grammar::symbol_kind_type> expected)
{
  const SyntaxError error = DescribeSyntaxError(tokens, expected, sources);
  diagnostics.Error(error.place, error.message, error.hint);
}

}  // namespace varno::solve
