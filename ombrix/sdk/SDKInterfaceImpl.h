// Implementations of the host SDK's interfaces over the data model. Each binds to one model object,
// which owns it (Attribute::getSDKInterface creates it on first use) and so outlives it. Every call
// runs through Handle::guard: what the model throws becomes the returned code, and its message stays
// on the handle. The model classes are only declared here; the calls are defined in
// SDKInterfaceImpl.cpp. One thread at a time, like the model.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/Handle.h"
#include "ombrix/sdk/IArrayAttribute.h"
#include "ombrix/sdk/IEntity.h"
#include "ombrix/sdk/ILinkAttribute.h"
#include "ombrix/sdk/IListAttribute.h"
#include "ombrix/sdk/IShortcutAttribute.h"

#include <cstdint>
#include <type_traits>

namespace Ombrix::Model
{
class Attribute;
class CompositeAttribute;
class Entity;
class EntityLinkAttributeBase;
class ShortcutAttribute;

// The host handle of a model attribute or entity, created on first use and owned by it. Throws
// KorvanSDK::FacadeException (NullHandle) for a null pointer or an object without a handle; meant for
// use inside Handle::guard.
OMBRIX_API KorvanSDK::Model::IAttribute* sdkAttribute(Attribute* attribute);
OMBRIX_API KorvanSDK::Model::IEntity* sdkEntity(Entity* entity);

// The IAttribute calls, for every interface I derived from IAttribute.
template <class I, int N> class OMBRIX_API AttributeImplBase : public KorvanSDK::Handle<I, N>
{
public:
  using ExceptionType = KorvanSDK::ExceptionType;
  using Chronology = KorvanSDK::Chronology;

  explicit AttributeImplBase(Attribute& attribute);
  AttributeImplBase(const AttributeImplBase&) = delete;
  AttributeImplBase& operator=(const AttributeImplBase&) = delete;
  ~AttributeImplBase() override;

protected:
  Attribute& attribute() const { return *m_attribute; }

  ExceptionType do_getAttributeType(bool resolve, KorvanSDK::AttributeType& type) override;
  ExceptionType do_getType(KorvanSDK::IString& name) override;
  ExceptionType do_getAttributePath(bool relative, KorvanSDK::IString& path) override;
  ExceptionType do_getAccessType(KorvanSDK::AccessType& access) override;
  ExceptionType do_getEntityID(KorvanSDK::Model::EntityID& id) override;
  ExceptionType do_hasUnits(bool& has) override;
  ExceptionType do_getUnit(KorvanSDK::IString& unit) override;
  ExceptionType do_setUnit(const char* unit) override;
  ExceptionType do_hasValue(Chronology chronology, bool& has) override;
  ExceptionType do_getIntValue(Chronology chronology, int& value) override;
  ExceptionType do_getBoolValue(Chronology chronology, bool& value) override;
  ExceptionType do_getFloatValue(Chronology chronology, float& value) override;
  ExceptionType do_getDoubleValue(Chronology chronology, double& value) override;
  ExceptionType do_getStringValue(Chronology chronology, KorvanSDK::IString& value) override;
  ExceptionType do_setIntValue(int value, const char* unit, Chronology chronology) override;
  ExceptionType do_setBoolValue(bool value, const char* unit, Chronology chronology) override;
  ExceptionType do_setFloatValue(float value, const char* unit, Chronology chronology) override;
  ExceptionType do_setDoubleValue(double value, const char* unit, Chronology chronology) override;
  ExceptionType do_setStringValue(const char* value, const char* unit, Chronology chronology) override;
  KorvanSDK::Model::ICompositeAttribute* do_asComposite() noexcept override;
  KorvanSDK::Model::IEntity* do_asEntity() noexcept override;
  KorvanSDK::Model::IEntityLinkAttribute* do_asEntityLink() noexcept override;
  KorvanSDK::Model::ILinkAttribute* do_asLink() noexcept override;
  KorvanSDK::Model::IListAttribute* do_asList() noexcept override;
  KorvanSDK::Model::IArrayAttribute* do_asArray() noexcept override;
  KorvanSDK::Model::IShortcutAttribute* do_asShortcut() noexcept override;

private:
  Attribute* m_attribute;
};

// The ICompositeAttribute calls, for ICompositeAttribute and IEntity.
template <class I, int N> class OMBRIX_API CompositeAttributeImplBase : public AttributeImplBase<I, N>
{
public:
  using ExceptionType = KorvanSDK::ExceptionType;

  explicit CompositeAttributeImplBase(CompositeAttribute& attribute);

protected:
  CompositeAttribute& composite() const;

  ExceptionType do_getNumberOfAttributes(bool recursive, std::uint64_t& count) override;
  ExceptionType do_getAttribute(std::uint64_t index, bool recursive,
                                KorvanSDK::Model::IAttribute*& attribute) override;
  ExceptionType do_getAttributeByName(const char* name, KorvanSDK::Model::IAttribute*& attribute) override;
  ExceptionType do_getAttributeByPath(const char* path, KorvanSDK::Model::IAttribute*& attribute) override;
};

// Value attributes (every ValueAttribute<T>).
class OMBRIX_API IAttributeImpl final
    : public AttributeImplBase<KorvanSDK::Model::IAttribute, KorvanSDK::HandleType::Attribute>
{
public:
  explicit IAttributeImpl(Attribute& attribute);
};

class OMBRIX_API ICompositeAttributeImpl final
    : public CompositeAttributeImplBase<KorvanSDK::Model::ICompositeAttribute,
                                        KorvanSDK::HandleType::CompositeAttribute>
{
public:
  explicit ICompositeAttributeImpl(CompositeAttribute& attribute);
};

class OMBRIX_API IEntityImpl final
    : public CompositeAttributeImplBase<KorvanSDK::Model::IEntity, KorvanSDK::HandleType::Entity>
{
public:
  explicit IEntityImpl(Entity& entity);

protected:
  ExceptionType do_getName(bool full, KorvanSDK::IString& name) override;
  ExceptionType do_getUniqueID(KorvanSDK::Model::EntityID& id) override;

private:
  Entity& entity() const;
};

template <class I>
inline constexpr int entityLinkHandleType =
    std::is_same_v<I, KorvanSDK::Model::ILinkAttribute>   ? KorvanSDK::HandleType::LinkAttribute
    : std::is_same_v<I, KorvanSDK::Model::IListAttribute> ? KorvanSDK::HandleType::ListAttribute
                                                          : KorvanSDK::HandleType::ArrayAttribute;

// Link, list and array attributes: I is ILinkAttribute, IListAttribute or IArrayAttribute.
template <class I>
class OMBRIX_API IEntityLinkAttributeBaseImpl final : public AttributeImplBase<I, entityLinkHandleType<I>>
{
public:
  using ExceptionType = KorvanSDK::ExceptionType;

  explicit IEntityLinkAttributeBaseImpl(EntityLinkAttributeBase& attribute);

protected:
  ExceptionType do_getRelationshipType(KorvanSDK::IString& relationship) override;
  ExceptionType do_getOwnsEntities(bool& owns) override;
  ExceptionType do_getNumberOfEntities(std::uint64_t& count) override;
  ExceptionType do_getEntity(std::uint64_t index, KorvanSDK::Model::IEntity*& entity) override;
  ExceptionType do_getEntityByID(const KorvanSDK::Model::EntityID& id,
                                 KorvanSDK::Model::IEntity*& entity) override;

private:
  EntityLinkAttributeBase& link() const;
};

class OMBRIX_API IShortcutAttributeImpl final
    : public AttributeImplBase<KorvanSDK::Model::IShortcutAttribute, KorvanSDK::HandleType::ShortcutAttribute>
{
public:
  explicit IShortcutAttributeImpl(ShortcutAttribute& attribute);

protected:
  ExceptionType do_getNumberOfShortcuts(std::uint64_t& count) override;
  ExceptionType do_getShortcut(std::uint64_t index, KorvanSDK::Model::IAttribute*& target) override;
  ExceptionType do_getFirstValidShortcut(KorvanSDK::Model::IAttribute*& target) override;

private:
  ShortcutAttribute& shortcut() const;
};

// Defined (explicitly instantiated) in SDKInterfaceImpl.cpp.
extern template class AttributeImplBase<KorvanSDK::Model::IAttribute, KorvanSDK::HandleType::Attribute>;
extern template class AttributeImplBase<KorvanSDK::Model::ICompositeAttribute,
                                        KorvanSDK::HandleType::CompositeAttribute>;
extern template class AttributeImplBase<KorvanSDK::Model::IEntity, KorvanSDK::HandleType::Entity>;
extern template class AttributeImplBase<KorvanSDK::Model::ILinkAttribute,
                                        KorvanSDK::HandleType::LinkAttribute>;
extern template class AttributeImplBase<KorvanSDK::Model::IListAttribute,
                                        KorvanSDK::HandleType::ListAttribute>;
extern template class AttributeImplBase<KorvanSDK::Model::IArrayAttribute,
                                        KorvanSDK::HandleType::ArrayAttribute>;
extern template class AttributeImplBase<KorvanSDK::Model::IShortcutAttribute,
                                        KorvanSDK::HandleType::ShortcutAttribute>;
extern template class CompositeAttributeImplBase<KorvanSDK::Model::ICompositeAttribute,
                                                 KorvanSDK::HandleType::CompositeAttribute>;
extern template class CompositeAttributeImplBase<KorvanSDK::Model::IEntity, KorvanSDK::HandleType::Entity>;
extern template class IEntityLinkAttributeBaseImpl<KorvanSDK::Model::ILinkAttribute>;
extern template class IEntityLinkAttributeBaseImpl<KorvanSDK::Model::IListAttribute>;
extern template class IEntityLinkAttributeBaseImpl<KorvanSDK::Model::IArrayAttribute>;

} // namespace Ombrix::Model
