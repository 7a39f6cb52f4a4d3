#include "solve/model/near_name.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace varno::solve {

namespace {

/// Longer names are not compared: nobody misspells them, and it would take long.
constexpr std::size_t kMaxLength = 64;

char Lower(char c)
{
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::size_t LimitFor(std::size_t length)
{
  if (length <= 2) return 0;
  return length <= 5 ? 1 : 2;
}

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b, std::size_t limit)
{
  const std::size_t difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
  if (difference > limit) return limit + 1;

  // d[i][j] is the distance of the first i characters of a and the first j of b; three rows of it
  std::vector<std::size_t> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::swap(beforeLast, last);
    std::swap(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (Lower(a[i - 1]) == Lower(b[j - 1]) ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      const bool swapped = i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) &&
                           Lower(a[i - 2]) == Lower(b[j - 1]);
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return std::min(row[b.size()], limit + 1);
}

NearName::NearName(std::string_view name)
    : name(name), limit(LimitFor(name.size())), exhausted(name.size() > kMaxLength)
{}

void NearName::Consider(std::string_view candidate)
{
  if (exhausted || candidate == name || candidate.size() > kMaxLength) return;
  const std::size_t distance = EditDistance(name, candidate, limit);
  if (distance > limit) return;
  best = candidate;
  // From now on only what is nearer counts.
  if (distance == 0) {
    exhausted = true;
  } else {
    limit = distance - 1;
  }
}

}  // namespace varno::solve
