#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "solve/quick/number.h"
#include "solve/tape/tape.h"

namespace varno::solve::quick {

/// Of a tape, what the recurrences go by, with its constants as numbers.
struct Program {
  struct Step {
    LineKind kind;
    Operation function;
    bool negative;
    bool isWeighted;  ///< whether k times its term k is wanted
    LineId a, b;
    std::uint32_t firstFactor, factorCount;
    Number constant;
    std::uint32_t index;
    std::int32_t degree;
  };
  struct Weight {
    LineId line;
    Number factor;
  };
  std::vector<Step> steps;  ///< one for each line
  std::vector<Weight> factors;
  std::vector<LineId> rightHandSides;
  bool usesTime = false;

  std::size_t StateCount() const { return rightHandSides.size(); }
};

/// The number that is nearest to a constant of a graph; disturbed, one of which 64 bits do not hold
/// all is moved by some units of the last. Throws DomainError where there is no value.
Number ConstantOf(const Graph& graph, NodeId node, bool disturbed);

/// The program of a tape; none where it has an operation, or a constant, that is not for the
/// hardware. `disturbed`, and what it throws: as ConstantOf.
std::optional<Program> MakeProgram(const Tape& tape, bool disturbed);

/// The terms of all lines of a program about a point: docs/solve/recurrences.md.
class LineTerms {
 public:
  LineTerms(const Program& program, int order);

  /// Term 0 of all lines. False where one has no value, or is too large or too small.
  bool Begin(Number time, std::span<const Number> states);
  /// The other terms, with `scale` as the unit of time.
  void Extend(Number scale);
  /// log2 of the sizes of all lines, from their first terms.
  void FindSizes();

  std::span<const Number> Of(LineId line) const { return {terms.data() + line * stride, stride}; }
  /// Those of the first lines, one after the other.
  std::span<const Number> OfFirst(std::size_t lines) const
  {
    return {terms.data(), lines * stride};
  }
  Number Size(LineId line) const { return sizes[line]; }
  int Order() const { return order; }

 private:
  Number* Row(LineId line) { return terms.data() + line * stride; }
  const Number* Row(LineId line) const { return terms.data() + line * stride; }
  const Number* Weighted(LineId line) const { return weighted.data() + line * stride; }
  Number Start(const Program::Step& step, Number time, std::span<const Number> states) const;
  Number Term(const Program::Step& step, const Number* s, int k, Number scale) const;
  Number Combination(const Program::Step& step, int k) const;
  Number SizeOf(const Program::Step& step, LineId id) const;

  const Program& program;
  int order;
  std::size_t stride;
  std::vector<Number> terms, weighted;  // weighted: k times term k
  std::vector<Number> sizes;
  std::vector<Number> inverses;  // of whole numbers
};

}  // namespace varno::solve::quick
