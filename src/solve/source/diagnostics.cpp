#include "solve/source/diagnostics.h"

#include <utility>

#include "solve/source/render.h"

namespace varno::solve {

void Diagnostics::Error(Place place, std::string message, std::string hint)
{
  all.push_back({Severity::kError, place, std::move(message), std::move(hint)});
  ++errors;
}

void Diagnostics::Note(Place place, std::string message, std::string hint)
{
  all.push_back({Severity::kNote, place, std::move(message), std::move(hint)});
}

ProblemError::ProblemError(Diagnostics diagnostics, const Sources& sources)
    : std::runtime_error(Render(diagnostics, sources)), remarks(std::move(diagnostics))
{}

}  // namespace varno::solve
