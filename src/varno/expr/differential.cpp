#include "varno/expr/differential.h"

#include <ostream>
#include <utility>

#include "arith/magnitude.h"
#include "varno/config/print_list.h"
#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "varno/sys/messages.h"
#include "varno/sys/number_checks.h"

namespace varno {

using arith::IsBelowProduct;

Differential::Differential(std::string name, Ref rightHandSide)
    : Differential(kDifferential, true, std::move(name), std::move(rightHandSide))
{}

Differential::Differential(ExprType type, bool withTerms, std::string name, Ref rightHandSide)
    : Expr(type, withTerms),
      name(std::move(name)),
      rightHandSide(std::move(rightHandSide)),
      printed(IsSelectedForPrint(this->name))
{}

void Differential::GetDY(int k, mpf_t& out)
{
  // term k = f[k-1] h / k; term 0 is never computed, ResetTerms sets it
  mpf_mul(out, rightHandSide->Term(k - 1), Global->_STEPDIV[k]);
}

void Differential::ResetTerms()
{
  if (termStamp == Global->_STEPNO) return;
  termStamp = Global->_STEPNO;
  PrepareTerms();
  valid = 0;
  if (Global->_STEPNO_AUX == Global->_STEPNO) return;
  mpf_set(terms[0], result);
  mpf_set(value, result);
}

void Differential::Result(mpf_t& out, bool)
{
  const int termCount = Global->_NTERMS;
  const int smallTermsWanted = Global->_ZEROTERMS;
  mpf_set(out, Global->_ZERO);
  int k = 0;
  int smallTerms = 0;
  while (k < termCount && smallTerms < smallTermsWanted) {
    const mpf_srcptr term = Term(k);
    mpf_add(out, out, term);
    RequireRange(out);

    // small: |term| < |sum * accuracy|; a sum of 0 makes no term small, not even 0
    if (!IsBelowProduct(term, out, Global->_ACCURACY)) {
      smallTerms = 0;
    } else if (!Global->_USEALLTERMS || k >= termCount - smallTermsWanted) {
      ++smallTerms;
    }
    ++k;
  }
  const int used = k - smallTerms;
  if (used > Global->_WORK0) Global->_WORK0 = used;
}

void Differential::MakeDerivative()
{
  derivative = rightHandSide;
}

void Differential::GetInitValue(mpf_t& out)
{
  mpf_set(out, value);
}

Expr::Ref Differential::ConvertExpr()
{
  return Ref(this);
}

void Differential::Print(std::ostream& out) const
{
  out << '[' << name << ']';
}

void Differential::DumpTree(std::ostream& out) const
{
  out << tag::kTreeDump << "DIF: \t" << name << "' = ";
  rightHandSide->Print(out);
  out << " & " << value << ';' << std::endl;
}

void Differential::LastTerm(int& k, mpf_t& out) const
{
  k = valid - 1;
  if (k >= 0) mpf_set(out, terms[k]);
}

void Differential::SetRightHandSide(Ref expression)
{
  rightHandSide = std::move(expression);
}

void Differential::SetStartValue(mpf_srcptr start)
{
  mpf_set(value, start);
  mpf_set(result, start);
  mpf_set(initValue, start);
}

}  // namespace varno
