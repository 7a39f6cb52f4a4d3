#pragma once

#include <vector>

namespace varno::solve {

/// How the difference between two runs grows along the way: what the problem costs in digits.
///
/// Where errors grow exponentially, each stretch of the way costs as many digits as the one before;
/// where they grow like a power of the time, each doubling of the way does; a close encounter costs
/// them once. What the rest of the way will cost is judged by the latter half of the way so far.
class Loss {
 public:
  /// The runs differ by 10^decimals of a state's size at this distance from the start. Distances
  /// must not fall.
  void Add(double distance, double decimals);

  /// How many decimals the difference has grown by so far.
  double SoFar() const;
  /// How many more it will have grown by at a distance ahead, if it goes on as in the latter half.
  double Ahead(double distance) const;
  /// Whether it has grown so long and so steadily that `Ahead` is to be trusted.
  bool IsSteady() const;

 private:
  struct Sample {
    double distance;
    double decimals;  ///< the largest difference until there
  };

  double At(double distance) const;
  double LatterHalf() const;
  bool IsExponential() const;
  void Keep();

  std::vector<Sample> samples;  // the first, and one out of each `stride`
  Sample latest = {0, 0};
  double latestLength = 0;  // between the latest samples
  int stride = 1;
  int skipped = 0;
};

}  // namespace varno::solve
