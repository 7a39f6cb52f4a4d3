#include "varno/expr/algebraic.h"

#include <ostream>
#include <utility>

#include "varno/core/global_data.h"
#include "varno/sys/messages.h"

namespace varno {

/// Ends the run when working out a variable leads back to the same variable.
class Algebraic::ScopedVisit {
 public:
  explicit ScopedVisit(Algebraic& variable) : variable(variable)
  {
    if (variable.visited) Fail("Algebraic equation \"" + variable.name + "\" depends on itself");
    variable.visited = true;
  }
  ~ScopedVisit() { variable.visited = false; }
  ScopedVisit(const ScopedVisit&) = delete;
  ScopedVisit& operator=(const ScopedVisit&) = delete;

 private:
  Algebraic& variable;
};

Algebraic::Algebraic(std::string name, Ref rightHandSide)
    : Differential(kAlgebraic, false, std::move(name), std::move(rightHandSide))
{}

void Algebraic::GetDY(int, mpf_t&)
{
  Fail("virtual void Algebraic::GetDY(int, __mpf_struct (&)[1]) called!!!");
}

void Algebraic::ResetTerms()
{
  if (termStamp == Global->_STEPNO) return;
  termStamp = Global->_STEPNO;
  mpf_set(value, result);
}

void Algebraic::Result(mpf_t& out, bool)
{
  // Variables that refer to one another in a circle do not hang here: Value stamps a variable
  // before it asks for the right-hand side, and the second request gets the last value.
  rightHandSide->Value(out);
}

void Algebraic::MakeDerivative()
{
  const ScopedVisit visit(*this);
  derivative = rightHandSide->Derivative();
}

TermRow Algebraic::Terms(int)
{
  ResetTerms();
  return {value, 1};
}

void Algebraic::GetInitValue(mpf_t& out)
{
  const ScopedVisit visit(*this);
  rightHandSide->InitValue(out);
}

void Algebraic::Print(std::ostream& out) const
{
  out << '{' << name << '}';
}

void Algebraic::DumpTree(std::ostream& out) const
{
  out << tag::kTreeDump << "ALG: \t" << name << " = ";
  rightHandSide->Print(out);
  out << ';' << std::endl;
}

void Algebraic::LastTerm(int& k, mpf_t&) const
{
  k = -1;
}

}  // namespace varno
