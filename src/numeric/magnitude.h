#pragma once

#include <cstdlib>

#include <gmp.h>

namespace varno {

/// The absolute value of a number, by reference: a view of its digits without the sign, for
/// comparisons. It must not outlive the number.
class Magnitude {
 public:
  explicit Magnitude(mpf_srcptr x) : view{*x} { view->_mp_size = std::abs(view->_mp_size); }
  operator mpf_srcptr() const { return view; }

 private:
  mpf_t view;
};

}  // namespace varno
