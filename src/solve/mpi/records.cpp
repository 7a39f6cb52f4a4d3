#include "solve/mpi/records.h"

#include <cassert>
#include <cstring>

namespace varno::solve {

namespace {

/// What stands before the text of a record, byte for byte.
struct Head {
  std::int64_t kind, number, bytes;
};

void AppendPiece(std::string& parcel, RecordKind kind, std::int64_t number, std::string_view text)
{
  const Head head{static_cast<std::int64_t>(kind), number, static_cast<std::int64_t>(text.size())};
  parcel.append(reinterpret_cast<const char*>(&head), sizeof head);
  parcel.append(text);
}

}  // namespace

void AppendRecord(std::string& parcel, RecordKind kind, std::int64_t number, std::string_view text)
{
  while (text.size() > kMostRecordBytes) {
    AppendPiece(parcel, kind, number, text.substr(0, kMostRecordBytes));
    text.remove_prefix(kMostRecordBytes);
  }
  AppendPiece(parcel, kind, number, text);
}

void ForEachRecord(std::string_view parcel,
                   const std::function<void(RecordKind, std::int64_t, std::string_view)>& visit)
{
  while (!parcel.empty()) {
    Head head;
    assert(parcel.size() >= sizeof head);
    std::memcpy(&head, parcel.data(), sizeof head);
    parcel.remove_prefix(sizeof head);
    const auto bytes = static_cast<std::size_t>(head.bytes);
    assert(bytes <= parcel.size());
    visit(static_cast<RecordKind>(head.kind), head.number, parcel.substr(0, bytes));
    parcel.remove_prefix(bytes);
  }
}

}  // namespace varno::solve
