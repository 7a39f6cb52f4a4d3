#include <memory>
#include <utility>

#include <fmt/format.h>

#include "solve/library/option_constants.h"
#include "solve/library/solve.h"
#include "solve/model/build_model.h"
#include "solve/number/exponent_range.h"
#include "solve/rows/time_format.h"
#include "solve/source/diagnostics.h"

namespace varno::solve {

namespace {

/// More values than this cannot be meant.
constexpr double kMostValues = 1e15;

/// Constants as exact numbers. They refer to the graph, which therefore stays where it is.
struct Numbers {
  Sources sources;
  Model model;
  std::vector<Moment> moments;
};

std::shared_ptr<const Numbers> Read(const std::vector<std::string>& expressions)
{
  const ScopedExponentRange range;
  const auto numbers = std::make_shared<Numbers>();
  try {
    std::vector<NodeId> nodes;
    nodes.reserve(expressions.size());
    for (const std::string& expression : expressions)
      nodes.push_back(AddConstant(numbers->model, expression, "--sweep", numbers->sources));
    ConstantMoments moments(numbers->model.graph, numbers->sources);
    for (const NodeId node : nodes) numbers->moments.push_back(moments(node));
  } catch (const ProblemError& error) {
    throw InputError(error.what());
  }
  return numbers;
}

std::string Fraction(const Moment& value)
{
  return value.IsRational() ? value.RationalPart().get_str() : "";
}

/// How many of first, first + step, ... do not lie beyond last. Throws InputError.
std::int64_t CountOf(const Moment& first, const Moment& last, const Moment& step)
{
  const Moment way = last - first;
  if (step.Sign() == 0 || way.Sign() * step.Sign() < 0)
    throw InputError("--sweep: the step does not lead from the first value to the last");
  const double steps = way.ToDouble() / step.ToDouble();
  if (!(steps < kMostValues)) throw InputError("--sweep: too many values");
  // The quotient is rounded: the exact count is next to it.
  auto count = static_cast<std::int64_t>(steps) + 2;
  const auto isBeyond = [&](std::int64_t i) {
    return (way - step * Rational(static_cast<long>(i))).Sign() * step.Sign() < 0;
  };
  while (isBeyond(count - 1)) --count;
  return count;
}

}  // namespace

SweptValues SweptValues::Range(const std::string& first, const std::string& last,
                               const std::string& step, int digits)
{
  const auto numbers = Read({first, last, step});
  const auto& moments = numbers->moments;
  const TimeFormat format(digits);
  return {CountOf(moments[0], moments[1], moments[2]),
          [numbers, first, step, format](std::int64_t i) {
            const Moment value =
                numbers->moments[0] + numbers->moments[2] * Rational(static_cast<long>(i));
            return SweptValue{fmt::format("({})+{}*({})", first, i, step), format.Text(value),
                              Fraction(value)};
          }};
}

SweptValues SweptValues::List(const std::vector<std::string>& expressions, int digits)
{
  const auto numbers = Read(expressions);
  const TimeFormat format(digits);
  return {static_cast<std::int64_t>(expressions.size()),
          [numbers, expressions, format](std::int64_t i) {
            const auto place = static_cast<std::size_t>(i);
            const Moment& value = numbers->moments[place];
            return SweptValue{expressions[place], format.Text(value), Fraction(value)};
          }};
}

}  // namespace varno::solve
