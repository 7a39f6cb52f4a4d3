#include "solve/verification/held_rows.h"

#include <utility>

namespace varno::solve {

std::optional<VerifiedRow> HeldRows::Next()
{
  if (!areAllHeld) HoldAll();
  if (rows.empty()) {
    if (end != nullptr) std::rethrow_exception(end);
    return std::nullopt;
  }
  VerifiedRow row = std::move(rows.front());
  rows.pop_front();
  return row;
}

void HeldRows::HoldAll()
{
  while (!areAllHeld) {
    try {
      while (std::optional<VerifiedRow> row = source.Next()) rows.push_back(*std::move(row));
      areAllHeld = true;
    } catch (const WrongRow&) {
      rows.clear();
      source.Forget();
    } catch (...) {
      end = std::current_exception();
      areAllHeld = true;
    }
  }
}

}  // namespace varno::solve
