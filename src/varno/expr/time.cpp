#include "varno/expr/time.h"

#include <ostream>

#include "varno/core/global_data.h"
#include "varno/expr/number.h"
#include "varno/sys/messages.h"

namespace varno {

Time::Time() : Expr(kTime, false)
{
  // On purpose: term 1 is 1, not h.
  mpf_set(row[1], Global->_ONE);
}

void Time::GetDY(int, mpf_t&)
{
  Fail("virtual void Time::GetDY(int, __mpf_struct (&)[1]) called!!!");
}

void Time::ResetTerms()
{
  if (termStamp == Global->_STEPNO) return;
  termStamp = Global->_STEPNO;
  mpf_set(value, result);
  mpf_set(row[0], value);
}

void Time::Result(mpf_t& out, bool)
{
  mpf_set(out, Global->_T);
}

void Time::MakeDerivative()
{
  derivative = Ref(new Number(1));
}

TermRow Time::Terms(int)
{
  ResetTerms();
  return {row.Data(), 2};
}

void Time::GetInitValue(mpf_t& out)
{
  mpf_set(out, Global->_ZERO);
}

Expr::Ref Time::ConvertExpr()
{
  return Ref(this);
}

void Time::Print(std::ostream& out) const
{
  out << 't';
}

}  // namespace varno
