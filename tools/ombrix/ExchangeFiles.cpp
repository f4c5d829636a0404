#include "ExchangeFiles.h"

#include "ombrix/platform/FileLock.h"

#include "ToolError.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Ombrix::Tools
{

namespace fs = std::filesystem;

namespace
{

bool endsWith(const std::string& text, const std::string& end)
{
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// "<prefix><digits>.csv" gives the number.
std::optional<std::size_t> numbered(const std::string& name, const std::string& prefix)
{
  if (name.rfind(prefix, 0) != 0 || !endsWith(name, ".csv"))
    return std::nullopt;
  const std::string digits = name.substr(prefix.size(), name.size() - prefix.size() - 4);
  if (digits.empty() || digits.size() > 18 || !std::all_of(digits.begin(), digits.end(), ::isdigit))
    return std::nullopt;
  return static_cast<std::size_t>(std::stoull(digits));
}

} // namespace

ExchangeFiles::Entry ExchangeFiles::classify(const std::string& name)
{
  Entry entry;
  entry.name = name;
  if (name.size() > 5 && name[0] == '.' && endsWith(name, ".tmp"))
    entry.kind = Kind::Temporary;
  else if (name == "def.csv")
    entry.kind = Kind::Definition;
  else
  {
    for (const std::string direction : {"out", "in"})
    {
      if (name == direction + ".csv" || numbered(name, direction))
      {
        entry.kind = Kind::Data;
        entry.number = numbered(name, direction);
      }
      else if (name == direction + ".state")
        entry.kind = Kind::State;
      else if (name == direction + ".alive")
        entry.kind = Kind::Alive;
      else if (name == direction + ".lock")
        entry.kind = Kind::Lock;
      else
        continue;
      entry.direction = direction;
      return entry;
    }
    entry.kind = endsWith(name, ".csv") ? Kind::OtherCsv : Kind::Other;
  }
  return entry;
}

std::vector<ExchangeFiles::Entry> ExchangeFiles::list(const std::string& directory)
{
  std::error_code error;
  if (!fs::is_directory(directory, error))
    throw ToolError(directory + " is not a directory" + (error ? ": " + error.message() : std::string()));
  std::vector<Entry> entries;
  const auto now = fs::file_time_type::clock::now();
  for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
  {
    Entry entry = classify(it->path().filename().string());
    std::error_code statError;
    entry.changed = it->last_write_time(statError);
    if (statError) // removed between listing and looking
      continue;
    entry.size = it->is_regular_file(statError) ? it->file_size(statError) : 0;
    entry.age = std::chrono::duration<double>(now - entry.changed).count();
    entries.push_back(std::move(entry));
  }
  if (error)
    throw ToolError("cannot list " + directory + ": " + error.message());
  std::sort(entries.begin(), entries.end(),
            [](const Entry& a, const Entry& b)
            {
              if (a.kind == Kind::Data && b.kind == Kind::Data && a.direction == b.direction &&
                  a.number.has_value() == b.number.has_value())
                return a.number < b.number;
              return a.name < b.name;
            });
  return entries;
}

const ExchangeFiles::Entry* ExchangeFiles::latestData(const std::vector<Entry>& entries,
                                                      const std::string& direction)
{
  const Entry* latest = nullptr;
  for (const Entry& entry : entries)
    if (entry.kind == Kind::Data && entry.direction == direction &&
        (!latest || (entry.number && (!latest->number || *entry.number > *latest->number))))
      latest = &entry;
  return latest;
}

std::optional<ExchangeFiles::StateRecord> ExchangeFiles::readState(const std::string& path)
{
  std::ifstream in(path);
  StateRecord record;
  if (!(in >> record.number))
    return std::nullopt;
  std::getline(in, record.text, '\0');
  const std::size_t end = record.text.find("<END>");
  record.complete = end != std::string::npos;
  if (record.complete)
    record.text.erase(end);
  const auto blank = [](char c) { return c == '\t' || c == ' ' || c == '\n' || c == '\r'; };
  while (!record.text.empty() && blank(record.text.back()))
    record.text.pop_back();
  while (!record.text.empty() && blank(record.text.front()))
    record.text.erase(0, 1);
  return record;
}

std::string ExchangeFiles::stateName(int number)
{
  try
  {
    return KorvanSDK::toString(static_cast<KorvanSDK::SolveState>(number));
  }
  catch (const std::logic_error&)
  {
    return "";
  }
}

std::optional<std::int64_t> ExchangeFiles::readAliveStamp(const std::string& path)
{
  std::ifstream in(path);
  std::int64_t stamp = 0;
  std::string marker;
  if (!(in >> stamp >> marker) || marker != "<END>")
    return std::nullopt;
  return stamp;
}

std::optional<ExchangeFiles::LockRecord> ExchangeFiles::readLock(const std::string& path)
{
  std::ifstream in(path);
  LockRecord record;
  if (!(in >> record.pid >> record.host) || record.pid <= 0)
    return std::nullopt;
  if (record.host == FileSystem::FileLock::currentProcess().host)
    record.running = ::kill(static_cast<pid_t>(record.pid), 0) == 0 || errno == EPERM;
  return record;
}

std::string ExchangeFiles::readText(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  if (!in)
    throw ToolError("cannot read " + path + ": " + std::strerror(errno));
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad())
    throw ToolError("cannot read " + path);
  return text.str();
}

} // namespace Ombrix::Tools
