#include "varno/config/setting_text.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <string>

#include <gmp.h>

#include "varno/sys/memory.h"
#include "varno/sys/messages.h"

namespace varno {

int IntegerFromText(const char* text)
{
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

bool FlagFromText(const char* text)
{
  return std::strtol(text, nullptr, 10) == 1;
}

double DoubleFromText(const char* text)
{
  const double number = std::strtod(text, nullptr);
  if (!std::isfinite(number)) Fail(std::string("Number \"") + text + "\" is out of range");
  return number;
}

void SetPrecisionFromText(const char* text)
{
  const long bits = std::strtol(text, nullptr, 10);
  // GMP counts the limbs of a number in an int.
  if (bits < 0 || bits / GMP_NUMB_BITS >= INT_MAX - 1) FailOutOfMemory();
  RequireMemory(static_cast<std::size_t>(bits) / CHAR_BIT);
  mpf_set_default_prec(static_cast<mp_bitcnt_t>(bits));
}

}  // namespace varno
