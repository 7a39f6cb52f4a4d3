#include "solve/mpi/remote_exchange.h"

namespace varno::solve {

namespace {

/// What may wait to be sent before threads have to.
constexpr std::size_t kMostUnsentBytes = std::size_t{16} << 20;
/// A parcel that has grown to this is left as it is, and another one begun.
constexpr std::size_t kParcelBytes = std::size_t{1} << 20;

}  // namespace

void RemoteExchange::ThrowIfStopped() const
{
  if (isStopped) throw Stopped();
}

void RemoteExchange::Put(RecordKind kind, std::int64_t number, std::string_view text)
{
  do {
    const std::string_view piece = text.substr(0, kMostRecordBytes);
    if (parcels.empty() || parcels.back().size() >= kParcelBytes) parcels.emplace_back();
    const std::size_t before = parcels.back().size();
    AppendRecord(parcels.back(), kind, number, piece);
    parcelBytes += parcels.back().size() - before;
    text.remove_prefix(piece.size());
  } while (!text.empty());
}

std::optional<RunRange> RemoteExchange::Take(std::int64_t most)
{
  std::unique_lock lock(mutex);
  ThrowIfStopped();
  Put(RecordKind::kTake, most);
  changed.wait(lock, [&] { return isStopped || !ranges.empty(); });
  ThrowIfStopped();
  const RunRange range = ranges.front();
  ranges.pop_front();
  if (range.count == 0) return std::nullopt;
  return range;
}

void RemoteExchange::AddRows(std::int64_t run, std::string_view text)
{
  std::unique_lock lock(mutex);
  ThrowIfStopped();
  if (!begun.insert(run).second) {
    Put(RecordKind::kAsk, run);
    changed.wait(lock, [&] { return isStopped || granted.contains(run); });
    granted.erase(run);
  }
  changed.wait(lock, [&] { return isStopped || parcelBytes < kMostUnsentBytes; });
  ThrowIfStopped();
  Put(RecordKind::kRows, run, text);
}

void RemoteExchange::AddMessage(std::int64_t run, std::string_view text)
{
  const std::scoped_lock lock(mutex);
  ThrowIfStopped();
  Put(RecordKind::kMessage, run, text);
}

void RemoteExchange::Finish(std::int64_t run, RunOutcome outcome)
{
  const std::scoped_lock lock(mutex);
  ThrowIfStopped();
  begun.erase(run);
  const char byte = static_cast<char>(outcome);
  Put(RecordKind::kFinish, run, {&byte, 1});
}

void RemoteExchange::Stop()
{
  const std::scoped_lock lock(mutex);
  if (!isStopped) Put(RecordKind::kStop, 0);
  isStopped = true;
  changed.notify_all();
}

void RemoteExchange::End(const std::string& error)
{
  const std::scoped_lock lock(mutex);
  Put(RecordKind::kEnded, 0, error);
}

std::string RemoteExchange::TakeParcel()
{
  const std::scoped_lock lock(mutex);
  if (parcels.empty()) return {};
  std::string parcel = std::move(parcels.front());
  parcels.pop_front();
  parcelBytes -= parcel.size();
  changed.notify_all();
  return parcel;
}

void RemoteExchange::Receive(const Order& order)
{
  const std::scoped_lock lock(mutex);
  switch (order.kind) {
    case OrderKind::kRuns:
      ranges.push_back({order.number, order.count});
      break;
    case OrderKind::kGrant:
      granted.insert(order.number);
      break;
    case OrderKind::kStop:
      isStopped = true;
      break;
  }
  changed.notify_all();
}

}  // namespace varno::solve
