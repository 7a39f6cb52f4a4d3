#include "solve/library/step.h"

#include <algorithm>
#include <utility>

#include "solve/number/exponent_range.h"

namespace varno::solve {

Step::Step(int run, int attempt, Value begin, Value end, std::shared_ptr<const Data> data)
    : run(run),
      attempt(attempt),
      begin(std::move(begin)),
      end(std::move(end)),
      data(std::move(data))
{}

int Step::Order() const
{
  std::size_t count = 1;  // also where there is no state
  for (const auto& terms : data->polynomial->terms) count = std::max(count, terms.size());
  return static_cast<int>(count) - 1;
}

long Step::Bits() const
{
  return data->polynomial->bits;
}

Value Step::Coefficient(std::size_t state, int k) const
{
  const auto& terms = data->polynomial->terms.at(state);
  const auto order = static_cast<std::size_t>(k);
  if (k < 0 || order >= terms.size())
    throw std::out_of_range("a Taylor coefficient beyond the order");
  const ScopedExponentRange range;
  const Real coefficient = data->polynomial->Coefficient(state, order);
  return {data->format.Text(coefficient), coefficient};
}

}  // namespace varno::solve
