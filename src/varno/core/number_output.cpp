#include "varno/core/number_output.h"

#include <iterator>
#include <string>

#include "varno/core/expr.h"
#include "varno/core/global_data.h"
#include "varno/format/number_format.h"

namespace varno {

namespace {

NumberFormat CurrentFormat()
{
  return {.width = Expr::Global->_PRINTWIDTH,
          .digits = Expr::Global->_PRINTCHARS,
          .exponentForm = Expr::Global->_FMT_FLAG,
          .exponentDigits = Expr::Global->_FMT_INT,
          .plain = Expr::Global->_FMT_FLAG2,
          .noSign = Expr::Global->_FILLCHAR};
}

}  // namespace

std::ostream& WriteNumber(std::ostream& out, mpf_srcptr number)
{
  static std::string text;  // static to keep its memory from number to number
  text.clear();
  const NumberFormat format = CurrentFormat();
  AppendNumber(text, number, format);
  // On purpose the exponent form leaves the fill character of the stream at '0'.
  const bool hasExponent = format.exponentForm && !format.plain;
  if (hasExponent && mpf_sgn(number) != 0) out.fill('0');
  return out.write(text.data(), std::ssize(text));
}

std::ostream& PlainNumbersOn(std::ostream& out)
{
  Expr::Global->_FMT_FLAG2 = true;
  return out;
}

std::ostream& PlainNumbersOff(std::ostream& out)
{
  Expr::Global->_FMT_FLAG2 = false;
  return out;
}

}  // namespace varno
