#include "solve/sweep/sweep.h"

#include <utility>

namespace varno::solve {

Sweep::Sweep(std::vector<SweepAxis> given) : axes(std::move(given))
{
  for (const SweepAxis& axis : axes) {
    if (__builtin_mul_overflow(count, axis.front().values.count, &count))
      throw InputError("--sweep: too many runs");
    for (const SweptName& swept : axis) names.push_back(swept.name);
  }
}

Combination Sweep::At(std::int64_t run) const
{
  std::vector<std::int64_t> places(axes.size());
  for (std::size_t i = axes.size(); i-- > 0;) {
    const std::int64_t length = axes[i].front().values.count;
    places[i] = run % length;
    run /= length;
  }
  Combination combination;
  for (std::size_t i = 0; i < axes.size(); ++i) {
    for (const SweptName& swept : axes[i]) {
      SweptValue value = swept.values.at(places[i]);
      combination.texts.push_back(value.text);
      combination.values.push_back(std::move(value));
    }
  }
  return combination;
}

}  // namespace varno::solve
