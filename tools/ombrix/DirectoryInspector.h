// DirectoryInspector: looks into an exchange directory without writing anything or taking a lock, and
// reports (DirectoryReport) each file, whether each CSV file is complete and readable, and each side's
// state, heartbeat, lock holder and latest iteration. Files unchanged since the last inspection are not
// read again, so that `watch` can inspect a large exchange often. One thread at a time.
#pragma once

#include "ombrix/model/EntityCollection.h"

#include "DirectoryReport.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace Ombrix::Tools
{

class DirectoryInspector
{
public:
  // `gracePeriod`: seconds after which a heartbeat counts as stopped. Throws ToolError when `directory`
  // is not a directory.
  DirectoryInspector(std::string directory, int gracePeriod);

  DirectoryReport inspect();

private:
  struct Version
  {
    std::filesystem::file_time_type changed;
    std::uintmax_t size = 0;
    bool operator==(const Version&) const = default;
  };
  struct Cached
  {
    Version version;
    DirectoryReport::Finding detail;
    std::optional<CSVSimulationTime> time;
  };

  std::string path(const std::string& name) const { return m_directory + "/" + name; }
  void inspectDefinition(const ExchangeFiles::Entry& entry, DirectoryReport& report);
  void inspectData(const ExchangeFiles::Entry& entry, bool latest, DirectoryReport& report);
  void inspectSide(DirectoryReport::Side& side, const std::string& direction, DirectoryReport& report);

  std::string m_directory;
  int m_gracePeriod;
  std::map<std::string, Cached> m_cache;
  std::unique_ptr<Model::EntityCollection> m_model; // from def.csv, when it reads
  std::optional<Version> m_modelVersion;
  std::size_t m_entities = 0, m_attributes = 0;
};

} // namespace Ombrix::Tools
