#include "solve/graph/graph.h"

#include <algorithm>
#include <optional>
#include <span>

#include "solve/graph/fold.h"

namespace varno::solve {

namespace {

/// Mixes a value into a hash, by the multiplier and the shifts of the finaliser of SplitMix64
/// (Steele, Lea and Flood, 2014).
std::size_t Mix(std::size_t hash, std::uint64_t value)
{
  std::uint64_t mixed = hash + 0x9E3779B97F4A7C15U + value;
  mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
  mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
  return static_cast<std::size_t>(mixed ^ (mixed >> 31));
}

std::size_t Mix(std::size_t hash, const Integer& number)
{
  const std::span limbs(mpz_limbs_read(number.get_mpz_t()), mpz_size(number.get_mpz_t()));
  for (const mp_limb_t limb : limbs) hash = Mix(hash, limb);
  return Mix(hash, static_cast<std::uint64_t>(mpz_sgn(number.get_mpz_t())));
}

std::size_t Hash(const Rational& number)
{
  return Mix(Mix(0, number.get_num()), number.get_den());
}

bool IsCommutative(Operation operation)
{
  return operation == Operation::kAdd || operation == Operation::kMultiply ||
         operation == Operation::kMin || operation == Operation::kMax;
}

}  // namespace

std::size_t Graph::KeyHash::operator()(const Key& key) const
{
  std::size_t hash = Mix(static_cast<std::size_t>(key.operation), key.index);
  for (const NodeId operand : key.operands) hash = Mix(hash, operand);
  return hash;
}

NodeId Graph::Number(const Rational& value, Place place)
{
  const std::size_t hash = Hash(value);
  const auto [begin, end] = knownNumbers.equal_range(hash);
  for (auto it = begin; it != end; ++it) {
    if (Value(it->second) == value) return it->second;
  }
  const auto id = static_cast<NodeId>(nodes.size());
  nodes.push_back({Operation::kNumber,
                   Dependence::kNothing,
                   0,
                   {},
                   static_cast<std::uint32_t>(numbers.size()),
                   place});
  numbers.push_back(value);
  knownNumbers.emplace(hash, id);
  return id;
}

NodeId Graph::Leaf(Operation operation, Place place)
{
  return Intern({operation, Dependence::kNothing, 0, {}, 0, place}, false);
}

NodeId Graph::State(std::uint32_t index, Place place)
{
  return Intern({Operation::kState, Dependence::kNothing, 0, {}, index, place}, false);
}

NodeId Graph::Parameter(std::uint32_t index, Place place)
{
  return Intern({Operation::kParameter, Dependence::kNothing, 0, {}, index, place}, false);
}

NodeId Graph::Make(Operation operation, NodeId a, Place place)
{
  if (IsNumber(a)) {
    if (const std::optional<Rational> value = FoldExactly(operation, Value(a)))
      return Number(*value, place);
  }
  // -(-x) = x
  if (operation == Operation::kNegate && nodes[a].operation == Operation::kNegate)
    return nodes[a].operands[0];
  return Intern({operation, Dependence::kNothing, 1, {a}, 0, place}, false);
}

NodeId Graph::Make(Operation operation, NodeId a, NodeId b, Place place)
{
  if (IsNumber(a) && IsNumber(b)) {
    if (const std::optional<Rational> value = FoldExactly(operation, Value(a), Value(b)))
      return Number(*value, place);
  }
  const auto is = [this](NodeId id, long value) { return IsNumber(id) && Value(id) == value; };
  switch (operation) {
    case Operation::kAdd:
      if (is(a, 0)) return b;
      if (is(b, 0)) return a;
      break;
    case Operation::kSubtract:
      if (is(b, 0)) return a;
      if (is(a, 0)) return Make(Operation::kNegate, b, place);
      break;
    case Operation::kMultiply:
      if (is(a, 1)) return b;
      if (is(b, 1)) return a;
      if (is(a, -1)) return Make(Operation::kNegate, b, place);
      if (is(b, -1)) return Make(Operation::kNegate, a, place);
      break;
    case Operation::kDivide:
      if (is(b, 1)) return a;
      if (is(b, -1)) return Make(Operation::kNegate, a, place);
      break;
    case Operation::kPower:
      if (is(b, 1)) return a;
      break;
    case Operation::kMin:
    case Operation::kMax:
      if (a == b) return a;
      break;
    case Operation::kAnd:
      if (IsNumber(a)) return is(a, 0) ? a : b;
      if (is(b, 1)) return a;
      break;
    case Operation::kOr:
      if (IsNumber(a)) return is(a, 0) ? b : a;
      if (is(b, 0)) return a;
      break;
    default:
      break;
  }
  return Intern({operation, Dependence::kNothing, 2, {a, b}, 0, place}, IsCommutative(operation));
}

NodeId Graph::Make(Operation operation, NodeId a, NodeId b, NodeId c, Place place)
{
  if (operation == Operation::kIf && IsNumber(a)) return Value(a) != 0 ? b : c;
  return Intern({operation, Dependence::kNothing, 3, {a, b, c}, 0, place}, false);
}

/// The node that there is already, or a new one. The operands keep the order of the first one
/// written.
NodeId Graph::Intern(Node node, bool commutative)
{
  Key key{node.operation, node.operands, node.index};
  if (commutative && key.operands[0] > key.operands[1]) std::swap(key.operands[0], key.operands[1]);
  const auto [entry, isNew] = known.try_emplace(key, static_cast<NodeId>(nodes.size()));
  if (isNew) {
    node.dependence = DependenceOf(node);
    nodes.push_back(node);
  }
  return entry->second;
}

Dependence Graph::DependenceOf(const Node& node) const
{
  if (node.operation == Operation::kTime) return Dependence::kTime;
  if (node.operation == Operation::kState) return Dependence::kStates;
  Dependence dependence = Dependence::kNothing;
  for (int i = 0; i < node.operandCount; ++i) {
    dependence = std::max(dependence, nodes[node.operands[i]].dependence);
  }
  return dependence;
}

}  // namespace varno::solve
