#pragma once

namespace varno {

// Conversions of the texts that options and the settings file give. A text that is no number is
// not an error: it gives 0. (Numbers that are set by SetNumberFromText keep their old value.)

/// The decimal integer that the text begins with, 0 when there is none; a value beyond the range of
/// int gives the nearest int.
int IntegerFromText(const char* text);

/// True exactly when the text converts to 1: every other number, 2 included, is false.
bool FlagFromText(const char* text);

/// The floating-point number that the text begins with, 0 when there is none. Ends the run when it
/// is infinite or not a number.
double DoubleFromText(const char* text);

/// Sets the precision of all numbers made from now on, in bits. Ends the run when no number of that
/// precision can be allocated, which a negative precision counts as.
void SetPrecisionFromText(const char* text);

}  // namespace varno
