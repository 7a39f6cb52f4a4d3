#pragma once

#include <cstddef>
#include <string_view>

namespace varno::solve {

/// How many characters of `a` must be inserted, removed, replaced or swapped with their neighbour
/// to give `b`; upper and lower case count as equal. Never more than limit + 1, which stands for
/// all larger distances. Optimal string alignment; Boytsov, Indexing methods for approximate
/// dictionary searching, 2011, section 2.
std::size_t EditDistance(std::string_view a, std::string_view b, std::size_t limit);

/// Finds the best of many candidates for a name that was probably misspelled.
class NearName {
 public:
  explicit NearName(std::string_view name);
  /// A candidate that stays valid; of equally near ones the first counts.
  void Consider(std::string_view candidate);
  /// Empty when nothing is near: of short names one character may be wrong, of long ones two, and
  /// of names of one or two characters only the case.
  std::string_view Best() const { return best; }

 private:
  std::string_view name;
  std::string_view best;
  std::size_t limit;  // how near a candidate must be
  bool exhausted = false;
};

}  // namespace varno::solve
