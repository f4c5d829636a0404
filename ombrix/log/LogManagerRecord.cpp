// The one tie between the log and the model: recording a value that a user set on an attribute.
// Kept in its own source file so that no log header needs the model's headers.
#include "ombrix/log/LogManager.h"
#include "ombrix/model/Attribute.h"
#include "ombrix/model/AttributePath.h"
#include "ombrix/model/EntityID.h"
#include "ombrix/platform/ClassicCLocaleScope.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

void LogManager::recordAttributeSetValue(Model::Attribute* attribute, KorvanSDK::Chronology chronology)
{
  // Held across the whole record; addToLog below re-enters it.
  std::lock_guard lock(m_mutex);
  if (attribute == nullptr || m_path.empty())
    return;
  // Checked before the level, so that an unknown chronology fails whatever the level.
  const std::string chronologyName = KorvanSDK::chronologyToString(chronology);
  // Spares the value's conversion to text when the line would be dropped anyway.
  if (static_cast<std::int32_t>(LogLevel::Informational) > static_cast<std::int32_t>(m_level.load()))
    return;

  const auto [entityID, attributePath] = attribute->getEntityIDAndAttributePath();
  // The value's text in the classic form too, whatever C locale the host's global locale set.
  const FileSystem::ClassicCLocaleScope classicNumbers;
  const std::string value = attribute->getStringValue(chronology, false);

  std::string joinedPath;
  bool first = true;
  for (const auto& segment : attributePath)
  {
    if (!first)
      joinedPath += '.';
    joinedPath += segment;
    first = false;
  }

  addToLog(LogLevel::Informational, "Attribute '%s:%s:%s ,[%d]' set to '%s'",
           Model::toString(entityID).c_str(), joinedPath.c_str(), chronologyName.c_str(),
           static_cast<int>(chronology), value.c_str());
}

} // namespace Ombrix
