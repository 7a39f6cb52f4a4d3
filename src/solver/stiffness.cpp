#include "solver/stiffness.h"

#include <cstdlib>
#include <iostream>
#include <string>

#include "config/global_data.h"
#include "expr/differential.h"
#include "numeric/mpf.h"
#include "numeric/scratch.h"
#include "sys/messages.h"

namespace varno {

namespace {

constexpr const char* kNoSmallest = "1e1000";
constexpr const char* kNoLargest = "-1e1000";

long BinaryExponent(mpf_srcptr number)
{
  long exponent = 0;
  mpf_get_d_2exp(&exponent, number);
  return exponent;
}

}  // namespace

void ResetStiffnessMeasures()
{
  Expr::Global->_STIFFMIN = Mpf(kNoSmallest);
  Expr::Global->_STIFFMAX = Mpf(kNoLargest);
}

bool TestStiffness()
{
  GlobalData& global = *Expr::Global;
  Mpf& smallest = global._STIFFMIN;
  Mpf& largest = global._STIFFMAX;
  std::string smallestName;
  std::string largestName;
  mpf_set_str(smallest, kNoSmallest, 10);
  mpf_set_str(largest, kNoLargest, 10);

  Mpf& size = Scratch();
  for (const auto& [name, entry] : global._EQUATIONS) {
    int index = 0;
    VariableOf(entry).LastTerm(index, size);
    if (index <= 0) continue;
    mpf_abs(size, size);
    if (mpf_cmp(size, smallest) < 0) {
      mpf_set(smallest, size);
      smallestName = name;
    }
    if (mpf_cmp(size, largest) > 0) {
      mpf_set(largest, size);
      largestName = name;
    }
  }

  const long largestExponent = BinaryExponent(largest);
  const long smallestExponent = BinaryExponent(smallest);
  const long difference = std::labs(largestExponent - smallestExponent);
  const bool stiff = difference > global._STIFFEXPDIFF;
  if (stiff) std::clog << tag::kSolver << "System is STIFF!" << std::endl;
  std::clog << tag::kStiffnessTest << "Max(" << largestName << ")=" << largestExponent << "  Min("
            << smallestName << ")=" << smallestExponent << "  Diff=" << difference << std::endl;
  return stiff;
}

}  // namespace varno
