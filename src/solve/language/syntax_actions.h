#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "solve/language/syntax.h"
#include "solve/language/token.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

class TokenStream;

/// The highest order of an equation.
inline constexpr std::uint32_t kMaxOrder = 10'000;

/// What the grammar does when it has recognised something: it builds the tree, and reports what is
/// no mistake of grammar but can be told from the statement alone.
class SyntaxActions {
 public:
  SyntaxActions(const Sources& sources, Syntax& syntax, Diagnostics& diagnostics)
      : sources(sources), syntax(syntax), diagnostics(diagnostics)
  {}

  static Head MakeHead(Place name, std::uint32_t order, Place place)
  {
    return {name, order, place};
  }
  void AddEquation(const Head& head, ExpressionId right, std::optional<ExpressionId> start);
  void AddStart(const Head& head, ExpressionId point, ExpressionId value);
  void AddFunction(Place name, std::vector<Place> parameters, ExpressionId body);
  void AddEvent(Place name, ExpressionId expression, const std::vector<Place>& words,
                std::vector<Assignment> assignments);
  void AddSetting(const Head& head, ExpressionId value);
  void SetExpression(ExpressionId id) { syntax.expression = id; }

  ExpressionId Leaf(ExpressionKind kind, Place place);
  ExpressionId Name(Place name, std::uint32_t order, Place place);
  ExpressionId Unary(ExpressionKind kind, ExpressionId a, Place place, Place sign);
  ExpressionId Binary(ExpressionKind kind, ExpressionId a, ExpressionId b, Place place, Place sign);
  ExpressionId Compare(ExpressionKind kind, ExpressionId a, ExpressionId b, Place place,
                       Place sign);
  ExpressionId Call(Place name, const std::vector<ExpressionId>& arguments, Place place);
  ExpressionId Parenthesise(ExpressionId id, Place place);
  ExpressionId Step(ExpressionId subject, const std::vector<ExpressionId>& segments, Place place,
                    Place sign);
  ExpressionId Segment(std::vector<ExpressionId> limits, ExpressionId value, Place place,
                       Place colon);

  void Report(Place place, const std::string& message);
  void ReportSyntaxError(const TokenStream& tokens,
                         std::span<const Grammar::symbol_kind_type> expected);

 private:
  bool CheckHead(const Head& head);
  bool CheckNewName(Place name);

  const Sources& sources;
  Syntax& syntax;
  Diagnostics& diagnostics;
};

}  // namespace varno::solve
