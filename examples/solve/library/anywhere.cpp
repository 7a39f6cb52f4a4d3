// A pendulum let go at 2 radians: how often it swings through the vertical within 20 units of time,
// and when first, found in the solution between the rows; then the Taylor series that it begins
// with.

#include <exception>
#include <iostream>
#include <string>

#include <varno/solve.h>

namespace {

using namespace varno::solve;

/// Halves the interval until it is as short as doubles can be.
double RootBetween(Solution& solution, double low, double high)
{
  const auto angleAt = [&](double t) { return solution.At(t).row.values[0].ToDouble(); };
  const bool falls = angleAt(low) > 0;
  while (true) {
    const double middle = low + (high - low) / 2;
    if (middle == low || middle == high) return middle;
    ((angleAt(middle) > 0) == falls ? low : high) = middle;
  }
}

}  // namespace

int main()
{
  try {
    const Problem problem = Problem::Parse("a'' = -sin(a); a(0) = 2;", "pendulum");
    Options options{.to = "20", .rows = RowAtEnd{}, .digits = 20, .keepSteps = true};
    long calls = 0;
    options.step = [&](const Step&) { ++calls; };
    Solution solution(problem, options);
    while (solution.Next()) {
    }

    int swings = 0;
    for (int t = 0; t < 20; ++t) {
      const double before = solution.At(t).row.values[0].ToDouble(),
                   after = solution.At(t + 1).row.values[0].ToDouble();
      if (before * after > 0) continue;
      if (swings++ > 0) continue;
      std::cout.precision(12);
      std::cout << "first at t = " << RootBetween(solution, t, t + 1) << '\n';
    }
    std::cout << "swings: " << swings << '\n';

    const PointBetween third = solution.At("1/3");
    std::cout << "a(" << third.row.time.Text() << ") = " << third.row.values[0].Text()
              << (third.verified ? ", verified\n" : ", not verified\n");

    const Step first = solution.Steps().front();
    for (int k = 0; k <= 4; ++k)
      std::cout << "term " << k << ": " << first.Coefficient(0, k).Text() << '\n';
    std::cout << "called after each step of both runs: "
              << (calls > static_cast<long>(solution.Steps().size()) ? "yes\n" : "no\n");
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
