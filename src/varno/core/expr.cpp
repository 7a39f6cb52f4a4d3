#include "varno/core/expr.h"

#include <cassert>
#include <stdexcept>
#include <utility>
#include <vector>

#include "arith/magnitude.h"
#include "arith/scratch.h"
#include "varno/core/global_data.h"
#include "varno/core/nothing_expr.h"
#include "varno/sys/messages.h"
#include "varno/sys/number_checks.h"
#include "varno/sys/stack_guard.h"

namespace varno {

using arith::Magnitude;
using arith::Scratch;

// In this order: nodes read the record when they are built. Both live as long as the process.
GlobalData* Expr::Global = new GlobalData;
Expr* Expr::Nothing = new NothingExpr;

Expr::Expr(ExprType type, bool withTerms)
    : valueStamp(Global->_STEPNO - 1),
      type(type),
      hasTerms(withTerms),
      termStamp(Global->_STEPNO - 1)
{}

namespace {

/// The empty node stands for itself in its own handles.
Expr* EmptyNode(Expr* first)
{
  if (Expr::Nothing == nullptr) Expr::Nothing = first;
  return Expr::Nothing;
}

}  // namespace

Expr::Expr()
    : valueStamp(Global->_STEPNO - 1),
      type(kNothing),
      converted(EmptyNode(this)),
      hasTerms(false),
      termStamp(Global->_STEPNO - 1),
      derivative(EmptyNode(this))
{}

void Expr::Ref::Drop(Expr* node) noexcept
{
  if (--node->refs > 0) return;
  // The children of a dying node are queued instead of deleted on the spot, so that a tree of any
  // depth goes without recursion.
  static std::vector<Expr*> dying;
  static bool draining = false;
  dying.push_back(node);
  if (draining) return;
  draining = true;
  while (!dying.empty()) {
    const Expr* const next = dying.back();
    dying.pop_back();
    delete next;
  }
  draining = false;
}

void Expr::PrepareTerms()
{
  if (terms.IsEmpty()) terms = MakeTermArray(keepsLatestTermOnly ? 0 : Global->_NTERMS);
}

void Expr::ResetTerms()
{
  if (termStamp == Global->_STEPNO) return;
  termStamp = Global->_STEPNO;
  valid = -1;
}

void Expr::UpdateTerm(int k, int place)
{
  CheckStack();
  if (termStamp != Global->_STEPNO) ResetTerms();
  if (k > Global->_NTERMS) throw std::overflow_error("Order overflow");
  if (!hasTerms) {
    Fail(
        "An expression without a value was used (a step function, or a derivative that does not "
        "exist)");
  }
  if (k > valid) {
    PrepareTerms();
    GetDY(k, terms[place]);
    RequireRange(terms[place]);
    valid = k;
  }
}

TermRow Expr::Terms(int k)
{
  assert(!keepsLatestTermOnly);
  UpdateTerm(k, k);
  return {terms.Data(), k + 1};
}

void Expr::ReleaseReferences(std::vector<Ref>& released)
{
  released.push_back(std::move(derivative));
  released.push_back(std::move(converted));
  for (Ref& operand : Operands()) released.push_back(std::move(operand));
}

mpf_srcptr Expr::Term(int k)
{
  if (keepsLatestTermOnly) {
    UpdateTerm(k, 0);
    return terms[0];
  }
  const TermRow row = Terms(k);
  return 0 <= k && k < row.count ? row.terms + k : static_cast<mpf_srcptr>(Global->_ZERO);
}

void Expr::GetTerm(int k, mpf_t& out)
{
  mpf_set(out, Term(k));
}

mpf_srcptr Expr::Value()
{
  CheckStack();
  ResetTerms();
  if (valueStamp != Global->_STEPNO || Global->_RESET_FLAG) {
    Global->_RESET_FLAG = false;
    valueStamp = Global->_STEPNO;
    Result(result, true);
    steady = false;
    if (Global->_STEADYSTOP != 0) {
      Mpf& change = Scratch();
      mpf_sub(change, value, result);
      steady = mpf_cmp(Magnitude(change), Global->_ACCURACY) < 0;
    }
  }
  return result;
}

void Expr::Value(mpf_t& out)
{
  mpf_set(out, Value());
}

void Expr::InitValue(mpf_t& out)
{
  CheckStack();
  GetInitValue(initValue);
  mpf_set(out, initValue);
}

const Expr::Ref& Expr::Derivative()
{
  CheckStack();
  if (derivative.IsEmpty()) MakeDerivative();
  return derivative;
}

Expr::Ref Expr::Convert()
{
  CheckStack();
  converted = Ref();
  // What once stands for itself always does. Not to walk it again keeps functions nested n deep,
  // whose derivatives share nodes, from 2^n visits.
  if (standsForItself) return Ref(this);
  Ref replacement = ConvertExpr();
  standsForItself = &*replacement == this;
  if (!standsForItself) converted = replacement;
  return replacement;
}

}  // namespace varno
