#include "output/number_format.h"

#include <cstdint>
#include <iomanip>
#include <memory>
#include <string>
#include <string_view>

#include "config/global_data.h"
#include "expr/expr.h"

namespace varno {

namespace {

/// The decimal digits of a number: its value is 0.DIGITS * 10^exponent.
struct Decimal {
  std::string digits;  ///< with a leading "-" for a negative number; empty for 0
  mp_exp_t exponent;
};

Decimal ToDecimal(mpf_srcptr number, std::int64_t digitCount)
{
  // GMP gives no more digits than the number has, however many are asked for.
  mp_exp_t exponent = 0;
  char* const text =
      mpf_get_str(nullptr, &exponent, 10, static_cast<std::size_t>(digitCount), number);
  const std::string digits(text);
  void (*release)(void*, std::size_t) = nullptr;
  mp_get_memory_functions(nullptr, nullptr, &release);
  release(text, digits.size() + 1);
  return {digits, exponent};
}

void WritePlain(std::ostream& out, const Decimal& decimal)
{
  if (decimal.exponent == 0 && decimal.digits.empty()) {
    out << "0.0";
    return;
  }
  std::string_view digits = decimal.digits;
  const bool negative = digits.starts_with('-');
  if (negative) digits.remove_prefix(1);
  out << (negative ? "-0." : " 0.") << digits << 'e' << decimal.exponent;
}

/// Rounds the digits up where those beyond the width W ask for it.
///
/// On purpose the exponent stays as it is, a "-" counts as a digit, and a carry may run into it and
/// make it a "."; a carry that reaches a first digit, making it 5 or more, gives a 1 and zeros; the
/// digits beyond the rounding position stay.
void RoundToWidth(std::string& digits, std::int64_t width)
{
  if (static_cast<std::int64_t>(digits.size()) <= width + 1) return;
  std::int64_t i = width + 1;
  if (i < 1 || digits[i] < '5') return;
  do {
    digits[i] = '0';
    --i;
    if (digits[i] <= '8') {
      ++digits[i];
      break;
    }
  } while (i > 0);
  if (i == 0 && digits[0] > '4') {
    digits.assign(static_cast<std::size_t>(width), '0');
    if (width > 0) digits[0] = '1';
  }
}

/// Writes the digits one by one, and zeros when there are no more.
class DigitWriter {
 public:
  DigitWriter(std::ostream& out, std::string_view digits) : out(out), digits(digits) {}

  void Write(std::int64_t count)
  {
    for (; count > 0; --count) {
      out.put(next < digits.size() ? digits[next] : '0');
      ++next;
    }
  }

 private:
  std::ostream& out;
  std::string_view digits;
  std::size_t next = 0;
};

void Repeat(std::ostream& out, char character, std::int64_t count)
{
  for (; count > 0; --count) out.put(character);
}

/// Writes the sign of the digits and takes it off.
void WriteSign(std::ostream& out, std::string_view& digits)
{
  if (digits.starts_with('-')) {
    out.put('-');
    digits.remove_prefix(1);
  } else {
    out.put(Expr::Global->_FILLCHAR);
  }
}

void WriteZero(std::ostream& out)
{
  const GlobalData& global = *Expr::Global;
  const std::int64_t width = global._PRINTWIDTH;
  const std::int64_t precision = global._PRINTCHARS;
  const std::int64_t exponentDigits = global._FMT_INT;
  Repeat(out, ' ', global._FMT_FLAG ? width - precision - exponentDigits - 4 : width - precision);
  out << global._FILLCHAR << "0.";
  Repeat(out, '0', precision);
  if (global._FMT_FLAG) {
    out << "e+";
    Repeat(out, '0', exponentDigits);
  }
}

/// "-d.ddde+xx"
void WriteExponentForm(std::ostream& out, const Decimal& decimal)
{
  const GlobalData& global = *Expr::Global;
  const std::int64_t precision = global._PRINTCHARS;
  const std::int64_t exponentDigits = global._FMT_INT;
  Repeat(out, ' ', global._PRINTWIDTH - precision - exponentDigits - 4);
  std::string_view digits = decimal.digits;
  WriteSign(out, digits);
  DigitWriter writer(out, digits);
  writer.Write(1);
  out.put('.');
  writer.Write(precision);
  const mp_exp_t exponent = decimal.exponent - 1;
  // The fill character stays at '0' on purpose.
  out << (exponent < 0 ? "e-" : "e+") << std::setfill('0') << std::setw(global._FMT_INT)
      << (exponent < 0 ? -exponent : exponent);
}

/// "-ddd.ddd", without a zero before the point
void WriteFixedForm(std::ostream& out, const Decimal& decimal)
{
  const GlobalData& global = *Expr::Global;
  const std::int64_t precision = global._PRINTCHARS;
  const std::int64_t exponent = decimal.exponent;
  Repeat(out, ' ', global._PRINTWIDTH - precision + (exponent - precision >= 1 ? 1 : 0));
  std::string_view digits = decimal.digits;
  WriteSign(out, digits);
  DigitWriter writer(out, digits);
  if (exponent < 0) {
    const std::int64_t zeros = std::min(-exponent, std::max<std::int64_t>(precision, 0));
    out.put('.');
    Repeat(out, '0', zeros);
    writer.Write(precision - zeros);
    return;
  }
  std::int64_t integerDigits = exponent;
  for (std::int64_t position = 0; position <= precision; ++position) {
    if (integerDigits == 0) out.put('.');
    writer.Write(1);
    --integerDigits;
  }
  Repeat(out, '0', integerDigits);
}

}  // namespace

std::ostream& WriteNumber(std::ostream& out, mpf_srcptr number)
{
  const GlobalData& global = *Expr::Global;
  const std::int64_t width = global._PRINTWIDTH;
  if (global._FMT_FLAG2) {
    WritePlain(out, ToDecimal(number, width));
    return out;
  }
  if (mpf_cmp(number, global._ZERO) == 0) {
    WriteZero(out);
    return out;
  }
  Decimal decimal = ToDecimal(number, width + 3);
  RoundToWidth(decimal.digits, width);
  if (global._FMT_FLAG) {
    WriteExponentForm(out, decimal);
  } else {
    WriteFixedForm(out, decimal);
  }
  return out;
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
