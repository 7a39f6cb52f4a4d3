#include <memory>
#include <utility>

#include "solve/library/solve.h"
#include "solve/number/real.h"

namespace varno::solve {

Value::Value(std::string text, mpfr_srcptr number) : text(std::move(text))
{
  const auto copy = std::make_shared<Real>(mpfr_get_prec(number));
  mpfr_set(*copy, number, MPFR_RNDN);
  this->number = {copy, static_cast<mpfr_ptr>(*copy)};
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
