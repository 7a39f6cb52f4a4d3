#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "solve/series/series.h"

namespace varno::solve {

/// Series of one kind, to be used again: one that nobody holds any longer is given out anew, on
/// whatever thread it was let go.
class SeriesPool : public std::enable_shared_from_this<SeriesPool> {
 public:
  using Make = std::function<std::unique_ptr<Series>()>;
  explicit SeriesPool(Make make) : make(std::move(make)) {}

  /// A series for the caller alone. The pool must be held by a shared_ptr; the series hold it, too.
  std::shared_ptr<Series> Take();

 private:
  std::unique_ptr<Series> TakeIdle();
  void TakeBack(std::unique_ptr<Series> series);

  Make make;
  std::mutex mutex;
  std::vector<std::unique_ptr<Series>> idle;
};

}  // namespace varno::solve
