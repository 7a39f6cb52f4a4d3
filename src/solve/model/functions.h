#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "solve/graph/operation.h"

namespace varno::solve {

/// A function of the language.
struct BuiltInFunction {
  std::string_view name;
  Operation operation;
  std::size_t minArguments = 1;
  std::size_t maxArguments = 1;
  /// Its name cannot be defined by a text. The others are functions only before "(", and a
  /// definition of the text's own wins.
  bool reserved = true;
};

/// All functions with all their synonyms.
std::span<const BuiltInFunction> BuiltInFunctions();

/// The function of a name, null when there is none. Pointers stay valid.
const BuiltInFunction* FindBuiltInFunction(std::string_view name);

/// How to write what other languages have a function or a name for ("pow", "log10", "e"); empty
/// when nothing is known.
std::string HintOnForeignFunction(std::string_view name);
std::string HintOnForeignName(std::string_view name);

}  // namespace varno::solve
