#include "solve/model/number_literal.h"

#include <algorithm>
#include <string>

namespace varno::solve {

namespace {

/// digits * 10^exponent
struct Decimal {
  std::string digits;
  Integer exponent;
};

Decimal Split(std::string_view text)
{
  Decimal decimal;
  const std::size_t mark = text.find_first_of("eE");
  if (mark != std::string_view::npos) {
    std::string_view exponent = text.substr(mark + 1);
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    // 20 digits are as good as more: the exponent is too large anyway.
    const bool negative = exponent.starts_with('-');
    if (negative) exponent.remove_prefix(1);
    exponent.remove_prefix(std::min(exponent.find_first_not_of('0'), exponent.size()));
    if (!exponent.empty()) decimal.exponent = std::string(exponent.substr(0, 20));
    if (negative) decimal.exponent = -decimal.exponent;
  }
  const std::string_view mantissa = text.substr(0, mark);
  const std::size_t point = mantissa.find('.');
  decimal.digits = mantissa.substr(0, point);
  if (point != std::string_view::npos) {
    const std::string_view fraction = mantissa.substr(point + 1);
    decimal.digits += fraction;
    decimal.exponent -= static_cast<long>(fraction.size());
  }
  return decimal;
}

}  // namespace

std::optional<NodeId> AddNumber(Graph& graph, std::string_view text, Place place)
{
  const Decimal decimal = Split(text);
  const Integer digits(decimal.digits, 10);
  if (digits == 0) return graph.Number(0, place);
  if (abs(decimal.exponent) > kMaxDecimalExponent) return std::nullopt;

  const Integer size = abs(decimal.exponent);
  if (size > 1000 + 4 * static_cast<long>(decimal.digits.size())) {
    const NodeId power = graph.Make(Operation::kPower, graph.Number(10, place),
                                    graph.Number(Rational(decimal.exponent), place), place);
    return graph.Make(Operation::kMultiply, graph.Number(Rational(digits), place), power, place);
  }
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, size.get_ui());
  Rational value = decimal.exponent >= 0 ? Rational(digits * power) : Rational(digits, power);
  value.canonicalize();
  return graph.Number(value, place);
}

}  // namespace varno::solve
