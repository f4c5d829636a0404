// Implementations of the host SDK's interfaces over the data model. Each binds to one model object,
// which must outlive it (the attribute owns its interface object).
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/IArrayAttribute.h"
#include "ombrix/sdk/IEntity.h"
#include "ombrix/sdk/ILinkAttribute.h"
#include "ombrix/sdk/IListAttribute.h"
#include "ombrix/sdk/IShortcutAttribute.h"

namespace Ombrix::Model
{
class Attribute;
class CompositeAttribute;
class Entity;
class EntityLinkAttributeBase;
class ShortcutAttribute;

class OMBRIX_API IAttributeImpl : public KorvanSDK::Model::IAttribute
{
public:
  explicit IAttributeImpl(Attribute& attribute) : m_attribute(&attribute) {}

protected:
  Attribute* m_attribute;
};

class OMBRIX_API ICompositeAttributeImpl : public KorvanSDK::Model::ICompositeAttribute
{
public:
  explicit ICompositeAttributeImpl(CompositeAttribute& attribute) : m_attribute(&attribute) {}

protected:
  CompositeAttribute* m_attribute;
};

class OMBRIX_API IEntityImpl : public KorvanSDK::Model::IEntity
{
public:
  explicit IEntityImpl(Entity& entity) : m_entity(&entity) {}

protected:
  Entity* m_entity;
};

template <class I>
class OMBRIX_API IEntityLinkAttributeBaseImpl : public I
{
public:
  explicit IEntityLinkAttributeBaseImpl(EntityLinkAttributeBase& attribute) : m_attribute(&attribute) {}

protected:
  EntityLinkAttributeBase* m_attribute;
};

class OMBRIX_API IShortcutAttributeImpl : public KorvanSDK::Model::IShortcutAttribute
{
public:
  explicit IShortcutAttributeImpl(ShortcutAttribute& attribute) : m_attribute(&attribute) {}

protected:
  ShortcutAttribute* m_attribute;
};

} // namespace Ombrix::Model
