#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "solve/source/place.h"

namespace varno::solve {

/// Line and column of a byte, both counted from 1; columns count characters of UTF-8, not bytes.
struct Position {
  int line;
  int column;
};

/// The longest text: places count bytes with 32 bits, and the scanner with one bit less.
inline constexpr std::size_t kMaxSourceBytes = 1U << 30;

/// The texts that a problem is made of: the file, and one for each setting of the command line.
class Sources {
 public:
  /// Keeps a text under a name for messages ("pendulum.varno", "--set"); returns its number.
  /// Throws std::length_error for a text of more than kMaxSourceBytes.
  std::uint32_t Add(std::string name, std::string text);

  const std::string& Name(std::uint32_t source) const;
  const std::string& Text(std::uint32_t source) const;
  /// The bytes of a place.
  std::string_view Text(Place place) const;
  /// Where a place begins.
  Position Begin(Place place) const;
  /// The line in which a place begins, without its line end.
  std::string_view Line(Place place) const;

 private:
  struct Entry {
    std::string name;
    std::string text;
    std::vector<std::uint32_t> lineStarts;
  };
  /// The number of the line in which a place begins, counted from 0.
  std::size_t LineIndex(Place place) const;

  std::deque<Entry> entries;  // stable: views into texts stay valid
};

}  // namespace varno::solve
