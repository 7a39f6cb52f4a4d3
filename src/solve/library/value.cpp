#include <memory>
#include <utility>

#include "solve/library/solve.h"

namespace varno::solve {

void Value::Clear::operator()(mpfr_ptr owned) const
{
  mpfr_clear(owned);
  delete owned;
}

Value::Value(std::string text, mpfr_srcptr number) : text(std::move(text))
{
  auto copy = std::make_unique<__mpfr_struct>();
  mpfr_init2(copy.get(), mpfr_get_prec(number));
  mpfr_set(copy.get(), number, MPFR_RNDN);
  this->number = std::shared_ptr<__mpfr_struct>(copy.release(), Clear{});
}

mpfr_srcptr Value::Get() const
{
  return number.get();
}

double Value::ToDouble() const
{
  return mpfr_get_d(number.get(), MPFR_RNDN);
}

}  // namespace varno::solve
