#include "solve/command/mpi_job.h"

#include <array>
#include <cstdlib>

namespace varno::solve {

MpiJob MpiJobOf(char* (*get)(const char* name))
{
  struct Names {
    const char *rank, *ranks;
  };
  constexpr std::array<Names, 2> kLaunchers{
      {{"OMPI_COMM_WORLD_RANK", "OMPI_COMM_WORLD_SIZE"}, {"PMI_RANK", "PMI_SIZE"}}};
  for (const Names& names : kLaunchers) {
    const char* const ranks = get(names.ranks);
    const char* const rank = get(names.rank);
    if (ranks != nullptr && rank != nullptr) return {std::atoi(rank), std::atoi(ranks)};
  }
  return {};
}

}  // namespace varno::solve
