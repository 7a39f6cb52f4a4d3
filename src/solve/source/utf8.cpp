#include "solve/source/utf8.h"

namespace varno::solve {

namespace {

/// The number of bytes that a leading byte announces, 0 for one that leads nothing.
std::size_t AnnouncedBytes(unsigned char lead)
{
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF5) return 4;
  return 0;
}

}  // namespace

std::size_t CharacterBytes(std::string_view text)
{
  const std::size_t bytes = AnnouncedBytes(static_cast<unsigned char>(text.front()));
  if (bytes == 0 || bytes > text.size()) return 1;
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 1;
  }
  return bytes;
}

bool IsPrintable(std::string_view text)
{
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t bytes = CharacterBytes(text);
  if (bytes == 1) return lead >= 0x20 && lead < 0x7F;
  // U+0080 to U+009F are control characters as well.
  return !(bytes == 2 && lead == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0);
}

std::size_t CountCharacters(std::string_view text)
{
  std::size_t count = 0;
  for (; !text.empty(); text.remove_prefix(CharacterBytes(text))) ++count;
  return count;
}

}  // namespace varno::solve
