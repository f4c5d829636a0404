// An attribute with no value of its own that stands for other attributes of the same entity, named by
// paths relative to the nearest enclosing entity. Reads give the targets' common value (or a neutral
// value when they disagree); writes go to every target. Targets are resolved afresh on every access.
#pragma once

#include "ombrix/model/AttributeEx.h"
#include "ombrix/sdk/SDKInterfaceImpl.h"

#include <vector>

namespace Ombrix::Model
{

class OMBRIX_API ShortcutAttribute
    : public AttributeEx<ShortcutAttribute, 9, IShortcutAttributeImpl, Attribute>
{
public:
  ShortcutAttribute() = default;
  explicit ShortcutAttribute(CompositeAttribute* parent);
  ShortcutAttribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);

  std::vector<AttributePath>& shortcuts() { return m_shortcuts; }
  const std::vector<AttributePath>& shortcuts() const { return m_shortcuts; }

  // Ignores empty paths and paths already held.
  void addShortcut(const AttributePath& path);
  void addShortcut(const std::vector<AttributePath>& paths);
  std::size_t getNumberOfShortcuts() const { return m_shortcuts.size(); }
  // The target of path `index`, or null when it resolves to nothing; std::out_of_range
  // "No Shortcut_i='<index>'" past the last path.
  Attribute* getShortcut(std::size_t index) const;
  Attribute* operator[](std::size_t index) const { return getShortcut(index); }
  Attribute* getFirstValidShortcut() const;
  // Whether `attribute` is a target (through shortcuts to shortcuts with `recursive`). The search ends
  // at the first unresolvable path, answering whether `attribute` is null.
  bool isShortcutTarget(Attribute* attribute, bool recursive) const;
  // Drops the paths that resolve to nothing, keeping the order of the others. Throws std::logic_error
  // "Shortcut targets itself" (before removing anything) when a target shortcut leads back here.
  void cleanupNonExistingShortcuts();

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  bool isEqual(const ShortcutAttribute& other) const;

protected:
  KorvanSDK::AttributeType do_GetAttributeType(bool resolve) const override;
  void do_setIntValue(int value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setBoolValue(bool value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setFloatValue(float value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setDoubleValue(double value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setStringValue(const std::string& value, const std::string& unit, Chronology chronology,
                         bool user) override;
  bool do_hasValue(Chronology chronology, bool user) const override;
  int do_getIntValue(Chronology chronology, bool user) const override;
  bool do_getBoolValue(Chronology chronology, bool user) const override;
  float do_getFloatValue(Chronology chronology, bool user) const override;
  double do_getDoubleValue(Chronology chronology, bool user) const override;
  std::string do_getStringValue(Chronology chronology, bool user) const override;
  bool do_hasUnits() const override;
  const std::string& do_getUnit() const override;
  void do_setUnit(const std::string& unit) override;

private:
  Attribute* resolve(const AttributePath& path) const;
  Entity* base() const;
  // Calls `write` on every resolvable target; the first exception is rethrown after all were tried.
  template <typename Write> void writeAll(Write&& write);
  // The targets' common answer of `read`, `disagree` when two differ; `found` tells whether any
  // target resolved.
  template <typename T, typename Read> T readCommon(Read&& read, T disagree, bool& found) const;
  bool isShortcutTarget(Attribute* attribute, bool recursive,
                        std::vector<const ShortcutAttribute*>& seen) const;

  std::vector<AttributePath> m_shortcuts;
};

} // namespace Ombrix::Model
