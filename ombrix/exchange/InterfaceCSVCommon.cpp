#include "ombrix/exchange/InterfaceCSVCommon.h"

#include "ombrix/platform/Path.h"

namespace Ombrix
{
namespace
{

std::string numberedName(const char* stem, const std::optional<std::size_t>& n)
{
  if (!n)
    return std::string(stem) + ".csv";
  return std::string(stem) + std::to_string(*n) + ".csv";
}

} // namespace

InterfaceCSVCommon::InterfaceCSVCommon(const std::string& directory, CSVFileMode mode)
    : m_ombrixPath(FileSystem::Path::stripTrailingSlash(directory)), m_fileMode(mode),
      m_sequentialFileCounter(mode == CSVFileMode::Sequential ? std::optional<std::size_t>(0) : std::nullopt),
      m_autoFileMode(mode == CSVFileMode::Automatic)
{
}

std::string InterfaceCSVCommon::initFile()
{
  return "init.csv";
}

std::string InterfaceCSVCommon::defFile()
{
  return "def.csv";
}

std::string InterfaceCSVCommon::inFile(const std::optional<std::size_t>& n)
{
  return numberedName("in", n);
}

std::string InterfaceCSVCommon::outFile(const std::optional<std::size_t>& n)
{
  return numberedName("out", n);
}

std::string InterfaceCSVCommon::inStateFile()
{
  return "in.state";
}

std::string InterfaceCSVCommon::outStateFile()
{
  return "out.state";
}

std::string InterfaceCSVCommon::inAliveFile()
{
  return "in.alive";
}

std::string InterfaceCSVCommon::outAliveFile()
{
  return "out.alive";
}

CSVFileMode InterfaceCSVCommon::getFileMode()
{
  return m_fileMode;
}

void InterfaceCSVCommon::setFileMode(CSVFileMode mode)
{
  m_fileMode = mode;
}

bool InterfaceCSVCommon::isAutoFileMode() const
{
  return m_autoFileMode;
}

void InterfaceCSVCommon::increaseSequentialFileCounter(std::size_t step)
{
  if (m_sequentialFileCounter)
    *m_sequentialFileCounter += step;
}

void InterfaceCSVCommon::resetSequentialFileCounter()
{
  if (m_sequentialFileCounter)
    m_sequentialFileCounter = 0;
}

const std::string& InterfaceCSVCommon::getOmbrixPath() const
{
  return m_ombrixPath;
}

std::string InterfaceCSVCommon::getFile(const std::string& name)
{
  return FileSystem::Path::join(m_ombrixPath, name);
}

std::string InterfaceCSVCommon::getInFile()
{
  return getFile(inFile(m_sequentialFileCounter));
}

std::string InterfaceCSVCommon::getOutFile()
{
  return getFile(outFile(m_sequentialFileCounter));
}

std::string InterfaceCSVCommon::getInStateFile()
{
  return getFile(inStateFile());
}

std::string InterfaceCSVCommon::getOutStateFile()
{
  return getFile(outStateFile());
}

std::string InterfaceCSVCommon::getInAliveFile()
{
  return getFile(inAliveFile());
}

std::string InterfaceCSVCommon::getOutAliveFile()
{
  return getFile(outAliveFile());
}

std::string InterfaceCSVCommon::getDefFile()
{
  return getFile(defFile());
}

std::string InterfaceCSVCommon::getInitFile()
{
  return getFile(initFile());
}

} // namespace Ombrix
