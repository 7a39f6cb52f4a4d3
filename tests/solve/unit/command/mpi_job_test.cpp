#include "solve/command/mpi_job.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

std::map<std::string, std::string> environment;

char* Get(const char* name)
{
  const auto found = environment.find(name);
  return found == environment.end() ? nullptr : found->second.data();
}

}  // namespace

TEST(MpiJob, IsOneProcessByItself)
{
  environment.clear();
  EXPECT_EQ(1, MpiJobOf(Get).ranks);
  EXPECT_EQ(0, MpiJobOf(Get).rank);
}

TEST(MpiJob, ReadsWhatLaunchersSay)
{
  environment = {{"OMPI_COMM_WORLD_RANK", "3"}, {"OMPI_COMM_WORLD_SIZE", "4"}};
  EXPECT_EQ(4, MpiJobOf(Get).ranks);
  EXPECT_EQ(3, MpiJobOf(Get).rank);
  environment = {{"PMI_RANK", "0"}, {"PMI_SIZE", "2"}};
  EXPECT_EQ(2, MpiJobOf(Get).ranks);
  EXPECT_EQ(0, MpiJobOf(Get).rank);
}

}  // namespace varno::solve
