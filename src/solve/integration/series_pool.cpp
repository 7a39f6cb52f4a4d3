#include "solve/integration/series_pool.h"

#include <utility>

namespace varno::solve {

std::unique_ptr<Series> SeriesPool::TakeIdle()
{
  const std::lock_guard lock(mutex);
  if (idle.empty()) return nullptr;
  std::unique_ptr<Series> series = std::move(idle.back());
  idle.pop_back();
  return series;
}

void SeriesPool::TakeBack(std::unique_ptr<Series> series)
{
  const std::lock_guard lock(mutex);
  idle.push_back(std::move(series));
}

std::shared_ptr<Series> SeriesPool::Take()
{
  std::unique_ptr<Series> series = TakeIdle();
  if (series == nullptr) series = make();
  return {series.release(), [pool = shared_from_this()](Series* given) {
            pool->TakeBack(std::unique_ptr<Series>(given));
          }};
}

}  // namespace varno::solve
