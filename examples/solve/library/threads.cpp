// Several solutions at the same time, each on a thread of its own: y' = rate*y to t = 1 for four
// rates, with 30 digits.

#include <cstddef>
#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <varno/solve.h>

namespace {

using namespace varno::solve;

/// The last value as text, or what went wrong: an exception must not leave a thread.
std::string LastValue(const Problem& problem, const std::string& rate)
{
  try {
    Solution solution(problem.With({"rate=" + rate}),
                      {.rows = RowAtEnd{}, .digits = 30, .jobs = 1});
    return solution.Next()->values[0].Text();
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

int main()
{
  const Problem problem = Problem::Parse("rate = 1; y' = rate*y & 1;", "growth");
  const std::vector<std::string> rates{"-1", "1/2", "1", "ln(2)"};
  std::vector<std::string> results(rates.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < rates.size(); ++i)
    threads.emplace_back([&, i] { results[i] = LastValue(problem, rates[i]); });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < rates.size(); ++i)
    std::cout << rates[i] << ": " << results[i] << '\n';
}
