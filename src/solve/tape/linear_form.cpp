#include "solve/tape/linear_form.h"

#include <algorithm>
#include <utility>

namespace varno::solve {

LinearArithmetic::LinearArithmetic(Graph& graph)
    : graph(graph),
      zero(graph.Number(0, {})),
      one(graph.Number(1, {})),
      minusOne(graph.Number(-1, {}))
{}

NodeId LinearArithmetic::OneThird()
{
  return graph.Number(Rational(1, 3), {});
}

NodeId LinearArithmetic::TwoBySqrtPi()
{
  const NodeId root = graph.Make(Operation::kSqrt, graph.Leaf(Operation::kPi, {}), {});
  return graph.Make(Operation::kDivide, graph.Number(2, {}), root, {});
}

NodeId LinearArithmetic::Sum(NodeId a, NodeId b)
{
  if (IsZero(a)) return b;
  if (IsZero(b)) return a;
  return graph.Make(Operation::kAdd, a, b, graph[a].place);
}

NodeId LinearArithmetic::Product(NodeId a, NodeId b)
{
  if (IsOne(a)) return b;
  if (IsOne(b)) return a;
  return graph.Make(Operation::kMultiply, a, b, graph[a].place);
}

LinearForm LinearArithmetic::Add(LinearForm a, LinearForm b)
{
  // The shorter one is appended: long sums are built in linear time whichever side is long.
  if (a.terms.size() < b.terms.size()) std::swap(a, b);
  a.constant = Sum(a.constant, b.constant);
  a.terms.insert(a.terms.end(), b.terms.begin(), b.terms.end());
  return a;
}

LinearForm LinearArithmetic::Scale(LinearForm a, NodeId factor)
{
  if (IsOne(factor)) return a;
  if (!IsZero(a.constant)) a.constant = Product(a.constant, factor);
  for (LinearForm::Term& term : a.terms) term.factor = Product(term.factor, factor);
  return a;
}

void LinearArithmetic::Normalise(LinearForm& form)
{
  std::ranges::stable_sort(form.terms, {}, &LinearForm::Term::line);
  std::vector<LinearForm::Term> merged;
  for (const LinearForm::Term& term : form.terms) {
    if (!merged.empty() && merged.back().line == term.line) {
      merged.back().factor = Sum(merged.back().factor, term.factor);
    } else {
      merged.push_back(term);
    }
  }
  std::erase_if(merged, [this](const LinearForm::Term& term) { return IsZero(term.factor); });
  form.terms = std::move(merged);
}

}  // namespace varno::solve
