#include "solve/library/ends.h"

#include <string>

#include <fmt/format.h>

#include "solve/source/diagnostics.h"

namespace varno::solve {

namespace {

/// A number in messages: a few digits, as people write it.
std::string Short(mpfr_srcptr number)
{
  return fmt::format("{:.6g}", mpfr_get_d(number, MPFR_RNDN));
}

std::string Reason(const Graph& graph, const DomainError& error)
{
  const std::string argument = Short(error.argument);
  switch (error.outcome) {
    case Outcome::kOutOfRange:
      return "is too large for the arithmetic";
    case Outcome::kTooSmall:
      return "is too small for the arithmetic";
    case Outcome::kInDoubt:
      return "cannot be told from 0, or from the edge of a domain,";
    case Outcome::kNoSeries:
      return "has no Taylor series, because it is a root or power of 0,";
    case Outcome::kUndefined:
    case Outcome::kValue:
      break;
  }
  if (graph[error.node].operation == Operation::kDivide) return "divides by 0";
  return "is not defined for the argument " + argument;
}

}  // namespace

std::string Ends::TimeText(const Moment& time) const
{
  Real value(static_cast<mpfr_prec_t>(4 * digits + 64));
  time.Evaluate(value);
  // Digits as asked for, without the zeros that end them.
  char* buffer = nullptr;
  mpfr_asprintf(&buffer, "%.*Rg", digits, static_cast<mpfr_srcptr>(value));
  std::string text(buffer);
  mpfr_free_str(buffer);
  return text;
}

/// The message with the place of the expression that it is about.
std::string Ends::Described(NodeId node, const std::string& message) const
{
  const Place place = graph[node].place;
  if (place.begin == place.end) return message;
  Diagnostics diagnostics;
  diagnostics.Error(place, message);
  return Render(diagnostics, sources);
}

RunEnded Ends::Of(const DomainError& error, const Moment& time) const
{
  const Node& node = graph[error.node];
  // A root of a state that is 0 may stay 0, or leave it at any time.
  const bool mayBranch = error.outcome == Outcome::kNoSeries &&
                         graph[node.operands[0]].dependence == Dependence::kStates;
  const std::string message =
      fmt::format("'{}' {} at t = {}{}", sources.Text(node.place), Reason(graph, error),
                  TimeText(time), mayBranch ? ": the solution may not be unique" : "");
  const bool outOfRange = error.outcome == Outcome::kOutOfRange ||
                          error.outcome == Outcome::kTooSmall || error.outcome == Outcome::kInDoubt;
  return {outOfRange ? EndReason::kOutOfRange : EndReason::kLostDomain,
          Described(error.node, message)};
}

/// What happens at a singularity.
std::string Ends::What(const Singularity& singularity) const
{
  const std::string_view expression = sources.Text(graph[singularity.node].place);
  const std::string state = singularity.state ? states[*singularity.state] : "";
  const std::string order = singularity.order ? " of order " + singularity.order->get_str() : "";
  switch (singularity.kind) {
    case SingularityKind::kPole:
      return fmt::format("{} has a pole{} there", state, order);
    case SingularityKind::kLogarithm:
      return fmt::format("{} becomes infinite there, like a logarithm", state);
    case SingularityKind::kBranchPoint:
      return fmt::format("the solution stays bounded, but {} has a branch point{} there, by '{}'",
                         state, order, expression);
    case SingularityKind::kDomainEdge:
      return fmt::format("the solution stays bounded, but '{}' does not go on there", expression);
    case SingularityKind::kSliding:
      return fmt::format("it would slide along a kink or a jump: both sides of '{}' point to it",
                         expression);
    case SingularityKind::kAccumulation:
      return fmt::format("events or switches accumulate there, without end, as of '{}'",
                         expression);
    case SingularityKind::kSlowApproach:
      return fmt::format(
          "steps become so much shorter on the way to it, as of '{}', that no number of them gets "
          "there",
          expression);
    case SingularityKind::kStandstill:
      return fmt::format(
          "events or switches lead to one another without end, and no time passes, as "
          "of '{}'",
          expression);
    case SingularityKind::kUndecided:
      return fmt::format("{} bits do not tell whether '{}' crosses its limit there or touches it",
                         singularity.bits, expression);
    case SingularityKind::kUnknown:
      break;
  }
  return fmt::format("{} bits do not tell '{}' from a pole there", singularity.bits, expression);
}

RunEnded Ends::Of(const Singularity& singularity) const
{
  const std::string message = fmt::format("the solution cannot be continued beyond t = {}: {}",
                                          TimeText(singularity.time), What(singularity));
  return {EndReason::kSingularity, Described(singularity.node, message)};
}

/// Where an attempt was, and how far the one before it had come.
std::string Ends::HowFar(const Moment& time, const std::optional<Moment>& rowsBeyond) const
{
  std::string text = "at t = " + TimeText(time);
  if (rowsBeyond)
    text +=
        ", beginning again with more digits; the rows are right to t = " + TimeText(*rowsBeyond);
  return text;
}

RunEnded Ends::AtLimit(const std::string& limit, const Moment& time,
                       const std::optional<Moment>& rowsBeyond) const
{
  return {EndReason::kLimit, limit + " reached " + HowFar(time, rowsBeyond)};
}

RunEnded Ends::Interrupted(const Moment& time, const std::optional<Moment>& rowsBeyond) const
{
  return {EndReason::kInterrupted, "interrupted " + HowFar(time, rowsBeyond)};
}

}  // namespace varno::solve
