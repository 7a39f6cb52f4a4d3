#include "varno/expr/number.h"

#include <ostream>

#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "varno/sys/messages.h"

namespace varno {

Number::Number(mpf_srcptr constant) : Expr(kNumber, false)
{
  mpf_set(value, constant);
}

Number::Number(const char* decimal) : Expr(kNumber, false)
{
  mpf_set_str(value, decimal, 10);
}

Number::Number(double constant) : Expr(kNumber, false)
{
  mpf_set_d(value, constant);
}

Number::Number(int constant) : Expr(kNumber, false)
{
  mpf_set_si(value, constant);
}

void Number::GetDY(int, mpf_t&)
{
  Fail("virtual void Number::GetDY(int, __mpf_struct (&)[1]) called!!!");
}

void Number::Result(mpf_t& out, bool)
{
  mpf_set(out, value);
}

void Number::MakeDerivative()
{
  derivative = Ref(new Number(0));
}

TermRow Number::Terms(int)
{
  return {value, 1};
}

void Number::GetInitValue(mpf_t& out)
{
  mpf_set(out, value);
}

Expr::Ref Number::ConvertExpr()
{
  return Ref(this);
}

void Number::Print(std::ostream& out) const
{
  out << value;
}

mpf_ptr ConstantOf(const Expr::Ref& node)
{
  return node->Type() == kNumber ? static_cast<Number&>(*node).Constant() : nullptr;
}

}  // namespace varno
