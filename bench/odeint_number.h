#pragma once

#include <boost/multiprecision/gmp.hpp>
#include <boost/numeric/odeint.hpp>

namespace varno {

/// GMP's mpf_t as a number for Boost.Odeint, with as many digits as are its default at the time.
using Multiprecision = boost::multiprecision::number<boost::multiprecision::gmp_float<0>,
                                                     boost::multiprecision::et_off>;

}  // namespace varno

namespace boost::numeric::odeint::detail {

// Odeint looks for the numbers inside of whatever has a value_type, as this number has.
template <>
struct extract_value_type<varno::Multiprecision, void> {
  using type = varno::Multiprecision;
};

}  // namespace boost::numeric::odeint::detail
