#include "ombrix/model/ShortcutAttribute.h"

#include "ombrix/model/Entity.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>

namespace Ombrix::Model
{
namespace
{

template <typename T> bool agree(const T& a, const T& b)
{
  return a == b; // exact; for floating values a NaN never agrees
}

ShortcutAttribute* asShortcut(Attribute* attribute)
{
  return attribute && attribute->getAttributeType(false) == KorvanSDK::AttributeType::Shortcut
             ? static_cast<ShortcutAttribute*>(attribute)
             : nullptr;
}

} // namespace

ShortcutAttribute::ShortcutAttribute(CompositeAttribute* parent) : AttributeEx(parent) {}

ShortcutAttribute::ShortcutAttribute(const std::string& type, KorvanSDK::AccessType access,
                                     CompositeAttribute* parent)
    : AttributeEx(type, access, parent)
{
}

void ShortcutAttribute::addShortcut(const AttributePath& path)
{
  if (path.empty() || std::find(m_shortcuts.begin(), m_shortcuts.end(), path) != m_shortcuts.end())
    return;
  m_shortcuts.push_back(path);
}

void ShortcutAttribute::addShortcut(const std::vector<AttributePath>& paths)
{
  for (const auto& path : paths)
    addShortcut(path);
}

Entity* ShortcutAttribute::base() const
{
  return getParentEntity();
}

Attribute* ShortcutAttribute::resolve(const AttributePath& path) const
{
  Entity* entity = base();
  return entity ? entity->findAttribute(path, false) : nullptr;
}

Attribute* ShortcutAttribute::getShortcut(std::size_t index) const
{
  if (index >= m_shortcuts.size())
    throw std::out_of_range("No Shortcut_i='" + std::to_string(index) + "'");
  return resolve(m_shortcuts[index]);
}

Attribute* ShortcutAttribute::getFirstValidShortcut() const
{
  for (const auto& path : m_shortcuts)
  {
    if (Attribute* target = resolve(path))
      return target;
  }
  return nullptr;
}

bool ShortcutAttribute::isShortcutTarget(Attribute* attribute, bool recursive) const
{
  std::vector<const ShortcutAttribute*> seen;
  return isShortcutTarget(attribute, recursive, seen);
}

bool ShortcutAttribute::isShortcutTarget(Attribute* attribute, bool recursive,
                                         std::vector<const ShortcutAttribute*>& seen) const
{
  // A shortcut met again on the way down is part of a cycle that does not lead to `attribute`.
  if (std::find(seen.begin(), seen.end(), this) != seen.end())
    return false;
  seen.push_back(this);
  for (const auto& path : m_shortcuts)
  {
    Attribute* target = resolve(path);
    if (!target)
      return attribute == nullptr; // an unresolvable path ends the search
    if (target == attribute)
      return true;
    if (ShortcutAttribute* next = asShortcut(target);
        next && recursive && next->isShortcutTarget(attribute, true, seen))
      return true;
  }
  return false;
}

void ShortcutAttribute::cleanupNonExistingShortcuts()
{
  std::vector<std::size_t> unresolved;
  for (std::size_t i = 0; i < m_shortcuts.size(); ++i)
  {
    Attribute* target = resolve(m_shortcuts[i]);
    if (!target)
    {
      unresolved.push_back(i);
      continue;
    }
    const ShortcutAttribute* shortcut = asShortcut(target);
    if (!shortcut)
      continue;
    for (const auto& path : shortcut->m_shortcuts)
    {
      Attribute* next = shortcut->resolve(path);
      if (!next)
        break;
      const ShortcutAttribute* nextShortcut = asShortcut(next);
      if (next == this || (nextShortcut && nextShortcut->isShortcutTarget(this, true)))
        throw std::logic_error("Shortcut targets itself");
    }
  }
  for (auto it = unresolved.rbegin(); it != unresolved.rend(); ++it)
    m_shortcuts.erase(m_shortcuts.begin() + static_cast<std::ptrdiff_t>(*it));
}

template <typename T, typename Read>
T ShortcutAttribute::readCommon(Read&& read, T disagree, bool& found) const
{
  found = false;
  T common{};
  for (const auto& path : m_shortcuts)
  {
    const Attribute* target = resolve(path);
    if (!target)
      continue;
    T value = read(*target);
    if (!found)
    {
      common = std::move(value);
      found = true;
    }
    else if (!agree(common, value))
    {
      return disagree;
    }
  }
  // The first target is also compared with itself: a NaN never agrees.
  if (found && !agree(common, common))
    return disagree;
  return common;
}

template <typename Write> void ShortcutAttribute::writeAll(Write&& write)
{
  std::exception_ptr first;
  for (const auto& path : m_shortcuts)
  {
    Attribute* target = resolve(path);
    if (!target)
      continue;
    try
    {
      write(*target);
    }
    catch (...)
    {
      if (!first)
        first = std::current_exception();
    }
  }
  if (first)
    std::rethrow_exception(first);
}

KorvanSDK::AttributeType ShortcutAttribute::do_GetAttributeType(bool resolveTargets) const
{
  if (!resolveTargets)
    return KorvanSDK::AttributeType::Shortcut;
  bool found = false;
  return readCommon<KorvanSDK::AttributeType>([](const Attribute& t) { return t.getAttributeType(true); },
                                              KorvanSDK::AttributeType::Unknown, found);
}

void ShortcutAttribute::do_setIntValue(int value, const std::string&, Chronology chronology, bool user)
{
  writeAll([&](Attribute& t) { t.setIntValue(value, t.getUnit(), chronology, user); });
}

void ShortcutAttribute::do_setBoolValue(bool value, const std::string&, Chronology chronology, bool user)
{
  writeAll([&](Attribute& t) { t.setBoolValue(value, t.getUnit(), chronology, user); });
}

void ShortcutAttribute::do_setFloatValue(float value, const std::string&, Chronology chronology, bool user)
{
  writeAll([&](Attribute& t) { t.setFloatValue(value, t.getUnit(), chronology, user); });
}

void ShortcutAttribute::do_setDoubleValue(double value, const std::string&, Chronology chronology, bool user)
{
  writeAll([&](Attribute& t) { t.setDoubleValue(value, t.getUnit(), chronology, user); });
}

void ShortcutAttribute::do_setStringValue(const std::string& value, const std::string&, Chronology chronology,
                                          bool user)
{
  writeAll([&](Attribute& t) { t.setStringValue(value, t.getUnit(), chronology, user); });
}

void ShortcutAttribute::do_setUnit(const std::string& unit)
{
  writeAll([&](Attribute& t) { t.setUnit(unit); });
}

bool ShortcutAttribute::do_hasValue(Chronology chronology, bool user) const
{
  bool found = false;
  return readCommon<bool>([&](const Attribute& t) { return t.hasValue(chronology, user); }, false, found);
}

int ShortcutAttribute::do_getIntValue(Chronology chronology, bool user) const
{
  bool found = false;
  return readCommon<int>([&](const Attribute& t) { return t.getIntValue(chronology, user); }, 0, found);
}

bool ShortcutAttribute::do_getBoolValue(Chronology chronology, bool user) const
{
  bool found = false;
  const bool value =
      readCommon<bool>([&](const Attribute& t) { return t.getBoolValue(chronology, user); }, false, found);
  return found ? value : Attribute::do_getBoolValue(chronology, user);
}

float ShortcutAttribute::do_getFloatValue(Chronology chronology, bool user) const
{
  bool found = false;
  const float value =
      readCommon<float>([&](const Attribute& t) { return t.getFloatValue(chronology, user); }, 0.0f, found);
  return found ? value : Attribute::do_getFloatValue(chronology, user);
}

double ShortcutAttribute::do_getDoubleValue(Chronology chronology, bool user) const
{
  bool found = false;
  const double value =
      readCommon<double>([&](const Attribute& t) { return t.getDoubleValue(chronology, user); }, 0.0, found);
  return found ? value : Attribute::do_getDoubleValue(chronology, user);
}

std::string ShortcutAttribute::do_getStringValue(Chronology chronology, bool user) const
{
  bool found = false;
  std::string value = readCommon<std::string>(
      [&](const Attribute& t) { return t.getStringValue(chronology, user); }, std::string(), found);
  return found ? value : Attribute::do_getStringValue(chronology, user);
}

bool ShortcutAttribute::do_hasUnits() const
{
  bool found = false;
  return readCommon<bool>([](const Attribute& t) { return t.hasUnits(); }, false, found);
}

const std::string& ShortcutAttribute::do_getUnit() const
{
  const std::string* common = nullptr;
  for (const auto& path : m_shortcuts)
  {
    const Attribute* target = resolve(path);
    if (!target)
      continue;
    const std::string& unit = target->getUnit();
    if (!common)
      common = &unit;
    else if (*common != unit)
      return getEmptyString();
  }
  return common ? *common : getEmptyString();
}

void ShortcutAttribute::toStream(FileSystem::DataOStream& out) const
{
  Attribute::toStream(out);
  out.beginSection("Shortcuts");
  out << static_cast<std::uint64_t>(m_shortcuts.size());
  for (const auto& path : m_shortcuts)
  {
    if (!out)
      break;
    out << path;
  }
  out.endSection();
}

void ShortcutAttribute::fromStream(FileSystem::DataIStream& in)
{
  Attribute::fromStream(in);
  std::vector<AttributePath> paths;
  std::uint64_t count = 0;
  in.beginSection("Shortcuts");
  in >> count;
  for (std::uint64_t i = 0; i < count && in; ++i)
  {
    AttributePath path;
    in >> path;
    if (in)
      paths.push_back(std::move(path));
  }
  in.endSection();
  if (in)
    m_shortcuts = std::move(paths);
}

bool ShortcutAttribute::isEqual(const ShortcutAttribute& other) const
{
  return Attribute::isEqual(other) && m_shortcuts == other.m_shortcuts;
}

} // namespace Ombrix::Model
