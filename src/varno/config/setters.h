#pragma once

#include <ostream>

#include "varno/config/setting_text.h"
#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "varno/sys/number_checks.h"

namespace varno {

// How a text from an option or from the settings file changes the record, and how the usage text
// shows a field. Named by a field of the record, so that the tables of options and of keywords have
// one line for each setting.

template <int GlobalData::*kField>
void SetInteger(const char* text)
{
  Expr::Global->*kField = IntegerFromText(text);
}

template <bool GlobalData::*kField>
void SetFlag(const char* text)
{
  Expr::Global->*kField = FlagFromText(text);
}

template <std::string GlobalData::*kField>
void SetText(const char* text)
{
  Expr::Global->*kField = text;
}

/// By the multiprecision conversion: a text that is no number leaves the field as it is.
template <Mpf GlobalData::*kField>
void SetNumber(const char* text)
{
  SetNumberFromText(Expr::Global->*kField, text);
}

/// On purpose by way of a double, which decides the digits.
inline void SetAccuracy(const char* text)
{
  mpf_set_d(Expr::Global->_ACCURACY, DoubleFromText(text));
}

inline void SetInitialStep(const char* text)
{
  Expr::Global->SetStep(DoubleFromText(text));
}

inline void SetMaximumOrder(const char* text)
{
  Expr::Global->SetTermCount(long{IntegerFromText(text)} + Expr::Global->_ZEROTERMS);
}

/// On purpose the new number is added to a term count that already holds the old one, so that the
/// order in which it and the maximum order are set matters.
inline void SetZeroTerms(const char* text)
{
  Expr::Global->_ZEROTERMS = IntegerFromText(text);
  Expr::Global->SetTermCount(long{Expr::Global->_ZEROTERMS} + Expr::Global->_NTERMS);
}

inline void SetGnuplotTerminal(const char* text)
{
  Expr::Global->_GNUPLOT = true;
  Expr::Global->_GNUPLOTOUTPUT = text;
}

template <auto kField>
void Show(std::ostream& out)
{
  out << Expr::Global->*kField;
}

}  // namespace varno
