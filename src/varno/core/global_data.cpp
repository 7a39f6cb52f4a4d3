#include "varno/core/global_data.h"

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

#include "varno/sys/memory.h"
#include "varno/sys/number_checks.h"

namespace varno {

namespace {

/// Pi to 559 decimals.
constexpr const char* kPi =
    "3."
    "14159265358979323846264338327950288419716939937510582097494459230781640628620899"
    "86280348253421170679821480865132823066470938446095505822317253594081284811174502"
    "84102701938521105559644622948954930381964428810975665933446128475648233786783165"
    "27120190914564856692346034861045432664821339360726024914127372458700660631558817"
    "48815209209628292540917153643678925903600113305305488204665213841469519415116094"
    "33057270365759591953092186117381932611793105118548074462379962749567351885752724"
    "8912279381830119491298336733624406566430860213949463952247371907021798609437027";

}  // namespace

// How each number enters is part of its value: the step is the double nearest 0.1.
GlobalData::GlobalData()
    : _ACCURACY("1e-10"),
      _TMAX(1.0),
      _PERIODDERIV(0.0),
      _PRINTEVERY("0"),
      _ZERO(0.0),
      _ONE(1.0),
      _PI(kPi),
      _BIG("1e1000"),
      _NEGBIG("-1e1000"),
      _T(0.0),
      _STEP(0.1),
      _STIFFMIN(_BIG),
      _STIFFMAX(_NEGBIG)
{
  mpf_mul_ui(_PI_2, _PI, 2);
  mpf_div_ui(_HALF_PI, _PI, 2);
  ComputeLn2();
}

GlobalData::~GlobalData()
{
  std::vector<Expr::Ref> references;
  for (const auto& [name, variable] : _EQUATIONS) references.push_back(variable);
  while (!references.empty()) {
    const Expr::Ref node = std::move(references.back());
    references.pop_back();
    if (!node.IsEmpty()) node->ReleaseReferences(references);
  }
}

/// ln 2 = 2 artanh(1/3) = 2 (x + x^3/3 + x^5/5 + ...) with x = 1/3.
///
/// Stops when the sum moves by less than `_ACCURACY` or, with `_SIMPLIFYSMALL` off, no longer
/// moves. Abramowitz & Stegun, Handbook of Mathematical Functions, 4.1.27.
void GlobalData::ComputeLn2()
{
  Mpf a, q, sum, previous, change;
  mpf_div_ui(a, _ONE, 3);
  mpf_mul(q, a, a);
  mpf_mul_ui(a, a, 2);
  mpf_set(sum, a);
  unsigned long n = 1;
  bool converged = false;
  while (!converged) {
    mpf_set(previous, sum);
    n += 2;
    // a = a / 9, sum = sum + a / n
    mpf_mul(a, a, q);
    mpf_div_ui(change, a, n);
    mpf_add(sum, sum, change);

    mpf_sub(change, previous, sum);
    mpf_abs(change, change);
    converged = _SIMPLIFYSMALL ? mpf_cmp(change, _ACCURACY) < 0 : mpf_cmp(sum, previous) == 0;
  }
  mpf_set(_LN2, sum);
}

void GlobalData::SetTermCount(long count)
{
  if (count > INT_MAX) FailOutOfMemory();
  _NTERMS = static_cast<int>(std::max<long>(count, INT_MIN));
  _STEPDIV = TermArray();
  FillStepDiv();
}

void GlobalData::SetStep(double h)
{
  mpf_set_d(_STEP, h);
  FillStepDiv();
}

void GlobalData::SetStep(mpf_srcptr h)
{
  mpf_set(_STEP, h);
  FillStepDiv();
}

void GlobalData::FillStepDiv()
{
  if (_STEPDIV.IsEmpty()) _STEPDIV = MakeTermArray(_NTERMS);
  if (_NTERMS > 0) mpf_set(_STEPDIV[0], _ZERO);
  for (int k = 1; k < _NTERMS; ++k) {
    mpf_div_ui(_STEPDIV[k], _STEP, static_cast<unsigned long>(k));
  }
}

}  // namespace varno
