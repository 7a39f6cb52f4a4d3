#include "varno/sys/number_checks.h"

#include <string>

#include "arith/decimal_text.h"
#include "varno/sys/memory.h"
#include "varno/sys/messages.h"

namespace varno {

void FailOutOfRange()
{
  Fail("A number is out of range: its decimal exponent is beyond +-" +
       std::to_string(arith::kLargestExponent));
}

bool SetNumberFromText(arith::Mpf& number, const char* text)
{
  switch (arith::SetFromDecimal(number, text)) {
    case arith::DecimalText::kNumber:
      return true;
    case arith::DecimalText::kNoNumber:
      return false;
    case arith::DecimalText::kOutOfRange:
      break;
  }
  Fail(std::string("Number \"") + text + "\" is out of range");
}

arith::TermArray MakeTermArray(int termCount)
{
  RequireMemory(arith::TermArray::BytesFor(termCount));
  return arith::TermArray(termCount);
}

}  // namespace varno
