#pragma once

#include <iosfwd>
#include <vector>

#include <gmp.h>

#include "arith/mpf.h"
#include "arith/term_array.h"
#include "varno/core/expr_type.h"

namespace varno {

using arith::Mpf;
using arith::TermArray;

struct GlobalData;

/// The terms 0..k of an expression, by reference: `count` numbers, and zeros from there on.
struct TermRow {
  mpf_srcptr terms;
  int count;
};

class OperandHandles;

/// A node of an expression tree.
///
/// A node gives, on request, its Taylor terms for the current step (term k is h^k u^(k)(t) / k!, so
/// that the value at the end of the step is the plain sum of the terms), its value at the end of
/// the step, its value at the initial time, its symbolic derivative by time, and the form without
/// elementary functions that stands for it during the integration. Terms and value are cached under
/// the step counter `_STEPNO`: raising the counter invalidates the caches of all nodes at once.
class Expr {
 public:
  /// A counted handle of a node. It is never null: an empty handle points at Expr::Nothing. Nodes
  /// are shared freely and held through handles only; the last handle to go deletes the node.
  class Ref {
   public:
    Ref() noexcept : Ref(nullptr) {}
    /// Takes part in the ownership of `node`; null gives an empty handle.
    explicit Ref(Expr* node) noexcept : node(node != nullptr ? node : Nothing)
    {
      ++this->node->refs;
    }
    /// A node of a unary kind over a; a number is folded into a new number. Ends the run with a
    /// message when the kind is not unary.
    Ref(ExprType type, const Ref& a);
    /// A node of a binary kind over a and b; two numbers are folded into a new number and, with
    /// `_SIMPLIFYSMALL`, operands near 0 and 1 are simplified away. Ends the run with a message
    /// when the kind is not binary.
    Ref(ExprType type, const Ref& a, const Ref& b);

    Ref(const Ref& other) noexcept : Ref(other.node) {}
    /// Leaves the other handle empty.
    Ref(Ref&& other) noexcept : node(other.node)
    {
      other.node = Nothing;
      ++Nothing->refs;
    }
    /// Takes the new node before it drops the old one, which may hold the new one.
    Ref& operator=(Ref other) noexcept
    {
      Expr* const old = node;
      node = other.node;
      other.node = old;
      return *this;
    }
    ~Ref() { Drop(node); }

    Expr* operator->() const { return node; }
    Expr& operator*() const { return *node; }
    bool IsEmpty() const { return node == Nothing; }
    /// Equality of handles is identity of nodes.
    friend bool operator==(const Ref& a, const Ref& b) { return a.node == b.node; }

   private:
    static void Drop(Expr* node) noexcept;

    Expr* node;
  };

  /// The record of settings and state that all nodes read.
  static GlobalData* Global;
  /// The one empty expression; it stands wherever there is none.
  static Expr* Nothing;

  /// A node that has terms 0..`_NTERMS`, or one without terms.
  Expr(ExprType type, bool withTerms);
  virtual ~Expr() = default;
  Expr(const Expr&) = delete;
  Expr& operator=(const Expr&) = delete;

  /// Computes Taylor term k afresh. Only Terms calls it.
  virtual void GetDY(int k, mpf_t& out) = 0;
  /// On the first call under a step number: forgets the terms of the step before.
  virtual void ResetTerms();
  /// Computes the value at the end of the step afresh. Only Value calls it; the flag is not used.
  virtual void Result(mpf_t& out, bool) = 0;
  /// Builds `derivative`, where the kind of node has one.
  virtual void MakeDerivative() = 0;
  /// Terms 0..k of the current step, k >= 0, each computed at most once per step; they stay as they
  /// are until the step is over. Terms are to be asked for in increasing order. Throws
  /// std::overflow_error("Order overflow") when k exceeds `_NTERMS`; ends the run with a message
  /// when the node has no terms.
  virtual TermRow Terms(int k);
  /// The value at the initial time, from the operands' initial values.
  virtual void GetInitValue(mpf_t& out) = 0;
  /// The expression that replaces this one in the integration: elementary functions become
  /// variables of auxiliary equations, references become the variables that they name.
  virtual Ref ConvertExpr() = 0;
  /// Writes the expression, fully parenthesised.
  virtual void Print(std::ostream& out) const = 0;
  /// The handles of the expressions that the node is made of, from left to right; those of a
  /// variable are its right-hand side. Whatever walks the nodes, or takes another node in place of
  /// an operand, does it by these.
  virtual OperandHandles Operands() = 0;

  /// Moves all handles that the node holds to the list, so that nodes which refer to one another
  /// can be deleted. Nothing else may be asked of the node afterwards.
  virtual void ReleaseReferences(std::vector<Ref>& released);

  /// Term k of the current step: a copy of the last of Terms(k).
  void GetTerm(int k, mpf_t& out);
  /// Term k of the current step by reference.
  mpf_srcptr Term(int k);
  /// The value at the end of the current step, computed at most once per step unless `_RESET_FLAG`
  /// asks for a new computation.
  mpf_srcptr Value();
  void Value(mpf_t& out);
  /// GetInitValue, through `initValue`: a node that leaves its value alone gives 0.
  void InitValue(mpf_t& out);
  /// The symbolic derivative by time, built at the first request; empty where there is none.
  const Ref& Derivative();
  /// ConvertExpr, with the result kept in `converted`. Converts afresh on every call.
  Ref Convert();

  ExprType Type() const { return type; }
  /// Makes the node keep its latest term only; to be called before a term is computed. It is for an
  /// operation, not a quotient, that is asked for each term once, in order, and by Term: Terms must
  /// not be called then.
  void KeepLatestTermOnly() { keepsLatestTermOnly = true; }
  bool KeepsLatestTermOnly() const { return keepsLatestTermOnly; }

  /// Whether the node has no other term than term 0.
  bool IsConstantOverStep() const { return type == kNumber || type == kAlgebraic; }
  /// Whether the last value moved by less than `_ACCURACY`; false while `_STEADYSTOP` is 0.
  bool IsSteady() const { return steady; }
  /// The number of Taylor terms cached for the current step.
  int CachedTerms() const { return valid + 1; }
  /// The handles that point at the node.
  int RefCount() const { return refs; }

 private:
  /// Computes term k, unless it is there, and keeps it at `place`.
  void UpdateTerm(int k, int place);

  /// Stands first: the handles among the members below may point at the node itself.
  int refs = 0;
  int valueStamp;  ///< step number under which `result` was computed
  ExprType type;
  /// Empty when the node stands for itself: a handle to itself would keep it alive for ever.
  Ref converted;
  bool standsForItself = false;  ///< seen by Convert; never reset
  bool steady = false;
  const bool hasTerms;
  bool keepsLatestTermOnly = false;

 protected:
  /// The empty node. The first node that is ever built is Expr::Nothing itself.
  Expr();

  /// Makes room for the terms when they are first needed: most nodes that conversion replaces never
  /// need them, and nodes that are computed one after the other get neighbouring places.
  void PrepareTerms();

  TermArray terms;  ///< terms of the current step, computed up to index `valid`; or that term only
  int valid = -1;
  int termStamp;  ///< step number under which `terms` are computed
  Mpf value;      ///< constant, or value at the start of the step
  Mpf result;     ///< value at the end of the step
  Mpf initValue;  ///< value at the initial time
  Ref derivative;
};

/// The handles through which a node holds its operands, at most two, to be walked by a range-based
/// for. They stay valid as long as the node.
class OperandHandles {
 public:
  OperandHandles() = default;
  explicit OperandHandles(Expr::Ref& only) : handles{&only}, count(1) {}
  OperandHandles(Expr::Ref& left, Expr::Ref& right) : handles{&left, &right}, count(2) {}

  class Iterator {
   public:
    explicit Iterator(Expr::Ref* const* place) : place(place) {}
    Expr::Ref& operator*() const { return **place; }
    Iterator& operator++()
    {
      ++place;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    Expr::Ref* const* place;
  };
  Iterator begin() const { return Iterator(handles); }
  Iterator end() const { return Iterator(handles + count); }
  int Size() const { return count; }

 private:
  Expr::Ref* handles[2] = {};
  int count = 0;
};

}  // namespace varno
