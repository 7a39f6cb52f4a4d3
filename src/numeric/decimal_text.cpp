#include "numeric/decimal_text.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "numeric/range.h"
#include "sys/messages.h"

namespace varno {

namespace {

/// The exponent that GMP reads from the text: what follows its last 'e', 'E' or '@'.
long ExponentOf(const char* text)
{
  const std::size_t length = std::strlen(text);
  for (std::size_t i = length; i > 0; --i) {
    if (std::strchr("eE@", text[i - 1]) != nullptr) return std::strtol(text + i, nullptr, 10);
  }
  return 0;
}

}  // namespace

bool SetFromDecimal(Mpf& number, const char* text)
{
  const long exponent = ExponentOf(text);
  if (exponent > kLargestExponent || exponent < -kLargestExponent) {
    Fail(std::string("Number \"") + text + "\" is out of range");
  }
  return mpf_set_str(number, text, 10) == 0;
}

}  // namespace varno
