#include "solve/model/dependencies.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace varno::solve {

namespace {

/// Of a longer circle only the beginning is shown.
constexpr std::size_t kMaxShown = 20;

/// A walk over all declarations in depth, with a stack of its own: chains of definitions can be
/// long.
class Walk {
 public:
  Walk(const Declarations& declarations, const Resolution& resolution, Diagnostics& diagnostics)
      : declarations(declarations),
        resolution(resolution),
        diagnostics(diagnostics),
        state(declarations.Size(), State::kNew),
        position(declarations.Size(), 0)
  {
    found.dependence.resize(declarations.Size(), Dependence::kNothing);
    found.broken.resize(declarations.Size(), false);
  }

  Dependencies Run()
  {
    for (std::uint32_t i = 0; i < declarations.Size(); ++i) {
      if (state[i] == State::kNew) WalkFrom(i);
    }
    return std::move(found);
  }

 private:
  enum class State : std::uint8_t { kNew, kOpen, kDone };
  static constexpr std::size_t kNowhere = SIZE_MAX;

  /// A declaration on the way, and the expression that is looked at next.
  struct Visit {
    std::uint32_t declaration;
    ExpressionId next;
    Place use;  // of the next declaration on the way
    /// The first position on the way that this declaration, or one after it, leads back to.
    std::size_t back;
    /// The last position up to here, counted from 1, that belongs to a reported circle.
    std::size_t lastReported;
  };

  void Open(std::uint32_t declaration)
  {
    const Tree& tree = declarations[declaration].tree;
    state[declaration] = State::kOpen;
    // Who uses a derivative uses a variable, even where it happens to be constant.
    if (declarations[declaration].kind == DeclarationKind::kVariable) {
      found.dependence[declaration] = Dependence::kStates;
    }
    position[declaration] = way.size();
    way.push_back({declaration,
                   (*tree.syntax)[tree.root].first,
                   {},
                   kNowhere,
                   way.empty() ? 0 : way.back().lastReported});
  }

  void WalkFrom(std::uint32_t start)
  {
    Open(start);
    while (!way.empty()) {
      const std::uint32_t current = way.back().declaration;
      const Tree& tree = declarations[current].tree;
      if (way.back().next > tree.root) {
        Close();
      } else {
        Look(current, tree, way.back().next++);
      }
    }
  }

  void Close()
  {
    const Visit done = way.back();
    way.pop_back();
    // It is part of a circle when the way from it leads back to it or to one before.
    if (done.back != kNowhere && done.back <= way.size()) found.broken[done.declaration] = true;
    state[done.declaration] = State::kDone;
    found.order.push_back(done.declaration);
    if (way.empty()) return;
    way.back().back = std::min(way.back().back, done.back);
    Add(way.back().declaration, done.declaration);
  }

  void Add(std::uint32_t user, std::uint32_t used)
  {
    found.dependence[user] = std::max(found.dependence[user], found.dependence[used]);
    if (found.broken[used]) found.broken[user] = true;
  }

  void Look(std::uint32_t current, const Tree& tree, ExpressionId id)
  {
    const Expression& expression = (*tree.syntax)[id];
    const Binding& binding = resolution.Of(*tree.syntax)[id];
    Dependence& dependence = found.dependence[current];
    if (expression.kind == ExpressionKind::kTime)
      dependence = std::max(dependence, Dependence::kTime);
    if (binding.kind == Binding::Kind::kState) dependence = Dependence::kStates;
    if (binding.kind != Binding::Kind::kDeclaration && binding.kind != Binding::Kind::kFunction)
      return;

    way.back().use = expression.name;
    switch (state[binding.index]) {
      case State::kNew:
        Open(binding.index);
        break;
      case State::kOpen:
        TakeCircle(position[binding.index]);
        break;
      case State::kDone:
        Add(current, binding.index);
        break;
    }
  }

  /// The way leads back to the declaration at a position. Circles that have a part in common are
  /// reported once.
  void TakeCircle(std::size_t first)
  {
    way.back().back = std::min(way.back().back, first);
    if (way.back().lastReported > first) return;
    Report({way.begin() + static_cast<std::ptrdiff_t>(first), way.end()});
    for (std::size_t i = first; i < way.size(); ++i) way[i].lastReported = i + 1;
  }

  std::string NameOf(std::uint32_t number) const
  {
    const Declaration& declaration = declarations[number];
    return DerivativeName(declaration.name, declaration.order);
  }

  void Report(const std::vector<Visit>& circle)
  {
    const std::string name = NameOf(circle.front().declaration);
    const std::size_t shown = std::min(circle.size(), kMaxShown);
    std::string path = name;
    for (std::size_t i = 1; i < shown; ++i) path += " -> " + NameOf(circle[i].declaration);
    if (shown < circle.size())
      path += " -> ... (" + std::to_string(circle.size() - shown) + " more)";
    path += " -> " + name;

    diagnostics.Error(declarations[circle.front().declaration].place,
                      "'" + name + "' is defined by itself: " + path);
    for (std::size_t i = 0; i < shown; ++i) {
      const std::uint32_t next = circle[(i + 1) % circle.size()].declaration;
      diagnostics.Note(circle[i].use,
                       "'" + NameOf(circle[i].declaration) + "' uses '" + NameOf(next) + "' here");
    }
  }

  const Declarations& declarations;
  const Resolution& resolution;
  Diagnostics& diagnostics;
  Dependencies found;
  std::vector<State> state;
  std::vector<std::size_t> position;  // on the way, of open ones
  std::vector<Visit> way;
};

}  // namespace

Dependencies FindDependencies(const Declarations& declarations, const Resolution& resolution,
                              Diagnostics& diagnostics)
{
  return Walk(declarations, resolution, diagnostics).Run();
}

}  // namespace varno::solve
