#include "varno/solver/stiffness.h"

#include <iostream>
#include <string_view>

#include "arith/magnitude.h"
#include "arith/mpf.h"
#include "arith/scratch.h"
#include "arith/wide_integer.h"
#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/sys/messages.h"

namespace varno {

using arith::BinaryExponent;
using arith::Magnitude;
using arith::Mpf;
using arith::Scratch;
using arith::ToText;
using arith::WideInteger;

namespace {

/// The values that stand for "none".
struct NoMeasures {
  Mpf smallest{"1e1000"};
  Mpf largest{"-1e1000"};
};

/// At the precision in force.
const NoMeasures& None()
{
  static NoMeasures none;
  if (mpf_get_prec(none.smallest) != mpf_get_default_prec()) none = NoMeasures();
  return none;
}

}  // namespace

void ResetStiffnessMeasures()
{
  Expr::Global->_STIFFMIN = None().smallest;
  Expr::Global->_STIFFMAX = None().largest;
}

bool TestStiffness()
{
  Mpf& smallest = Expr::Global->_STIFFMIN;
  Mpf& largest = Expr::Global->_STIFFMAX;
  std::string_view smallestName;
  std::string_view largestName;
  mpf_set(smallest, None().smallest);
  mpf_set(largest, None().largest);

  Mpf& lastTerm = Scratch();
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) {
    int index = 0;
    VariableOf(entry).LastTerm(index, lastTerm);
    if (index <= 0) continue;
    const Magnitude size(lastTerm);
    if (mpf_cmp(size, smallest) < 0) {
      mpf_set(smallest, size);
      smallestName = name;
    }
    if (mpf_cmp(size, largest) > 0) {
      mpf_set(largest, size);
      largestName = name;
    }
  }

  const WideInteger largestExponent = BinaryExponent(largest);
  const WideInteger smallestExponent = BinaryExponent(smallest);
  const WideInteger difference = largestExponent < smallestExponent
                                     ? smallestExponent - largestExponent
                                     : largestExponent - smallestExponent;
  const bool stiff = difference > Expr::Global->_STIFFEXPDIFF;
  if (stiff) std::clog << tag::kSolver << "System is STIFF!" << std::endl;
  std::clog << tag::kStiffnessTest << "Max(" << largestName << ")=" << ToText(largestExponent)
            << "  Min(" << smallestName << ")=" << ToText(smallestExponent)
            << "  Diff=" << ToText(difference) << std::endl;
  return stiff;
}

}  // namespace varno
