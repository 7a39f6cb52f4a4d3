#pragma once

#include <string>

#include <gmp.h>

namespace varno {

/// How numbers are written: " 1.50000000000e+00" by default.
struct NumberFormat {
  int width = 15;            ///< what shorter numbers are padded to; the digits asked for, if plain
  int digits = 11;           ///< digits after the point
  bool exponentForm = true;  ///< otherwise fixed point
  int exponentDigits = 2;    ///< least number of exponent digits
  bool plain = false;        ///< " 0.15e1", whatever the form
  char noSign = ' ';         ///< stands where a negative number has its sign
};

/// Appends a number to a text.
void AppendNumber(std::string& text, mpf_srcptr number, const NumberFormat& format);

}  // namespace varno
