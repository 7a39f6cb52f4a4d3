#pragma once

#include <cstddef>
#include <string_view>

namespace varno::solve {

/// The number of bytes of the first character of a text that is not empty: 1 to 4; a byte that
/// begins no well-formed character of UTF-8 counts as a character by itself.
std::size_t CharacterBytes(std::string_view text);

/// True when the first character of a text that is not empty can be shown as it is: no control
/// character, and well formed.
bool IsPrintable(std::string_view text);

/// How many characters a text has.
std::size_t CountCharacters(std::string_view text);

}  // namespace varno::solve
