#include "solve/mpi/ranks.h"

#include <algorithm>
#include <cstdlib>
#include <sched.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>

// Of the C interface only.
#define OMPI_SKIP_MPICXX 1
#define MPICH_SKIP_MPICXX 1
#include <mpi.h>

namespace varno::solve {

namespace {

constexpr int kParcelTag = 1;
constexpr int kOrderTag = 2;
/// MPI counts bytes with an int.
constexpr std::int64_t kMostBytesAtOnce = 1 << 30;

}  // namespace

struct Ranks::Sending {
  std::string parcel;
  MPI_Request request = MPI_REQUEST_NULL;
};

Ranks::Ranks(int& argc, char**& argv) : sending(new Sending)
{
  int provided = MPI_THREAD_SINGLE;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &provided);
  if (provided < MPI_THREAD_FUNNELED) throw std::runtime_error("this MPI allows no threads");
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &count);
  MPI_Comm machine = MPI_COMM_NULL;
  MPI_Comm_split_type(MPI_COMM_WORLD, MPI_COMM_TYPE_SHARED, rank, MPI_INFO_NULL, &machine);
  MPI_Comm_size(machine, &countOnMachine);
  MPI_Comm_free(&machine);
}

Ranks::~Ranks()
{
  MPI_Wait(&sending->request, MPI_STATUS_IGNORE);
  delete sending;
  MPI_Finalize();
}

int Ranks::Threads() const
{
  // mpirun may have bound this rank to some of the cores.
  cpu_set_t cores;
  CPU_ZERO(&cores);
  const int own = sched_getaffinity(0, sizeof cores, &cores) == 0 ? CPU_COUNT(&cores) : 1;
  const long all = sysconf(_SC_NPROCESSORS_ONLN);
  const int share = static_cast<int>(std::max(1L, all)) / countOnMachine;
  return std::max(1, std::min(own, share));
}

std::string Ranks::Broadcast(std::string text) const
{
  auto bytes = static_cast<std::int64_t>(text.size());
  MPI_Bcast(&bytes, 1, MPI_INT64_T, 0, MPI_COMM_WORLD);
  text.resize(static_cast<std::size_t>(bytes));
  for (std::int64_t first = 0; first < bytes; first += kMostBytesAtOnce) {
    const auto part = static_cast<int>(std::min(kMostBytesAtOnce, bytes - first));
    MPI_Bcast(text.data() + first, part, MPI_BYTE, 0, MPI_COMM_WORLD);
  }
  return text;
}

void Ranks::Send(int to, const Order& order) const
{
  // So short that it need not be waited for.
  MPI_Send(&order, sizeof order, MPI_BYTE, to, kOrderTag, MPI_COMM_WORLD);
}

std::optional<Order> Ranks::ReceiveOrder() const
{
  int isThere = 0;
  MPI_Iprobe(0, kOrderTag, MPI_COMM_WORLD, &isThere, MPI_STATUS_IGNORE);
  if (isThere == 0) return std::nullopt;
  Order order{};
  MPI_Recv(&order, sizeof order, MPI_BYTE, 0, kOrderTag, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
  return order;
}

bool Ranks::IsSending()
{
  int isDone = 0;
  MPI_Test(&sending->request, &isDone, MPI_STATUS_IGNORE);
  return isDone == 0;
}

bool Ranks::Send(std::string parcel)
{
  if (IsSending()) return false;
  sending->parcel = std::move(parcel);
  MPI_Isend(sending->parcel.data(), static_cast<int>(sending->parcel.size()), MPI_BYTE, 0,
            kParcelTag, MPI_COMM_WORLD, &sending->request);
  return true;
}

std::optional<std::pair<int, std::string>> Ranks::ReceiveParcel() const
{
  int isThere = 0, bytes = 0;
  MPI_Status status;
  MPI_Iprobe(MPI_ANY_SOURCE, kParcelTag, MPI_COMM_WORLD, &isThere, &status);
  if (isThere == 0) return std::nullopt;
  MPI_Get_count(&status, MPI_BYTE, &bytes);
  std::string parcel(static_cast<std::size_t>(bytes), '\0');
  MPI_Recv(parcel.data(), bytes, MPI_BYTE, status.MPI_SOURCE, kParcelTag, MPI_COMM_WORLD,
           MPI_STATUS_IGNORE);
  return std::pair(status.MPI_SOURCE, std::move(parcel));
}

void Ranks::Abort(int status)
{
  MPI_Abort(MPI_COMM_WORLD, status);
  std::abort();
}

}  // namespace varno::solve
