// The common base of every attribute of the model tree: its name within its parent (`type`), a raw
// pointer to the parent, its access type, typed value access per chronology, units, visitor dispatch and
// streaming. Value getters and setters fail with "Not Available" on classes that carry no value.
// The model is used by one thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/AbstractAttribute.h"
#include "ombrix/model/AttributePath.h"
#include "ombrix/model/EntityID.h"
#include "ombrix/model/SDKInterfaceContainer.h"
#include "ombrix/sdk/AccessType.h"
#include "ombrix/sdk/AttributeType.h"
#include "ombrix/sdk/Chronology.h"

#include <memory>
#include <string>
#include <utility>

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix::Model
{

class CompositeAttribute;
class Entity;
class AttributeVisitorAbstract;
class AttributeVisitorConstAbstract;

class OMBRIX_API Attribute : public AbstractAttribute
{
public:
  using Chronology = KorvanSDK::Chronology;

  Attribute() = default;
  explicit Attribute(CompositeAttribute* parent);
  Attribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);
  Attribute(const Attribute&) = default;
  Attribute& operator=(const Attribute&) = default;
  ~Attribute() override;

  std::string getType() const { return m_type; }
  const std::string& type() const { return m_type; }
  void setType(const std::string& type);

  CompositeAttribute* getParent() const { return m_parent; }
  // Stores the pointer, then lets the attribute react (links move their owned entities along).
  void setParent(CompositeAttribute* parent);
  bool isRoot() const { return m_parent == nullptr; }
  // The nearest ancestor that is an entity (not this attribute itself), or null.
  Entity* getParentEntity() const;

  KorvanSDK::AccessType getAccessType() const { return m_access; }
  void setAccessType(KorvanSDK::AccessType access) { m_access = access; }

  // `resolve` is passed on: a shortcut reports its targets' common type when it is true.
  KorvanSDK::AttributeType getAttributeType(bool resolve = false) const
  {
    return do_GetAttributeType(resolve);
  }
  bool isComposite() const;
  bool isEntity() const { return getAttributeType(false) == KorvanSDK::AttributeType::Entity; }
  bool isLink() const { return getAttributeType(false) == KorvanSDK::AttributeType::Link; }
  bool isList() const { return getAttributeType(false) == KorvanSDK::AttributeType::List; }
  bool isArray() const { return getAttributeType(false) == KorvanSDK::AttributeType::Array; }
  bool isShortcut() const { return getAttributeType(false) == KorvanSDK::AttributeType::Shortcut; }

  // Value setters. `user` marks a write by a user of the model: it is checked against the access type
  // (AccessException "User has no write access") and recorded in the log. A non-empty `unit` must equal
  // the attribute's unit (std::runtime_error "Invalid Unit"); the forms without unit pass the own unit.
  // A failed write leaves the value unchanged.
  void setIntValue(int value, Chronology chronology, bool user)
  {
    setIntValue(value, getUnit(), chronology, user);
  }
  void setBoolValue(bool value, Chronology chronology, bool user)
  {
    setBoolValue(value, getUnit(), chronology, user);
  }
  void setFloatValue(float value, Chronology chronology, bool user)
  {
    setFloatValue(value, getUnit(), chronology, user);
  }
  void setDoubleValue(double value, Chronology chronology, bool user)
  {
    setDoubleValue(value, getUnit(), chronology, user);
  }
  void setStringValue(const std::string& value, Chronology chronology, bool user)
  {
    setStringValue(value, getUnit(), chronology, user);
  }
  void setIntValue(int value, const std::string& unit, Chronology chronology, bool user)
  {
    do_setIntValue(value, unit, chronology, user);
  }
  void setBoolValue(bool value, const std::string& unit, Chronology chronology, bool user)
  {
    do_setBoolValue(value, unit, chronology, user);
  }
  void setFloatValue(float value, const std::string& unit, Chronology chronology, bool user)
  {
    do_setFloatValue(value, unit, chronology, user);
  }
  void setDoubleValue(double value, const std::string& unit, Chronology chronology, bool user)
  {
    do_setDoubleValue(value, unit, chronology, user);
  }
  void setStringValue(const std::string& value, const std::string& unit, Chronology chronology, bool user)
  {
    do_setStringValue(value, unit, chronology, user);
  }
  void setValue(int value, Chronology chronology, bool user) { setIntValue(value, chronology, user); }
  void setValue(bool value, Chronology chronology, bool user) { setBoolValue(value, chronology, user); }
  void setValue(float value, Chronology chronology, bool user) { setFloatValue(value, chronology, user); }
  void setValue(double value, Chronology chronology, bool user) { setDoubleValue(value, chronology, user); }
  void setValue(const std::string& value, Chronology chronology, bool user)
  {
    setStringValue(value, chronology, user);
  }
  void setValue(const char* value, Chronology chronology, bool user)
  {
    setStringValue(std::string(value), chronology, user);
  }
  void setValue(int value, const std::string& unit, Chronology chronology, bool user)
  {
    setIntValue(value, unit, chronology, user);
  }
  void setValue(bool value, const std::string& unit, Chronology chronology, bool user)
  {
    setBoolValue(value, unit, chronology, user);
  }
  void setValue(float value, const std::string& unit, Chronology chronology, bool user)
  {
    setFloatValue(value, unit, chronology, user);
  }
  void setValue(double value, const std::string& unit, Chronology chronology, bool user)
  {
    setDoubleValue(value, unit, chronology, user);
  }
  void setValue(const std::string& value, const std::string& unit, Chronology chronology, bool user)
  {
    setStringValue(value, unit, chronology, user);
  }

  // Value getters; `user` checks read access (AccessException "User has no read access").
  bool hasValue(Chronology chronology, bool user) const { return do_hasValue(chronology, user); }
  int getIntValue(Chronology chronology, bool user) const { return do_getIntValue(chronology, user); }
  bool getBoolValue(Chronology chronology, bool user) const { return do_getBoolValue(chronology, user); }
  float getFloatValue(Chronology chronology, bool user) const { return do_getFloatValue(chronology, user); }
  double getDoubleValue(Chronology chronology, bool user) const
  {
    return do_getDoubleValue(chronology, user);
  }
  std::string getStringValue(Chronology chronology, bool user) const
  {
    return do_getStringValue(chronology, user);
  }

  // Conversions read the Current value without access check.
  explicit operator int() const { return getIntValue(Chronology::Current, false); }
  explicit operator bool() const { return getBoolValue(Chronology::Current, false); }
  explicit operator float() const { return getFloatValue(Chronology::Current, false); }
  explicit operator double() const { return getDoubleValue(Chronology::Current, false); }
  explicit operator std::string() const { return getStringValue(Chronology::Current, false); }

  bool hasUnits() const { return do_hasUnits(); }
  const std::string& getUnit() const { return do_getUnit(); }
  void setUnit(const std::string& unit) { do_setUnit(unit); }

  void accept(AttributeVisitorAbstract& visitor) { do_accept(visitor); }
  void accept(AttributeVisitorConstAbstract& visitor) const { do_accept(visitor); }

  // The path from the nearest enclosing entity (`relative`) or from the root of the tree.
  AttributePath getAttributePath(bool relative) const { return do_getAttributePath(relative); }
  // (ID of the owning entity, path relative to it); an entity gives its own ID and the empty path;
  // an attribute outside any entity gives 0-0 and its path from the root.
  std::pair<EntityID, AttributePath> getEntityIDAndAttributePath() const;

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  void write(FileSystem::DataOStream& out) const { do_write(out); }
  void read(FileSystem::DataIStream& in) { do_read(in); }
  // Deep comparison of the attributes' own fields (name, access, kind).
  bool isEqual(const Attribute& other) const;
  bool equals(const Attribute& other) const { return do_equals(other); }

  // The host-facing interface, created on first use and owned by this attribute; null if none.
  KorvanSDK::Model::IAttribute* getSDKInterface();
  const KorvanSDK::Model::IAttribute* getSDKInterface() const;

  static const std::string& getEmptyString() { return s_EmptyString; }

protected:
  virtual void do_setParent(CompositeAttribute* parent);
  virtual bool do_equals(const Attribute& other) const = 0;
  virtual void do_write(FileSystem::DataOStream& out) const = 0;
  virtual void do_read(FileSystem::DataIStream& in) = 0;

public:
  virtual std::unique_ptr<KorvanSDK::Model::IAttribute> createSDKInterface() = 0;

protected:
  virtual AttributePath do_getAttributePath(bool relative) const;
  virtual void do_setIntValue(int value, const std::string& unit, Chronology chronology, bool user);
  virtual void do_setBoolValue(bool value, const std::string& unit, Chronology chronology, bool user);
  virtual void do_setFloatValue(float value, const std::string& unit, Chronology chronology, bool user);
  virtual void do_setDoubleValue(double value, const std::string& unit, Chronology chronology, bool user);
  virtual void do_setStringValue(const std::string& value, const std::string& unit, Chronology chronology,
                                 bool user);
  virtual bool do_hasValue(Chronology chronology, bool user) const;
  virtual int do_getIntValue(Chronology chronology, bool user) const;
  virtual bool do_getBoolValue(Chronology chronology, bool user) const;
  virtual float do_getFloatValue(Chronology chronology, bool user) const;
  virtual double do_getDoubleValue(Chronology chronology, bool user) const;
  virtual std::string do_getStringValue(Chronology chronology, bool user) const;
  virtual KorvanSDK::AttributeType do_GetAttributeType(bool resolve) const = 0;
  virtual bool do_hasUnits() const;
  virtual const std::string& do_getUnit() const;
  virtual void do_setUnit(const std::string& unit);
  virtual void do_accept(AttributeVisitorConstAbstract& visitor) const = 0;
  virtual void do_accept(AttributeVisitorAbstract& visitor) = 0;

  // Lets subclasses tell entity-identity changes to the collections' lookup indexes.
  virtual void onTypeChanged() {}

private:
  std::string m_type;
  CompositeAttribute* m_parent = nullptr;
  KorvanSDK::AccessType m_access = KorvanSDK::AccessType::None;
  mutable SDKInterfaceContainer m_sdkInterface;

  static const std::string s_EmptyString;
};

OMBRIX_API bool operator==(const Attribute& a, const Attribute& b);
OMBRIX_API bool operator!=(const Attribute& a, const Attribute& b);

// "ID:path", the key under which messages about an attribute are filed ("17-520:Results.Time").
OMBRIX_API std::string toString(const std::pair<EntityID, AttributePath>& place);

} // namespace Ombrix::Model
