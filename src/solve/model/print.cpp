#include "solve/model/print.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

namespace varno::solve {

namespace {

/// A part that is used more than once gets a name when it has more operations than this.
constexpr std::uint32_t kMaxRepeated = 4;
/// No expression has more operations than this; what is longer is divided.
constexpr std::uint32_t kMaxOperations = 60;
/// The length at which a single expression is cut.
constexpr std::size_t kMaxLength = 2000;
/// Numbers with more characters are shortened.
constexpr std::size_t kMaxDigits = 60;
/// The longest decimals that are written without an exponent.
constexpr long kMaxPlainDigits = 20;

// How tightly operators bind
constexpr int kDisjunction = 1;
constexpr int kConjunction = 2;
constexpr int kNegation = 3;
constexpr int kComparison = 4;
constexpr int kSum = 5;
constexpr int kProduct = 6;
constexpr int kSign = 7;
constexpr int kPowerOf = 8;
constexpr int kAtom = 9;

std::string_view OperatorText(Operation operation)
{
  switch (operation) {
    case Operation::kAdd:
      return " + ";
    case Operation::kSubtract:
      return " - ";
    case Operation::kMultiply:
      return "*";
    case Operation::kDivide:
      return "/";
    case Operation::kLess:
      return " < ";
    case Operation::kLessOrEqual:
      return " <= ";
    case Operation::kAnd:
      return " and ";
    case Operation::kOr:
      return " or ";
    default:
      return "^";
  }
}

/// digits * 10^exponent, as people write it: 0.05, 120, 1e300, 1.5e-40; long ones shortened.
std::string DecimalText(std::string digits, long exponent)
{
  const std::size_t last = digits.find_last_not_of('0');
  exponent += static_cast<long>(digits.size() - last - 1);
  digits.resize(last + 1);

  const auto count = static_cast<long>(digits.size());
  const long point = count + exponent;  // how many digits stand before the point
  if (exponent >= 0 && point <= kMaxPlainDigits)
    return digits + std::string(static_cast<std::size_t>(exponent), '0');
  if (exponent < 0 && point > 0 && count <= kMaxPlainDigits) {
    return digits.substr(0, static_cast<std::size_t>(point)) + "." +
           digits.substr(static_cast<std::size_t>(point));
  }
  if (exponent < 0 && point <= 0 && count - point <= kMaxPlainDigits) {
    return "0." + std::string(static_cast<std::size_t>(-point), '0') + digits;
  }
  std::string text = digits.substr(0, 1);
  if (count > 1) text += "." + digits.substr(1, kMaxDigits);
  if (count > static_cast<long>(kMaxDigits)) text += "...";
  return text + "e" + std::to_string(point - 1);
}

/// Exactly, as a decimal where that ends, else as a fraction; long ones shortened.
std::string NumberText(const Rational& value)
{
  if (value == 0) return "0";
  const std::string sign = value < 0 ? "-" : "";
  const Integer two = 2, five = 5;
  Integer rest;
  const mp_bitcnt_t twos = mpz_remove(rest.get_mpz_t(), value.get_den_mpz_t(), two.get_mpz_t());
  const mp_bitcnt_t fives = mpz_remove(rest.get_mpz_t(), rest.get_mpz_t(), five.get_mpz_t());
  if (rest == 1) {
    const mp_bitcnt_t places = std::max(twos, fives);
    Integer scaled;
    mpz_ui_pow_ui(scaled.get_mpz_t(), 10, places);
    scaled = abs(value.get_num()) * scaled / value.get_den();
    return sign + DecimalText(scaled.get_str(), -static_cast<long>(places));
  }
  std::string text = value.get_str();
  if (text.size() > kMaxDigits) text = text.substr(0, kMaxDigits) + "...";
  return text;
}

/// How tightly the text of a node binds.
int BindingOf(const Graph& graph, NodeId id)
{
  switch (graph[id].operation) {
    case Operation::kOr:
      return kDisjunction;
    case Operation::kAnd:
      return kConjunction;
    case Operation::kNot:
      return kNegation;
    case Operation::kLess:
    case Operation::kLessOrEqual:
      return kComparison;
    case Operation::kAdd:
    case Operation::kSubtract:
      return kSum;
    case Operation::kMultiply:
    case Operation::kDivide:
      return kProduct;
    case Operation::kNegate:
      return kSign;
    case Operation::kPower:
      return kPowerOf;
    case Operation::kNumber: {
      const std::string text = NumberText(graph.Value(id));
      if (text.find('/') != std::string::npos) return text.front() == '-' ? kSum : kProduct;
      return text.front() == '-' ? kSign : kAtom;
    }
    default:
      return kAtom;
  }
}

/// Writes expressions with the names that parts have been given.
class Writer {
 public:
  Writer(const Model& model, std::vector<std::uint32_t> names)
      : model(model), names(std::move(names))
  {}

  /// The expression itself, even if it has a name. Iterative: what is still to be written waits on
  /// a stack.
  std::string Write(NodeId root, std::size_t maxLength = std::numeric_limits<std::size_t>::max())
  {
    std::string text;
    stack.clear();
    PushNode(root, kDisjunction, true);
    while (!stack.empty() && text.size() <= maxLength) {
      const Item item = stack.back();
      stack.pop_back();
      if (item.node == kText) {
        text += item.text;
      } else {
        Expand(item, text);
      }
    }
    if (text.size() > maxLength) text = text.substr(0, maxLength) + "...";
    return text;
  }

  static std::string NameText(std::uint32_t number) { return "$" + std::to_string(number); }

 private:
  static constexpr NodeId kText = UINT32_MAX;
  struct Item {
    NodeId node;
    int binding;  // how tightly the text must bind to stand without parentheses
    bool isRoot;
    std::string_view text;
  };

  void PushNode(NodeId node, int binding, bool isRoot = false)
  {
    stack.push_back({node, binding, isRoot, {}});
  }
  void PushText(std::string_view text) { stack.push_back({kText, 0, false, text}); }

  void Expand(const Item& item, std::string& text)
  {
    const Node& node = model.graph[item.node];
    if (!item.isRoot && item.node < names.size() && names[item.node] != 0) {
      text += NameText(names[item.node]);
      return;
    }
    const bool parenthesised = BindingOf(model.graph, item.node) < item.binding;
    if (parenthesised) {
      text += '(';
      PushText(")");
    }
    switch (node.operandCount) {
      case 0:
        text += LeafText(item.node);
        break;
      case 1:
        ExpandUnary(node, text);
        break;
      default:
        if (FunctionName(node.operation).empty()) {
          ExpandBinary(node);
        } else {
          ExpandCall(node, text);
        }
        break;
    }
  }

  std::string LeafText(NodeId id) const
  {
    const Node& node = model.graph[id];
    switch (node.operation) {
      case Operation::kNumber:
        return NumberText(model.graph.Value(id));
      case Operation::kPi:
        return "pi";
      case Operation::kTime:
        return "t";
      case Operation::kState:
        return model.states[node.index].name;
      default:
        return model.parameters[node.index].name;
    }
  }

  void ExpandUnary(const Node& node, std::string& text)
  {
    if (node.operation == Operation::kNegate) {
      text += '-';
      PushNode(node.operands[0], kSign);
    } else if (node.operation == Operation::kNot) {
      text += "not ";
      PushNode(node.operands[0], kNegation);
    } else {
      ExpandCall(node, text);
    }
  }

  /// Conditions may stand in calls without parentheses.
  void ExpandCall(const Node& node, std::string& text)
  {
    text += FunctionName(node.operation);
    text += '(';
    PushText(")");
    for (int i = node.operandCount - 1; i >= 0; --i) {
      PushNode(node.operands[i], kDisjunction);
      if (i > 0) PushText(", ");
    }
  }

  void ExpandBinary(const Node& node)
  {
    int left = kSum;
    int right = kProduct;
    if (node.operation == Operation::kLess || node.operation == Operation::kLessOrEqual) {
      left = right = kSum;
    } else if (node.operation == Operation::kAnd) {
      left = kConjunction;
      right = kNegation;
    } else if (node.operation == Operation::kOr) {
      left = kDisjunction;
      right = kConjunction;
    } else if (node.operation == Operation::kMultiply || node.operation == Operation::kDivide) {
      left = kProduct;
      right = kPowerOf;
    } else if (node.operation == Operation::kPower) {
      left = kAtom;
      right = kPowerOf;
    }
    PushNode(node.operands[1], right);
    PushText(OperatorText(node.operation));
    PushNode(node.operands[0], left);
  }

  const Model& model;
  std::vector<std::uint32_t> names;  // by node; 0 for those without
  std::vector<Item> stack;
};

/// Chooses the parts that get names.
class Naming {
 public:
  explicit Naming(const Model& model)
      : names(model.graph.Size(), 0), graph(model.graph), uses(model.graph.Size(), 0)
  {
    for (const State& state : model.states) {
      Use(state.rightHandSide);
      Use(state.start);
    }
    for (const Parameter& parameter : model.parameters) Use(parameter.value);
    for (const Column& column : model.columns) Use(column.value);
    for (const Event& event : model.events) {
      Use(event.expression);
      for (const EventAssignment& assignment : event.assignments) Use(assignment.value);
    }
    CountUses();
    Choose();
  }

  std::vector<std::uint32_t> names;  // by node; 0 for those without
  std::vector<NodeId> named;         // each after those that it uses

 private:
  void Use(NodeId id)
  {
    if (id < uses.size()) ++uses[id];
  }

  void CountUses()
  {
    for (std::size_t id = graph.Size(); id-- > 0;) {
      if (uses[id] == 0) continue;
      const Node& node = graph[static_cast<NodeId>(id)];
      for (int i = 0; i < node.operandCount; ++i) Use(node.operands[i]);
    }
  }

  void Choose()
  {
    std::vector<std::uint32_t> size(graph.Size(), 0);  // operations, with a name counted as none
    for (NodeId id = 0; id < graph.Size(); ++id) {
      if (uses[id] == 0) continue;
      const Node& node = graph[id];
      if (node.operandCount == 0) continue;
      size[id] = 1;
      for (int i = 0; i < node.operandCount; ++i) size[id] += size[node.operands[i]];
      const bool isRepeated = uses[id] > 1 && size[id] > kMaxRepeated;
      if (isRepeated || size[id] > kMaxOperations) {
        named.push_back(id);
        names[id] = static_cast<std::uint32_t>(named.size());
        size[id] = 0;
      }
    }
  }

  const Graph& graph;
  std::vector<std::uint32_t> uses;
};

void AddLine(std::string& text, const std::string& left, const std::string& right)
{
  text += "  " + left + " = " + right + '\n';
}

/// "y falling stop { v = -v; }", from the texts of the parts.
template <class TextOf>
std::string EventText(const Model& model, const Event& event, TextOf textOf)
{
  std::string text = textOf(event.expression);
  if (event.crossing == Crossing::kRising) text += " rising";
  if (event.crossing == Crossing::kFalling) text += " falling";
  if (event.stops) text += " stop";
  if (event.assignments.empty()) return text;
  text += " {";
  for (const EventAssignment& assignment : event.assignments)
    text += " " + model.states[assignment.state].name + " = " + textOf(assignment.value) + ";";
  return text + " }";
}

}  // namespace

std::string PrintExpression(const Model& model, NodeId id)
{
  return Writer(model, {}).Write(id, kMaxLength);
}

std::string PrintModel(const Model& model)
{
  const Naming naming(model);
  Writer writer(model, naming.names);
  const auto textOf = [&](NodeId id) {
    if (id >= model.graph.Size()) return std::string("?");
    return naming.names[id] != 0 ? Writer::NameText(naming.names[id]) : writer.Write(id);
  };

  std::string text;
  if (!model.parameters.empty()) text += "parameters\n";
  for (const Parameter& parameter : model.parameters)
    AddLine(text, parameter.name, textOf(parameter.value));
  if (!naming.named.empty()) text += "shared parts\n";
  for (const NodeId id : naming.named)
    AddLine(text, Writer::NameText(naming.names[id]), writer.Write(id));
  text += "equations\n";
  for (const State& state : model.states)
    AddLine(text, state.name + "'", textOf(state.rightHandSide));
  text += "start values at t = " +
          (model.startPoint ? textOf(*model.startPoint) : std::string("the first time")) + '\n';
  for (const State& state : model.states) AddLine(text, state.name, textOf(state.start));
  text += "columns\n";
  for (const Column& column : model.columns) {
    const bool isState = column.value < model.graph.Size() &&
                         model.graph[column.value].operation == Operation::kState &&
                         model.states[model.graph[column.value].index].name == column.name;
    if (isState) {
      text += "  " + column.name + '\n';
    } else {
      AddLine(text, column.name, textOf(column.value));
    }
  }
  if (!model.events.empty()) text += "events\n";
  for (const Event& event : model.events)
    text += "  " + event.name + ": " + EventText(model, event, textOf) + '\n';
  return text;
}

}  // namespace varno::solve
