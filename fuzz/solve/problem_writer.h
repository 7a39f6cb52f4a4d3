#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace varno::solve {

/// Writes a problem in varno-solve's language; bytes choose among the productions of its grammar.
///
/// Nearly all that it writes is accepted, so that bytes reach what comes behind the language. When
/// the bytes are used up, the first choice is taken everywhere: a leaf.
class ProblemWriter {
 public:
  explicit ProblemWriter(std::string_view bytes) : bytes(bytes) {}

  std::string Write();

 private:
  std::size_t Choose(std::size_t count);
  template <std::size_t count>
  const char* OneOf(const char* const (&words)[count])
  {
    return words[Choose(count)];
  }

  void Equation(const std::string& name);
  void Definitions();
  void Expression(int depth);
  void Sum(int depth);
  void Constant(int depth);
  void Leaf();
  void Call(int depth);
  void Number();

  std::string_view bytes;
  std::string text;
  std::size_t variableCount = 1;
  bool secondOrder = false;
  bool constant = false;  // what is written now must not vary
};

}  // namespace varno::solve
