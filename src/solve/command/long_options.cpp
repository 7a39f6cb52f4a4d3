#include "solve/command/long_options.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include <CLI/App.hpp>

#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

struct LongOption {
  std::string name;  ///< with its two hyphens
  bool takesValue;
};

std::vector<LongOption> LongOptions(const CLI::App& app)
{
  std::vector<LongOption> options;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      options.push_back({"--" + name, option->get_items_expected_max() > 0});
    }
  }
  return options;
}

/// How many characters must be inserted, taken away, replaced or swapped with their neighbour to
/// make one text of the other (optimal string alignment).
std::size_t EditDistance(std::string_view a, std::string_view b)
{
  std::vector<std::vector<std::size_t>> distance(a.size() + 1,
                                                 std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        distance[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = a[i - 1] == b[j - 1] ? 0 : 1;
      std::size_t best = std::min(distance[i - 1][j], distance[i][j - 1]) + 1;
      best = std::min(best, distance[i - 1][j - 1] + replaced);
      const bool areSwapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (areSwapped) best = std::min(best, distance[i - 2][j - 2] + 1);
      distance[i][j] = best;
    }
  }
  return distance[a.size()][b.size()];
}

/// A hint at the option whose name is near to a wrong one; empty when there is none.
std::string Hint(const std::vector<LongOption>& options, std::string_view name)
{
  constexpr std::size_t kMostEdits = 2;
  constexpr std::size_t kLongestName = 20;
  if (name.size() > kLongestName) return {};
  const LongOption* nearest = nullptr;
  std::size_t least = kMostEdits + 1;
  for (const LongOption& option : options) {
    const std::size_t edits = EditDistance(name, option.name);
    if (edits >= least || edits * 3 > option.name.size() - 2) continue;
    least = edits;
    nearest = &option;
  }
  return nearest == nullptr ? "" : "; did you mean " + nearest->name + "?";
}

/// The option that a name, perhaps an abbreviated one, stands for.
const LongOption& Find(const std::vector<LongOption>& options, std::string_view name)
{
  const auto exact = std::ranges::find(options, name, &LongOption::name);
  if (exact != options.end()) return *exact;

  const LongOption* found = nullptr;
  std::string candidates;
  for (const LongOption& option : options) {
    if (!option.name.starts_with(name)) continue;
    candidates += " " + option.name;
    found = &option;
  }
  if (found == nullptr) {
    throw UsageError("unknown option '" + std::string(name) + "'" + Hint(options, name));
  }
  if (candidates.find(' ', 1) != std::string::npos) {
    throw UsageError("option '" + std::string(name) + "' is ambiguous; it may be" + candidates);
  }
  return *found;
}

}  // namespace

std::vector<std::string> ExpandLongOptions(const CLI::App& app,
                                           const std::vector<std::string>& arguments)
{
  const std::vector<LongOption> options = LongOptions(app);
  std::vector<std::string> expanded, others;

  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--") {
      others.insert(others.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                    arguments.end());
      break;
    }
    if (argument == "-" || !argument.starts_with('-')) {
      others.push_back(argument);
      continue;
    }
    if (!argument.starts_with("--")) {
      throw UsageError("unknown option '" + argument +
                       "'; options are written in full, as in --digits 30");
    }

    const std::size_t equals = argument.find('=');
    const LongOption& option = Find(options, std::string_view(argument).substr(0, equals));
    expanded.push_back(option.name);
    if (!option.takesValue) {
      if (equals != std::string::npos) throw UsageError(option.name + " takes no value");
    } else if (equals != std::string::npos) {
      expanded.push_back(argument.substr(equals + 1));
    } else if (i + 1 < arguments.size()) {
      expanded.push_back(arguments[++i]);
    } else {
      throw UsageError(option.name + " needs a value");
    }
  }

  expanded.emplace_back("--");
  expanded.insert(expanded.end(), others.begin(), others.end());
  return expanded;
}

}  // namespace varno::solve
