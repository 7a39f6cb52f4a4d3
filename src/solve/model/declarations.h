#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "solve/language/syntax.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// An expression of a text.
struct Tree {
  const Syntax* syntax = nullptr;
  ExpressionId root = 0;
};

enum class DeclarationKind : std::uint8_t { kVariable, kDefinition, kFunction };

/// A name that a text defines, and the expression that it stands for: the highest derivative of a
/// variable, the value of a definition, the body of a function.
struct Declaration {
  DeclarationKind kind;
  std::string_view name;
  Place place;
  std::uint32_t order = 0;       ///< of a variable's equation
  std::uint32_t firstState = 0;  ///< of a variable: the state y; y', y'' follow
  Tree tree{};
  std::span<const Place> parameters{};  ///< of a function
};

/// The names of a problem, in the order of the text: variables and definitions, then functions.
class Declarations {
 public:
  Declarations() = default;
  /// Reports names that are defined twice, that belong to functions of the language, and
  /// definitions with a start value.
  Declarations(const Syntax& syntax, const Sources& sources, Diagnostics& diagnostics);

  /// Adds a definition; no name twice.
  void AddDefinition(std::string_view name, Place place);

  std::size_t Size() const { return all.size(); }
  const Declaration& operator[](std::size_t i) const { return all[i]; }
  Declaration& operator[](std::size_t i) { return all[i]; }
  std::span<const Declaration> All() const { return all; }
  /// The number of the declaration of a name, kNone when there is none.
  std::uint32_t Find(std::string_view name) const;
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// How many states the equations have together.
  std::uint32_t StateCount() const { return states; }

 private:
  bool Add(const Declaration& declaration, Diagnostics& diagnostics);

  std::vector<Declaration> all;
  std::unordered_map<std::string_view, std::uint32_t> byName;
  std::uint32_t states = 0;
  std::uint64_t marks = 0;  // of all names of states together
};

/// "y" with its marks: y, y', y''.
std::string DerivativeName(std::string_view name, std::uint32_t order);

}  // namespace varno::solve
