// ExchangeFiles: what the files of an exchange directory are, by name, and the small readers the
// commands share (state, heartbeat and lock records read without waiting or retrying, so that looking
// never slows or disturbs a running exchange).
#pragma once

#include "ombrix/sdk/SolveState.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Ombrix::Tools
{

class ExchangeFiles
{
public:
  enum class Kind
  {
    Definition, // def.csv
    Data,       // out.csv, in.csv, out<n>.csv, in<n>.csv
    OtherCsv,   // init.csv and other CSV files
    State,      // out.state, in.state
    Alive,      // out.alive, in.alive
    Lock,       // out.lock, in.lock
    Temporary,  // .<name>.<pid>.<n>.tmp, a replacement being written
    Other,
  };

  struct Entry
  {
    std::string name;
    Kind kind = Kind::Other;
    std::string
        direction; // "out" (the solver's) or "in" (the client's) for data, state, alive and lock files
    std::optional<std::size_t> number; // of a numbered data file
    std::uintmax_t size = 0;
    double age = 0; // seconds since the last change
    std::filesystem::file_time_type changed;
  };

  static Entry classify(const std::string& name);
  // The entries of `directory` ordered by name (numbered data files by number); throws ToolError when
  // it is not a readable directory.
  static std::vector<Entry> list(const std::string& directory);
  // The latest data file of `direction` among `entries`: the fixed name, or the highest number.
  static const Entry* latestData(const std::vector<Entry>& entries, const std::string& direction);

  // A state file as its reader would take it: the number, the text after it and whether it ends in the
  // end marker; empty when the file is missing or holds no number.
  struct StateRecord
  {
    int number = 0;
    std::string text;
    bool complete = false;
  };
  static std::optional<StateRecord> readState(const std::string& path);
  // The name of a state number, "" for a number without one.
  static std::string stateName(int number);

  // The stamp of an alive file (seconds since 1970) when it is complete.
  static std::optional<std::int64_t> readAliveStamp(const std::string& path);

  // The holder recorded in a lock file ("<pid> <host>"), and whether that process still runs (known only
  // on this host).
  struct LockRecord
  {
    long pid = 0;
    std::string host;
    std::optional<bool> running;
  };
  static std::optional<LockRecord> readLock(const std::string& path);

  // The whole content of a file; throws ToolError naming the file when it cannot be read.
  static std::string readText(const std::string& path);
};

} // namespace Ombrix::Tools
