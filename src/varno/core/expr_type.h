#pragma once

namespace varno {

/// The kind of a node. The values are part of the messages about unknown kinds.
enum ExprType : int {
  kNothing = 0,
  kPlus = 1,
  kMinus = 2,
  kMultiply = 3,
  kDivide = 4,
  kUnMinus = 5,
  kNumber = 6,
  kTime = 7,
  kDifferential = 8,
  kAlgebraic = 9,
  kEquation = 10,
  kSin = 11,
  kCos = 12,
  kTan = 13,
  kCotan = 14,
  kASin = 15,
  kACos = 16,
  kATan = 17,
  kACotan = 18,
  kSinh = 19,
  kCosh = 20,
  kTanh = 21,
  kCotanh = 22,
  kASinh = 23,
  kACosh = 24,
  kATanh = 25,
  kACotanh = 26,
  kSqrt = 27,
  kExp = 28,
  kLn = 29,
  kTrunc = 30,
};

}  // namespace varno
