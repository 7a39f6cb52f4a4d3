#include "solve/command/state_file.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "solve/command/file_descriptor.h"
#include "solve/command/output_file.h"

namespace varno::solve {

namespace {

using Json = nlohmann::json;

constexpr int kVersion = 1;
constexpr const char* kFormatKey = "varno-solve state";

/// Texts may hold any bytes, JSON only characters: each byte becomes the character of its number.
std::string Encoded(const std::string& bytes)
{
  std::string text;
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      text += character;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

std::string Decoded(const std::string& text)
{
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= 0x80 && i + 1 < text.size())
      byte =
          static_cast<unsigned char>((byte << 6) | (static_cast<unsigned char>(text[++i]) & 0x3F));
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

Json ToJson(const InputFile& file)
{
  return {{"name", Encoded(file.name)}, {"text", Encoded(file.text)}};
}

InputFile ToInputFile(const Json& json)
{
  return {Decoded(json.at("name").get<std::string>()), Decoded(json.at("text").get<std::string>())};
}

Json ToJson(const TextDigest& digest)
{
  return {{"bytes", digest.Bytes()}, {"hash", digest.Hash()}};
}

TextDigest ToDigest(const Json& json)
{
  return {json.at("bytes").get<std::int64_t>(), json.at("hash").get<std::uint64_t>()};
}

Json ToJson(const SweepState& sweep)
{
  Json waiting = Json::array();
  for (const SweepState::FinishedRun& run : sweep.waiting) {
    waiting.push_back(
        {{"run", run.run}, {"rows", Encoded(run.rows)}, {"messages", Encoded(run.messages)}});
  }
  return {{"done", sweep.result.done},
          {"failed", sweep.result.failed},
          {"wrong", sweep.result.wrong},
          {"current", sweep.current},
          {"row bytes", sweep.rowBytes},
          {"has header", sweep.hasHeader},
          {"rows of current", ToJson(sweep.rowsOfCurrent)},
          {"waiting", std::move(waiting)}};
}

SweepState ToSweepState(const Json& json)
{
  SweepState sweep;
  json.at("done").get_to(sweep.result.done);
  json.at("failed").get_to(sweep.result.failed);
  json.at("wrong").get_to(sweep.result.wrong);
  json.at("current").get_to(sweep.current);
  json.at("row bytes").get_to(sweep.rowBytes);
  json.at("has header").get_to(sweep.hasHeader);
  sweep.rowsOfCurrent = ToDigest(json.at("rows of current"));
  for (const Json& run : json.at("waiting")) {
    sweep.waiting.push_back({run.at("run").get<std::int64_t>(),
                             Decoded(run.at("rows").get<std::string>()),
                             Decoded(run.at("messages").get<std::string>())});
  }
  return sweep;
}

std::string Checksum(const Json& json)
{
  TextDigest digest;
  digest.Add(json.dump());
  return fmt::format("{:016x}", digest.Hash());
}

SavedState ToState(const Json& json)
{
  SavedState state;
  for (const Json& option : json.at("options"))
    state.options.push_back(Decoded(option.get<std::string>()));
  state.file = Decoded(json.at("file").get<std::string>());
  state.inputs.equations = ToInputFile(json.at("equations"));
  for (const Json& file : json.at("sweep files"))
    state.inputs.sweepFiles.push_back(ToInputFile(file));
  state.rows = ToDigest(json.at("rows"));
  if (json.contains("sweep")) state.sweep = ToSweepState(json.at("sweep"));
  return state;
}

[[noreturn]] void FailFor(const std::string& path, const std::string& reason)
{
  throw OutputError("--save: cannot write '" + path + "': " + reason);
}

[[noreturn]] void Fail(const std::string& path)
{
  FailFor(path, std::strerror(errno));
}

/// The file that is to be replaced, links followed. Throws OutputError where replacing it would
/// destroy a device, a pipe or the like.
std::string PlainFile(const std::string& path)
{
  namespace fs = std::filesystem;
  std::error_code none;
  const fs::file_status status = fs::status(path, none);
  if (fs::is_directory(status)) FailFor(path, std::strerror(EISDIR));
  if (fs::exists(status) && !fs::is_regular_file(status)) FailFor(path, "it is no plain file");
  if (!fs::is_symlink(fs::symlink_status(path, none))) return path;
  const fs::path target = fs::weakly_canonical(path, none);
  return target.empty() ? path : target.string();
}

/// A new file beside another one, which it replaces in the end; else it goes away.
class Replacement {
 public:
  explicit Replacement(const std::string& path)
      : path(path), name(path + ".XXXXXX"), file(::mkstemp(name.data()))
  {
    if (!file.IsOpen()) Fail(path);
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement()
  {
    if (!isThere) ::unlink(name.c_str());
  }

  void Write(std::string_view text) const
  {
    while (!text.empty()) {
      const ssize_t count = ::write(file.Get(), text.data(), text.size());
      if (count < 0 && errno != EINTR) Fail(path);
      if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
    }
  }
  void Replace()
  {
    constexpr mode_t kReadableAndWritable = 0666;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::fchmod(file.Get(), kReadableAndWritable & ~mask) != 0 || ::fsync(file.Get()) != 0 ||
        ::rename(name.c_str(), path.c_str()) != 0)
      Fail(path);
    isThere = true;
  }

 private:
  const std::string& path;
  std::string name;
  FileDescriptor file;
  bool isThere = false;
};

}  // namespace

SavedState InitialState(const CommandLine& commandLine, const Inputs& inputs)
{
  return {commandLine.given, commandLine.file, inputs, {}, {}};
}

std::string StateText(const SavedState& state)
{
  Json options = Json::array(), files = Json::array();
  for (const std::string& option : state.options) options.push_back(Encoded(option));
  for (const InputFile& file : state.inputs.sweepFiles) files.push_back(ToJson(file));
  Json json{{"options", std::move(options)},
            {"file", Encoded(state.file)},
            {"equations", ToJson(state.inputs.equations)},
            {"sweep files", std::move(files)},
            {"rows", ToJson(state.rows)}};
  if (state.sweep) json["sweep"] = ToJson(*state.sweep);
  Json whole{{kFormatKey, kVersion}, {"checksum", Checksum(json)}, {"state", std::move(json)}};
  return whole.dump(1) + "\n";
}

SavedState ParseState(const std::string& text, const std::string& name)
{
  try {
    const Json whole = Json::parse(text);
    const int version = whole.at(kFormatKey).get<int>();
    if (version != kVersion)
      throw InputFileError(fmt::format("cannot resume '{}': it is of another version", name));
    const Json& json = whole.at("state");
    if (whole.at("checksum").get<std::string>() == Checksum(json)) return ToState(json);
  } catch (const Json::exception&) {
    throw InputFileError(fmt::format("cannot resume '{}': not a state of varno-solve", name));
  }
  throw InputFileError(fmt::format("cannot resume '{}': the file has been damaged", name));
}

void WriteState(const std::string& path, const SavedState& state)
{
  const std::string plain = PlainFile(path);
  Replacement file(plain);
  file.Write(StateText(state));
  file.Replace();
}

}  // namespace varno::solve
