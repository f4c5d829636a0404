// The only file of the sdk folder that knows the model: the host-facing calls are defined here over
// the model classes, each body run through Handle::guard.
#include "ombrix/sdk/SDKInterfaceImpl.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/CompositeAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityLinkAttributeBase.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/sdk/FacadeException.h"

#include <stdexcept>
#include <string>

namespace Ombrix::Model
{

using KorvanSDK::requireArgument;
using KorvanSDK::Model::IAttribute;
using KorvanSDK::Model::IEntity;

KorvanSDK::Model::IAttribute* sdkAttribute(Attribute* attribute)
{
  IAttribute* handle = attribute ? attribute->getSDKInterface() : nullptr;
  if (!handle)
    throw KorvanSDK::FacadeException(KorvanSDK::ExceptionType::NullHandle, "No attribute to hand out");
  return handle;
}

KorvanSDK::Model::IEntity* sdkEntity(Entity* entity)
{
  IEntity* handle = entity ? dynamic_cast<IEntity*>(entity->getSDKInterface()) : nullptr;
  if (!handle)
    throw KorvanSDK::FacadeException(KorvanSDK::ExceptionType::NullHandle, "No entity to hand out");
  return handle;
}

namespace
{

void assignText(KorvanSDK::IString& out, const std::string& text)
{
  out.assign(text.data(), text.size());
}

// The unit argument of a setter: null is refused, "" writes in the attribute's own unit.
std::string unitArgument(const char* unit)
{
  return requireArgument(unit, "unit");
}

} // namespace

// ----- AttributeImplBase

template <class I, int N>
AttributeImplBase<I, N>::AttributeImplBase(Attribute& attribute) : m_attribute(&attribute)
{
}

template <class I, int N> AttributeImplBase<I, N>::~AttributeImplBase() = default;

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getAttributeType(bool resolve,
                                                                      KorvanSDK::AttributeType& type)
{
  return this->guard([&] { type = attribute().getAttributeType(resolve); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getType(KorvanSDK::IString& name)
{
  return this->guard([&] { assignText(name, attribute().type()); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getAttributePath(bool relative, KorvanSDK::IString& path)
{
  return this->guard([&] { assignText(path, attribute().getAttributePath(relative).toString()); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getAccessType(KorvanSDK::AccessType& access)
{
  return this->guard([&] { access = attribute().getAccessType(); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getEntityID(KorvanSDK::Model::EntityID& id)
{
  return this->guard([&] { id = attribute().getEntityIDAndAttributePath().first; });
}

template <class I, int N> KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_hasUnits(bool& has)
{
  return this->guard([&] { has = attribute().hasUnits(); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getUnit(KorvanSDK::IString& unit)
{
  return this->guard([&] { assignText(unit, attribute().getUnit()); });
}

template <class I, int N> KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_setUnit(const char* unit)
{
  return this->guard([&] { attribute().setUnit(unitArgument(unit)); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_hasValue(Chronology chronology, bool& has)
{
  return this->guard([&] { has = attribute().hasValue(chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getIntValue(Chronology chronology, int& value)
{
  return this->guard([&] { value = attribute().getIntValue(chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getBoolValue(Chronology chronology, bool& value)
{
  return this->guard([&] { value = attribute().getBoolValue(chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getFloatValue(Chronology chronology, float& value)
{
  return this->guard([&] { value = attribute().getFloatValue(chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getDoubleValue(Chronology chronology, double& value)
{
  return this->guard([&] { value = attribute().getDoubleValue(chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_getStringValue(Chronology chronology,
                                                                    KorvanSDK::IString& value)
{
  return this->guard([&] { assignText(value, attribute().getStringValue(chronology, true)); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_setIntValue(int value, const char* unit,
                                                                 Chronology chronology)
{
  return this->guard([&] { attribute().setIntValue(value, unitArgument(unit), chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_setBoolValue(bool value, const char* unit,
                                                                  Chronology chronology)
{
  return this->guard([&] { attribute().setBoolValue(value, unitArgument(unit), chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_setFloatValue(float value, const char* unit,
                                                                   Chronology chronology)
{
  return this->guard([&] { attribute().setFloatValue(value, unitArgument(unit), chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_setDoubleValue(double value, const char* unit,
                                                                    Chronology chronology)
{
  return this->guard([&] { attribute().setDoubleValue(value, unitArgument(unit), chronology, true); });
}

template <class I, int N>
KorvanSDK::ExceptionType AttributeImplBase<I, N>::do_setStringValue(const char* value, const char* unit,
                                                                    Chronology chronology)
{
  return this->guard(
      [&]
      {
        const std::string text = requireArgument(value, "value");
        attribute().setStringValue(text, unitArgument(unit), chronology, true);
      });
}

// The downcasts answer from the interface the handle implements, so they need no model call.
template <class Target, class Self> Target* asInterface(Self* self) noexcept
{
  if constexpr (std::is_base_of_v<Target, Self>)
    return self;
  else
    return nullptr;
}

template <class I, int N>
KorvanSDK::Model::ICompositeAttribute* AttributeImplBase<I, N>::do_asComposite() noexcept
{
  return asInterface<KorvanSDK::Model::ICompositeAttribute>(static_cast<I*>(this));
}

template <class I, int N> KorvanSDK::Model::IEntity* AttributeImplBase<I, N>::do_asEntity() noexcept
{
  return asInterface<KorvanSDK::Model::IEntity>(static_cast<I*>(this));
}

template <class I, int N>
KorvanSDK::Model::IEntityLinkAttribute* AttributeImplBase<I, N>::do_asEntityLink() noexcept
{
  return asInterface<KorvanSDK::Model::IEntityLinkAttribute>(static_cast<I*>(this));
}

template <class I, int N> KorvanSDK::Model::ILinkAttribute* AttributeImplBase<I, N>::do_asLink() noexcept
{
  return asInterface<KorvanSDK::Model::ILinkAttribute>(static_cast<I*>(this));
}

template <class I, int N> KorvanSDK::Model::IListAttribute* AttributeImplBase<I, N>::do_asList() noexcept
{
  return asInterface<KorvanSDK::Model::IListAttribute>(static_cast<I*>(this));
}

template <class I, int N> KorvanSDK::Model::IArrayAttribute* AttributeImplBase<I, N>::do_asArray() noexcept
{
  return asInterface<KorvanSDK::Model::IArrayAttribute>(static_cast<I*>(this));
}

template <class I, int N>
KorvanSDK::Model::IShortcutAttribute* AttributeImplBase<I, N>::do_asShortcut() noexcept
{
  return asInterface<KorvanSDK::Model::IShortcutAttribute>(static_cast<I*>(this));
}

// ----- CompositeAttributeImplBase

template <class I, int N>
CompositeAttributeImplBase<I, N>::CompositeAttributeImplBase(CompositeAttribute& attribute)
    : AttributeImplBase<I, N>(attribute)
{
}

template <class I, int N> CompositeAttribute& CompositeAttributeImplBase<I, N>::composite() const
{
  return static_cast<CompositeAttribute&>(this->attribute());
}

template <class I, int N>
KorvanSDK::ExceptionType CompositeAttributeImplBase<I, N>::do_getNumberOfAttributes(bool recursive,
                                                                                    std::uint64_t& count)
{
  return this->guard([&] { count = composite().getNumberOfAttributes(recursive); });
}

template <class I, int N>
KorvanSDK::ExceptionType
CompositeAttributeImplBase<I, N>::do_getAttribute(std::uint64_t index, bool recursive, IAttribute*& attribute)
{
  attribute = nullptr;
  return this->guard([&] { attribute = sdkAttribute(&composite().getAttribute(index, recursive)); });
}

template <class I, int N>
KorvanSDK::ExceptionType CompositeAttributeImplBase<I, N>::do_getAttributeByName(const char* name,
                                                                                 IAttribute*& attribute)
{
  attribute = nullptr;
  return this->guard(
      [&]
      {
        const std::string childName = requireArgument(name, "name");
        Attribute* child = composite().findChild(childName);
        if (!child)
        {
          // The path lookup composes the model's "Invalid path ..." text; a dotted name may still resolve
          // as a path to something that is no child, which is no answer either.
          composite().getAttribute(AttributePath(childName));
          throw std::runtime_error("No child named '" + childName + "' in " +
                                   composite().getAttributePath(false).toString());
        }
        attribute = sdkAttribute(child);
      });
}

template <class I, int N>
KorvanSDK::ExceptionType CompositeAttributeImplBase<I, N>::do_getAttributeByPath(const char* path,
                                                                                 IAttribute*& attribute)
{
  attribute = nullptr;
  return this->guard(
      [&]
      {
        const AttributePath attributePath(std::string(requireArgument(path, "path")));
        attribute = sdkAttribute(&composite().getAttribute(attributePath));
      });
}

// ----- concrete handles

IAttributeImpl::IAttributeImpl(Attribute& attribute) : AttributeImplBase(attribute) {}

ICompositeAttributeImpl::ICompositeAttributeImpl(CompositeAttribute& attribute)
    : CompositeAttributeImplBase(attribute)
{
}

IEntityImpl::IEntityImpl(Entity& entity) : CompositeAttributeImplBase(entity) {}

Entity& IEntityImpl::entity() const
{
  return static_cast<Entity&>(attribute());
}

KorvanSDK::ExceptionType IEntityImpl::do_getName(bool full, KorvanSDK::IString& name)
{
  return guard([&] { assignText(name, entity().getName(full)); });
}

KorvanSDK::ExceptionType IEntityImpl::do_getUniqueID(KorvanSDK::Model::EntityID& id)
{
  return guard([&] { id = entity().getUniqueID(); });
}

template <class I>
IEntityLinkAttributeBaseImpl<I>::IEntityLinkAttributeBaseImpl(EntityLinkAttributeBase& attribute)
    : AttributeImplBase<I, entityLinkHandleType<I>>(attribute)
{
}

template <class I> EntityLinkAttributeBase& IEntityLinkAttributeBaseImpl<I>::link() const
{
  return static_cast<EntityLinkAttributeBase&>(this->attribute());
}

template <class I>
KorvanSDK::ExceptionType
IEntityLinkAttributeBaseImpl<I>::do_getRelationshipType(KorvanSDK::IString& relationship)
{
  return this->guard([&] { assignText(relationship, link().getRelationshipType()); });
}

template <class I> KorvanSDK::ExceptionType IEntityLinkAttributeBaseImpl<I>::do_getOwnsEntities(bool& owns)
{
  return this->guard([&] { owns = link().getOwnsEntities(); });
}

template <class I>
KorvanSDK::ExceptionType IEntityLinkAttributeBaseImpl<I>::do_getNumberOfEntities(std::uint64_t& count)
{
  return this->guard([&] { count = link().getNumberOfEntities(); });
}

template <class I>
KorvanSDK::ExceptionType IEntityLinkAttributeBaseImpl<I>::do_getEntity(std::uint64_t index, IEntity*& entity)
{
  entity = nullptr;
  return this->guard([&] { entity = sdkEntity(link().getEntity(static_cast<std::size_t>(index))); });
}

template <class I>
KorvanSDK::ExceptionType
IEntityLinkAttributeBaseImpl<I>::do_getEntityByID(const KorvanSDK::Model::EntityID& id, IEntity*& entity)
{
  entity = nullptr;
  return this->guard([&] { entity = sdkEntity(link().getEntity(EntityID(id))); });
}

IShortcutAttributeImpl::IShortcutAttributeImpl(ShortcutAttribute& attribute) : AttributeImplBase(attribute) {}

ShortcutAttribute& IShortcutAttributeImpl::shortcut() const
{
  return static_cast<ShortcutAttribute&>(attribute());
}

KorvanSDK::ExceptionType IShortcutAttributeImpl::do_getNumberOfShortcuts(std::uint64_t& count)
{
  return guard([&] { count = shortcut().getNumberOfShortcuts(); });
}

KorvanSDK::ExceptionType IShortcutAttributeImpl::do_getShortcut(std::uint64_t index, IAttribute*& target)
{
  target = nullptr;
  return guard(
      [&]
      {
        Attribute* resolved = shortcut().getShortcut(static_cast<std::size_t>(index));
        if (!resolved)
          throw KorvanSDK::FacadeException(
              KorvanSDK::ExceptionType::NullHandle,
              "Shortcut_i='" + std::to_string(index) + "' names no attribute: path '" +
                  shortcut().shortcuts()[index].toString() + "' resolves to nothing");
        target = sdkAttribute(resolved);
      });
}

KorvanSDK::ExceptionType IShortcutAttributeImpl::do_getFirstValidShortcut(IAttribute*& target)
{
  target = nullptr;
  return guard(
      [&]
      {
        Attribute* resolved = shortcut().getFirstValidShortcut();
        if (!resolved)
          throw KorvanSDK::FacadeException(KorvanSDK::ExceptionType::NullHandle,
                                           "No Shortcut resolves: none of the " +
                                               std::to_string(shortcut().getNumberOfShortcuts()) +
                                               " paths names an attribute");
        target = sdkAttribute(resolved);
      });
}

template class AttributeImplBase<KorvanSDK::Model::IAttribute, KorvanSDK::HandleType::Attribute>;
template class AttributeImplBase<KorvanSDK::Model::ICompositeAttribute,
                                 KorvanSDK::HandleType::CompositeAttribute>;
template class AttributeImplBase<KorvanSDK::Model::IEntity, KorvanSDK::HandleType::Entity>;
template class AttributeImplBase<KorvanSDK::Model::ILinkAttribute, KorvanSDK::HandleType::LinkAttribute>;
template class AttributeImplBase<KorvanSDK::Model::IListAttribute, KorvanSDK::HandleType::ListAttribute>;
template class AttributeImplBase<KorvanSDK::Model::IArrayAttribute, KorvanSDK::HandleType::ArrayAttribute>;
template class AttributeImplBase<KorvanSDK::Model::IShortcutAttribute,
                                 KorvanSDK::HandleType::ShortcutAttribute>;
template class CompositeAttributeImplBase<KorvanSDK::Model::ICompositeAttribute,
                                          KorvanSDK::HandleType::CompositeAttribute>;
template class CompositeAttributeImplBase<KorvanSDK::Model::IEntity, KorvanSDK::HandleType::Entity>;
template class IEntityLinkAttributeBaseImpl<KorvanSDK::Model::ILinkAttribute>;
template class IEntityLinkAttributeBaseImpl<KorvanSDK::Model::IListAttribute>;
template class IEntityLinkAttributeBaseImpl<KorvanSDK::Model::IArrayAttribute>;

} // namespace Ombrix::Model
