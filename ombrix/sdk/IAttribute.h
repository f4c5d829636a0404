// The host SDK's view of one attribute of the model: its kind, name, path, access, unit and values
// per chronology. Every call returns an ExceptionType (Success or the failure's code, with the message
// kept on the handle, see IHandle) and passes its results through out-parameters; on failure pointer
// results are null and other results keep what they held. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/AccessType.h"
#include "ombrix/sdk/AttributeType.h"
#include "ombrix/sdk/Chronology.h"
#include "ombrix/sdk/EntityID.h"
#include "ombrix/sdk/IHandle.h"
#include "ombrix/sdk/IString.h"

namespace KorvanSDK::Model
{

class ICompositeAttribute;
class IEntity;
class IEntityLinkAttribute;
class ILinkAttribute;
class IListAttribute;
class IArrayAttribute;
class IShortcutAttribute;

class OMBRIX_API IAttribute : public IHandle
{
public:
  // The kind; with `resolve` a shortcut reports the common kind of its targets (Unknown if they differ).
  ExceptionType getAttributeType(bool resolve, AttributeType& type)
  {
    return do_getAttributeType(resolve, type);
  }
  // The name within the parent (for an entity its type name).
  ExceptionType getType(IString& name) { return do_getType(name); }
  // The path from the nearest enclosing entity (`relative`) or from the root of the tree, "."-joined.
  ExceptionType getAttributePath(bool relative, IString& path) { return do_getAttributePath(relative, path); }
  ExceptionType getAccessType(AccessType& access) { return do_getAccessType(access); }
  // The ID of the entity that owns this attribute; an entity gives its own ID, an attribute outside
  // any entity 0-0.
  ExceptionType getEntityID(EntityID& id) { return do_getEntityID(id); }

  ExceptionType hasUnits(bool& has) { return do_hasUnits(has); }
  ExceptionType getUnit(IString& unit) { return do_getUnit(unit); }
  // RuntimeError "Not Available" on attributes without a value.
  ExceptionType setUnit(const char* unit) { return do_setUnit(unit); }

  // Reads are user reads: AccessError "User has no read access" unless the access type allows it.
  // Attributes without a value (composites, entities, links) give RuntimeError "Not Available".
  ExceptionType hasValue(Chronology chronology, bool& has) { return do_hasValue(chronology, has); }
  ExceptionType getIntValue(Chronology chronology, int& value) { return do_getIntValue(chronology, value); }
  ExceptionType getBoolValue(Chronology chronology, bool& value)
  {
    return do_getBoolValue(chronology, value);
  }
  ExceptionType getFloatValue(Chronology chronology, float& value)
  {
    return do_getFloatValue(chronology, value);
  }
  ExceptionType getDoubleValue(Chronology chronology, double& value)
  {
    return do_getDoubleValue(chronology, value);
  }
  ExceptionType getStringValue(Chronology chronology, IString& value)
  {
    return do_getStringValue(chronology, value);
  }

  // Writes are user writes: checked against the access type (AccessError "User has no write access")
  // and recorded in the log. A non-empty `unit` must equal the attribute's unit (RuntimeError
  // "Invalid Unit"); the forms without unit write in the attribute's own unit. A failed write leaves
  // the value unchanged (a shortcut still writes its other targets).
  ExceptionType setIntValue(int value, Chronology chronology)
  {
    return do_setIntValue(value, "", chronology);
  }
  ExceptionType setBoolValue(bool value, Chronology chronology)
  {
    return do_setBoolValue(value, "", chronology);
  }
  ExceptionType setFloatValue(float value, Chronology chronology)
  {
    return do_setFloatValue(value, "", chronology);
  }
  ExceptionType setDoubleValue(double value, Chronology chronology)
  {
    return do_setDoubleValue(value, "", chronology);
  }
  ExceptionType setStringValue(const char* value, Chronology chronology)
  {
    return do_setStringValue(value, "", chronology);
  }
  ExceptionType setIntValue(int value, const char* unit, Chronology chronology)
  {
    return do_setIntValue(value, unit, chronology);
  }
  ExceptionType setBoolValue(bool value, const char* unit, Chronology chronology)
  {
    return do_setBoolValue(value, unit, chronology);
  }
  ExceptionType setFloatValue(float value, const char* unit, Chronology chronology)
  {
    return do_setFloatValue(value, unit, chronology);
  }
  ExceptionType setDoubleValue(double value, const char* unit, Chronology chronology)
  {
    return do_setDoubleValue(value, unit, chronology);
  }
  ExceptionType setStringValue(const char* value, const char* unit, Chronology chronology)
  {
    return do_setStringValue(value, unit, chronology);
  }

  // The same object seen through a more specific interface, or null when it is not of that kind
  // (an entity is also a composite; links, lists and arrays are all entity links). Never fail.
  ICompositeAttribute* asComposite() noexcept { return do_asComposite(); }
  IEntity* asEntity() noexcept { return do_asEntity(); }
  IEntityLinkAttribute* asEntityLink() noexcept { return do_asEntityLink(); }
  ILinkAttribute* asLink() noexcept { return do_asLink(); }
  IListAttribute* asList() noexcept { return do_asList(); }
  IArrayAttribute* asArray() noexcept { return do_asArray(); }
  IShortcutAttribute* asShortcut() noexcept { return do_asShortcut(); }

protected:
  virtual ExceptionType do_getAttributeType(bool resolve, AttributeType& type) = 0;
  virtual ExceptionType do_getType(IString& name) = 0;
  virtual ExceptionType do_getAttributePath(bool relative, IString& path) = 0;
  virtual ExceptionType do_getAccessType(AccessType& access) = 0;
  virtual ExceptionType do_getEntityID(EntityID& id) = 0;
  virtual ExceptionType do_hasUnits(bool& has) = 0;
  virtual ExceptionType do_getUnit(IString& unit) = 0;
  virtual ExceptionType do_setUnit(const char* unit) = 0;
  virtual ExceptionType do_hasValue(Chronology chronology, bool& has) = 0;
  virtual ExceptionType do_getIntValue(Chronology chronology, int& value) = 0;
  virtual ExceptionType do_getBoolValue(Chronology chronology, bool& value) = 0;
  virtual ExceptionType do_getFloatValue(Chronology chronology, float& value) = 0;
  virtual ExceptionType do_getDoubleValue(Chronology chronology, double& value) = 0;
  virtual ExceptionType do_getStringValue(Chronology chronology, IString& value) = 0;
  virtual ExceptionType do_setIntValue(int value, const char* unit, Chronology chronology) = 0;
  virtual ExceptionType do_setBoolValue(bool value, const char* unit, Chronology chronology) = 0;
  virtual ExceptionType do_setFloatValue(float value, const char* unit, Chronology chronology) = 0;
  virtual ExceptionType do_setDoubleValue(double value, const char* unit, Chronology chronology) = 0;
  virtual ExceptionType do_setStringValue(const char* value, const char* unit, Chronology chronology) = 0;
  virtual ICompositeAttribute* do_asComposite() noexcept = 0;
  virtual IEntity* do_asEntity() noexcept = 0;
  virtual IEntityLinkAttribute* do_asEntityLink() noexcept = 0;
  virtual ILinkAttribute* do_asLink() noexcept = 0;
  virtual IListAttribute* do_asList() noexcept = 0;
  virtual IArrayAttribute* do_asArray() noexcept = 0;
  virtual IShortcutAttribute* do_asShortcut() noexcept = 0;
};

} // namespace KorvanSDK::Model
