#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "solve/language/syntax.h"
#include "solve/model/declarations.h"
#include "solve/model/functions.h"
#include "solve/model/near_name.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// What a name in an expression stands for.
struct Binding {
  enum class Kind : std::uint8_t {
    kNone,         ///< the expression is no name, or one that was reported
    kState,        ///< of the number `index`
    kDeclaration,  ///< the expression of that declaration: a definition, or a variable's highest
                   ///< derivative
    kParameter,    ///< of a function, inside of it
    kFunction,     ///< a call of the function that is this declaration
    kBuiltIn,      ///< a call of this function of BuiltInFunctions()
  };
  Kind kind = Kind::kNone;
  std::uint32_t index = 0;
};

/// The meaning of every name in the expressions of a problem.
class Resolution {
 public:
  Resolution(const Declarations& declarations, const Sources& sources, Diagnostics& diagnostics)
      : declarations(declarations), sources(sources), diagnostics(diagnostics)
  {}

  /// Names that no error is reported on: their definitions could not be read.
  void AddLostNames(const Syntax& syntax);
  bool IsLost(std::string_view name) const { return reported.contains(name); }

  /// Binds the names of an expression that must have a value, inside a function with these
  /// parameters. Reports undefined names, each once; wrong numbers of arguments; conditions instead
  /// of values and the reverse; derivatives that no equation gives.
  /// `valueHint` is how to write a value instead of a condition.
  void Resolve(const Tree& tree, std::span<const Place> parameters = {},
               const std::string& valueHint = kValueHint);

  const std::vector<Binding>& Of(const Syntax& syntax) const { return bindings.at(&syntax); }

  /// "did you mean 'x'?", when one of the candidates that `consider` offers is near; else empty. A
  /// search goes through all names of a problem, so there are only so many searches.
  std::string Suggest(std::string_view name, const std::function<void(NearName&)>& consider);

  /// The first y' in an expression, null when there is none.
  const Expression* FirstDerivative() const
  {
    return firstDerivative ? &*firstDerivative : nullptr;
  }

 private:
  inline static const std::string kValueHint = "write if(a < b, u, v)";

  /// The parameters of the function whose body is being resolved, with their numbers.
  using Parameters = std::map<std::string_view, std::uint32_t>;

  Binding ResolveName(const Expression& name, const Parameters& parameters);
  Binding ResolveVariable(const Expression& name, const Declaration& variable,
                          std::uint32_t number);
  Binding ResolveCall(const Syntax& syntax, ExpressionId id, const Parameters& parameters);
  Binding ResolveCallOfBuiltIn(const Expression& call, const BuiltInFunction& function);
  Binding ResolveCallOfFunction(const Expression& call, std::uint32_t number);
  void ReportCallOfValue(const Syntax& syntax, ExpressionId id, const Declaration& declaration);
  void ReportUndefined(const Expression& name, const Parameters& parameters);
  void ReportUnknownFunction(const Expression& call);
  void CheckOperands(const Syntax& syntax, ExpressionId id);
  void RequireValue(const Syntax& syntax, ExpressionId id, const std::string& hint = kValueHint);
  void RequireCondition(const Syntax& syntax, ExpressionId id);

  const Declarations& declarations;
  const Sources& sources;
  Diagnostics& diagnostics;
  std::unordered_map<const Syntax*, std::vector<Binding>> bindings;
  std::unordered_set<std::string_view> reported;  // undefined names
  int searches = 0;                               // for near names
  std::optional<Expression> firstDerivative;
};

}  // namespace varno::solve
