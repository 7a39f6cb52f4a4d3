#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace varno::solve {

/// Brings arguments into the plain form that CLI11 reads without conditions, and adds what GNU
/// programs understand besides:
///
/// - an option may be abbreviated as long as it stays unique: --dig 30;
/// - its value may follow after "=" or as the next argument, whatever that looks like: --to -5;
/// - what comes after "--" is no option.
///
/// Options come out under their full names, each followed by its value as an argument of its own,
/// then "--" and the other arguments. Throws UsageError.
std::vector<std::string> ExpandLongOptions(const CLI::App& app,
                                           const std::vector<std::string>& arguments);

}  // namespace varno::solve
