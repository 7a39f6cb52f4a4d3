#include <utility>

#include "solve/library/problem_data.h"
#include "solve/library/solution_data.h"
#include "solve/library/solve.h"
#include "solve/number/exponent_range.h"

namespace varno::solve {

Solution::Solution(const Problem& problem, Options options)
{
  const ScopedExponentRange range;
  const Problem::Implementation& given = *problem.implementation;
  CompiledProblem compiled(given.sources, given.model, options);
  implementation = std::make_unique<Implementation>(std::move(compiled), std::move(options));
}
Solution::Solution(std::unique_ptr<Implementation> implementation)
    : implementation(std::move(implementation))
{}

Solution::Solution(Solution&&) noexcept = default;
Solution& Solution::operator=(Solution&&) noexcept = default;
Solution::~Solution() = default;

const std::vector<std::string>& Solution::Columns() const
{
  return implementation->names;
}

int Solution::TimeWidth() const
{
  return implementation->schedule.Width(implementation->timeFormat);
}

std::optional<Row> Solution::Next()
{
  return implementation->Next();
}

Summary Solution::Summarise() const
{
  return implementation->Summarise();
}

std::string Solution::Explain() const
{
  return implementation->Explain();
}

std::string_view Version()
{
  return "1.0";
}

}  // namespace varno::solve
