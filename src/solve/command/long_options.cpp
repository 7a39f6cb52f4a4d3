#include "solve/command/long_options.h"

#include <CLI/App.hpp>
#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

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
  if (found == nullptr) throw UsageError("unknown option '" + std::string(name) + "'");
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
