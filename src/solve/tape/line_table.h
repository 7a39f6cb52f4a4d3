#pragma once

#include <array>
#include <string>
#include <unordered_map>
#include <utility>

#include "solve/tape/linear_form.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// Adds lines to a tape, equal ones once. `id` is the expression that a line is made for.
class LineTable {
 public:
  LineTable(Tape& tape, LinearArithmetic& arithmetic) : tape(tape), arithmetic(arithmetic) {}

  void AddState(std::uint32_t index, NodeId id);
  LineId Time(NodeId id);
  LineId Constant(NodeId value, NodeId id);
  /// a b; a square when both are the same line.
  LineId Product(LineId a, LineId b, NodeId id);
  LineId Quotient(LineId a, LineId b, NodeId id);
  LineId SquareRoot(LineId a, NodeId id);
  /// a^exponent by the recurrence of real powers; `function` is kPower or kCbrt.
  LineId Power(LineId a, Operation function, NodeId exponent, NodeId id);
  LineId Angle(LineId y, LineId x, LineId squares, NodeId id);
  /// f(a) with f' = +- `derivative`.
  LineId IntegralOfProduct(Operation function, LineId a, LineId derivative, bool negative,
                           NodeId id);
  /// f(a) with f' = +- 1 / `divisor`.
  LineId IntegralOfQuotient(Operation function, LineId a, LineId divisor, bool negative, NodeId id);
  /// A line f(a) whose derivative is still to come: SetDerivative.
  LineId FunctionOf(Operation function, LineId a, bool negative, NodeId id);
  void SetDerivative(LineId line, LineId derivative) { tape.lines[line].b = derivative; }

  /// The line that holds a form: the line itself for 1 * line, a constant, or a combination.
  LineId Materialise(LinearForm form, NodeId id);
  /// factor and line with form = factor * line, the factor a constant.
  std::pair<NodeId, LineId> FactorAndLine(LinearForm form, NodeId id);

 private:
  using Key = std::array<std::uint32_t, 6>;
  struct KeyHash {
    std::size_t operator()(const Key& key) const;
  };

  LineId Intern(Line line);
  LineId Add(const Line& line);
  ConstantId ConstantNumber(NodeId value);
  Factor ToFactor(const LinearForm::Term& term);

  Tape& tape;
  LinearArithmetic& arithmetic;
  std::unordered_map<Key, LineId, KeyHash> known;
  std::unordered_map<std::string, LineId> combinations;  // by the bytes of their factors
  std::unordered_map<NodeId, ConstantId> constantNumbers;
};

}  // namespace varno::solve
