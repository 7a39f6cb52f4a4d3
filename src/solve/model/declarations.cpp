#include "solve/model/declarations.h"

#include "solve/model/functions.h"

namespace varno::solve {

namespace {

/// The apostrophes in the names of all derivatives together: one equation of the highest order has
/// so many.
constexpr std::uint64_t kMaxMarks = 50'000'000;

std::string Quoted(std::string_view name)
{
  return "'" + std::string(name) + "'";
}

}  // namespace

Declarations::Declarations(const Syntax& syntax, const Sources& sources, Diagnostics& diagnostics)
{
  for (const EquationStatement& equation : syntax.equations) {
    Declaration declaration{DeclarationKind::kDefinition, sources.Text(equation.head.name),
                            equation.head.place};
    declaration.order = equation.head.order;
    declaration.firstState = states;
    declaration.tree = {&syntax, equation.right};
    if (declaration.order > 0) declaration.kind = DeclarationKind::kVariable;

    if (declaration.order == 0 && equation.start) {
      diagnostics.Error(
          syntax[*equation.start].place, "a definition has no start value",
          "write " + std::string(declaration.name) + "' = ... & ...; for an equation");
      diagnostics.Note(equation.head.place,
                       Quoted(declaration.name) + " is defined here, without a derivative mark");
    }
    marks += std::uint64_t{declaration.order} * declaration.order / 2;
    if (marks > kMaxMarks) {
      diagnostics.Error(equation.head.place, "the orders of all equations together are too large",
                        "introduce variables for the derivatives: y' = v; v' = ...");
      // From here on names take no memory any more.
      declaration.order = 1;
    }
    if (Add(declaration, diagnostics)) states += declaration.order;
  }
  for (const FunctionStatement& function : syntax.functions) {
    Declaration declaration{DeclarationKind::kFunction, sources.Text(function.name), function.name};
    declaration.tree = {&syntax, function.body};
    declaration.parameters = function.parameters;
    Add(declaration, diagnostics);
  }
}

void Declarations::AddDefinition(std::string_view name, Place place)
{
  byName.emplace(name, static_cast<std::uint32_t>(all.size()));
  all.push_back({DeclarationKind::kDefinition, name, place});
}

bool Declarations::Add(const Declaration& declaration, Diagnostics& diagnostics)
{
  const BuiltInFunction* function = FindBuiltInFunction(declaration.name);
  if (function != nullptr && function->reserved) {
    diagnostics.Error(
        declaration.place,
        Quoted(declaration.name) + " is a function of the language and cannot be defined",
        "choose another name");
    return false;
  }
  const auto [entry, isNew] =
      byName.try_emplace(declaration.name, static_cast<std::uint32_t>(all.size()));
  if (!isNew) {
    diagnostics.Error(declaration.place, Quoted(declaration.name) + " is defined twice");
    diagnostics.Note(all[entry->second].place,
                     "the first definition of " + Quoted(declaration.name) + " is here");
    return false;
  }
  all.push_back(declaration);
  return true;
}

std::uint32_t Declarations::Find(std::string_view name) const
{
  const auto found = byName.find(name);
  return found == byName.end() ? kNone : found->second;
}

std::string DerivativeName(std::string_view name, std::uint32_t order)
{
  return std::string(name) + std::string(order, '\'');
}

}  // namespace varno::solve
