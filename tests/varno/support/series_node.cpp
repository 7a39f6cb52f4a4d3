#include "tests/varno/support/series_node.h"

#include <cstddef>
#include <ostream>
#include <utility>

namespace varno {

namespace {

/// None of the program's own kinds.
constexpr ExprType kSeries{kTrunc + 1};

}  // namespace

int SeriesNode::alive = 0;

SeriesNode::SeriesNode(std::vector<double> series) : Expr(kSeries, true), series(std::move(series))
{
  ++alive;
}

SeriesNode::~SeriesNode()
{
  --alive;
}

void SeriesNode::GetDY(int k, mpf_t& out)
{
  computedTerms.push_back(k);
  const auto index = static_cast<std::size_t>(k);
  mpf_set_d(out, index < series.size() ? series[index] : 0.0);
}

void SeriesNode::Result(mpf_t& out, bool)
{
  ++computedValues;
  mpf_set_ui(out, 0);
  for (const double term : series) mpf_add(out, out, Mpf(term));
}

void SeriesNode::MakeDerivative()
{
  ++derivativesAskedFor;
}

void SeriesNode::GetInitValue(mpf_t& out)
{
  ++computedInitialValues;
  mpf_set_d(out, series.empty() ? 0.0 : series.front());
}

Expr::Ref SeriesNode::ConvertExpr()
{
  return Series(series);
}

void SeriesNode::Print(std::ostream& out) const
{
  out << "series";
}

void SeriesNode::SetStartValue(double start)
{
  mpf_set_d(value, start);
}

}  // namespace varno
