#include "solve/model/resolution.h"

#include <string>

namespace varno::solve {

namespace {

/// Searches for near names go through all names; after so many, errors come without.
constexpr int kMaxSearches = 100;

/// Longer names are not quoted in full.
constexpr std::size_t kMaxQuoted = 80;

std::string Quoted(std::string_view name)
{
  if (name.size() > kMaxQuoted) return "'" + std::string(name.substr(0, kMaxQuoted)) + "...'";
  return "'" + std::string(name) + "'";
}

std::string CountOf(std::size_t count, const std::string& thing)
{
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

}  // namespace

void Resolution::AddLostNames(const Syntax& syntax)
{
  for (const Place& name : syntax.lostNames) reported.insert(sources.Text(name));
}

void Resolution::Resolve(const Tree& tree, std::span<const Place> parameters,
                         const std::string& valueHint)
{
  const Syntax& syntax = *tree.syntax;
  std::vector<Binding>& bound = bindings[&syntax];
  bound.resize(syntax.Size());
  Parameters names;
  for (std::uint32_t i = 0; i < parameters.size(); ++i)
    names.emplace(sources.Text(parameters[i]), i);
  for (ExpressionId id = syntax[tree.root].first; id <= tree.root; ++id) {
    const Expression& expression = syntax[id];
    if (expression.kind == ExpressionKind::kName) bound[id] = ResolveName(expression, names);
    if (expression.kind == ExpressionKind::kCall) bound[id] = ResolveCall(syntax, id, names);
    CheckOperands(syntax, id);
  }
  RequireValue(syntax, tree.root, valueHint);
}

// ------------------------------------------------------------------------------
// Names

Binding Resolution::ResolveName(const Expression& name, const Parameters& parameters)
{
  const std::string_view text = sources.Text(name.name);
  if (const auto parameter = parameters.find(text); parameter != parameters.end()) {
    if (name.order == 0) return {Binding::Kind::kParameter, parameter->second};
    diagnostics.Error(name.place,
                      Quoted(text) + " is a parameter of the function and has no derivative");
    return {};
  }

  const std::uint32_t number = declarations.Find(text);
  if (number == Declarations::kNone) {
    ReportUndefined(name, parameters);
    return {};
  }
  const Declaration& declaration = declarations[number];
  switch (declaration.kind) {
    case DeclarationKind::kVariable:
      return ResolveVariable(name, declaration, number);
    case DeclarationKind::kDefinition:
      if (name.order == 0) return {Binding::Kind::kDeclaration, number};
      diagnostics.Error(name.place,
                        Quoted(text) + " is a definition, whose derivative is not known",
                        "derivatives are known of variables, which have an equation y' = ...;");
      return {};
    case DeclarationKind::kFunction:
      diagnostics.Error(name.place, Quoted(text) + " is a function",
                        "write " + std::string(text) + "(...)");
      return {};
  }
  return {};
}

/// y, y', ... up to the order of y's equation.
Binding Resolution::ResolveVariable(const Expression& name, const Declaration& variable,
                                    std::uint32_t number)
{
  if (name.order > 0 && !firstDerivative) firstDerivative = name;
  if (name.order < variable.order) return {Binding::Kind::kState, variable.firstState + name.order};
  if (name.order == variable.order) return {Binding::Kind::kDeclaration, number};
  diagnostics.Error(name.place, "this derivative of " + Quoted(variable.name) + " is not known",
                    "the equation of " + Quoted(variable.name) + " has the order " +
                        std::to_string(variable.order));
  return {};
}

std::string Resolution::Suggest(std::string_view name,
                                const std::function<void(NearName&)>& consider)
{
  if (++searches > kMaxSearches) return {};
  NearName near(name);
  consider(near);
  return near.Best().empty() ? std::string() : "did you mean " + Quoted(near.Best()) + "?";
}

void Resolution::ReportUndefined(const Expression& name, const Parameters& parameters)
{
  const std::string_view text = sources.Text(name.name);
  if (!reported.insert(text).second) return;
  if (FindBuiltInFunction(text) != nullptr) {
    diagnostics.Error(name.place, Quoted(text) + " is a function",
                      "write " + std::string(text) + "(...)");
    return;
  }

  std::string hint = Suggest(text, [&](NearName& near) {
    for (const auto& [parameter, number] : parameters) near.Consider(parameter);
    for (const Declaration& declaration : declarations.All()) near.Consider(declaration.name);
  });
  if (hint.empty()) hint = HintOnForeignName(text);
  diagnostics.Error(name.place, Quoted(text) + " is not defined", hint);
}

// ------------------------------------------------------------------------------
// Calls

Binding Resolution::ResolveCall(const Syntax& syntax, ExpressionId id, const Parameters& parameters)
{
  const Expression& call = syntax[id];
  const std::string_view text = sources.Text(call.name);
  if (parameters.contains(text)) {
    diagnostics.Error(call.name, Quoted(text) + " is a parameter here and no function",
                      "a product is written with '*'");
    return {};
  }

  const std::uint32_t number = declarations.Find(text);
  if (number != Declarations::kNone) {
    if (declarations[number].kind == DeclarationKind::kFunction)
      return ResolveCallOfFunction(call, number);
    ReportCallOfValue(syntax, id, declarations[number]);
    return {};
  }
  if (const BuiltInFunction* function = FindBuiltInFunction(text))
    return ResolveCallOfBuiltIn(call, *function);
  ReportUnknownFunction(call);
  return {};
}

Binding Resolution::ResolveCallOfBuiltIn(const Expression& call, const BuiltInFunction& function)
{
  if (call.operandCount >= function.minArguments && call.operandCount <= function.maxArguments) {
    return {Binding::Kind::kBuiltIn,
            static_cast<std::uint32_t>(&function - BuiltInFunctions().data())};
  }
  std::string wanted = CountOf(function.minArguments, "argument");
  if (function.maxArguments > function.minArguments) wanted = "at least " + wanted;
  std::string hint;
  if (function.operation == Operation::kIf) hint = "write if(a < b, u, v)";
  if (function.operation == Operation::kLn && call.operandCount == 2)
    hint = "the logarithm of x to the base b is ln(x)/ln(b)";
  diagnostics.Error(
      call.place,
      Quoted(function.name) + " takes " + wanted + ", not " + std::to_string(call.operandCount),
      hint);
  return {};
}

Binding Resolution::ResolveCallOfFunction(const Expression& call, std::uint32_t number)
{
  const Declaration& function = declarations[number];
  if (call.operandCount == function.parameters.size()) return {Binding::Kind::kFunction, number};
  diagnostics.Error(call.place, Quoted(function.name) + " takes " +
                                    CountOf(function.parameters.size(), "argument") + ", not " +
                                    std::to_string(call.operandCount));
  diagnostics.Note(function.place, Quoted(function.name) + " is defined here");
  return {};
}

/// x(0), or k(x + 1) for k*(x + 1).
void Resolution::ReportCallOfValue(const Syntax& syntax, ExpressionId id,
                                   const Declaration& declaration)
{
  const std::string name(declaration.name);
  const bool startValue = declaration.kind == DeclarationKind::kVariable &&
                          syntax[id].operandCount == 1 &&
                          syntax[syntax.Operands(id)[0]].kind == ExpressionKind::kNumber;
  diagnostics.Error(syntax[id].place, Quoted(name) + " is no function",
                    startValue ? "a start value cannot be read back; give it a name: " + name +
                                     "0 = 1; " + name + "(0) = " + name + "0;"
                               : "a product is written with '*': " + name + "*(...)");
  diagnostics.Note(declaration.place, Quoted(name) + " is defined here");
}

void Resolution::ReportUnknownFunction(const Expression& call)
{
  const std::string_view text = sources.Text(call.name);
  if (!reported.insert(text).second) return;
  std::string hint = HintOnForeignFunction(text);
  if (hint.empty()) {
    hint = Suggest(text, [&](NearName& near) {
      for (const Declaration& declaration : declarations.All()) {
        if (declaration.kind == DeclarationKind::kFunction) near.Consider(declaration.name);
      }
      for (const BuiltInFunction& function : BuiltInFunctions()) near.Consider(function.name);
    });
  }
  diagnostics.Error(call.name, "there is no function " + Quoted(text), hint);
}

// ------------------------------------------------------------------------------
// Values and conditions

void Resolution::CheckOperands(const Syntax& syntax, ExpressionId id)
{
  const std::span<const ExpressionId> operands = syntax.Operands(id);
  const Expression& expression = syntax[id];
  switch (expression.kind) {
    case ExpressionKind::kAnd:
    case ExpressionKind::kOr:
    case ExpressionKind::kNot:
      for (const ExpressionId operand : operands) RequireCondition(syntax, operand);
      return;
    case ExpressionKind::kStep:
      return;  // its segments are neither
    case ExpressionKind::kCall: {
      const std::string_view name = sources.Text(expression.name);
      const bool isIf = name == "if" && declarations.Find(name) == Declarations::kNone;
      for (std::size_t i = 0; i < operands.size(); ++i) {
        if (isIf && i == 0) {
          RequireCondition(syntax, operands[i]);
        } else {
          RequireValue(syntax, operands[i]);
        }
      }
      return;
    }
    case ExpressionKind::kLess:
    case ExpressionKind::kLessEqual:
    case ExpressionKind::kGreater:
    case ExpressionKind::kGreaterEqual:
      // Of a chain the parser has told already.
      for (const ExpressionId operand : operands) {
        if (!IsCondition(syntax[operand].kind) || syntax[operand].parenthesised)
          RequireValue(syntax, operand);
      }
      return;
    default:
      for (const ExpressionId operand : operands) RequireValue(syntax, operand);
      return;
  }
}

void Resolution::RequireValue(const Syntax& syntax, ExpressionId id, const std::string& hint)
{
  if (!IsCondition(syntax[id].kind)) return;
  diagnostics.Error(syntax[id].place, "this is a condition and has no value", hint);
}

void Resolution::RequireCondition(const Syntax& syntax, ExpressionId id)
{
  if (IsCondition(syntax[id].kind)) return;
  diagnostics.Error(syntax[id].place, "this is no condition",
                    "conditions are comparisons, as in a < b, with and, or, not");
}

}  // namespace varno::solve
