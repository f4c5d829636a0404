// Owning, move-only wrapper around one attribute (or entity) of the tree.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/AttributeType.h"

#include <memory>
#include <utility>

namespace Ombrix::Model
{

template <typename T> class AttributeContainer
{
public:
  AttributeContainer() = default;
  AttributeContainer(std::unique_ptr<T> object) : m_object(std::move(object)) {}
  template <typename U> AttributeContainer(std::unique_ptr<U> object) : m_object(std::move(object)) {}
  AttributeContainer(AttributeContainer&&) noexcept = default;
  AttributeContainer& operator=(AttributeContainer&&) noexcept = default;
  AttributeContainer& operator=(std::unique_ptr<T> object)
  {
    m_object = std::move(object);
    return *this;
  }

  explicit operator bool() const { return m_object != nullptr; }
  bool empty() const { return m_object == nullptr; }
  operator T&() const { return *m_object; }
  T& operator*() const { return *m_object; }
  T* operator->() const { return m_object.get(); }
  T* get() const { return m_object.get(); }
  std::unique_ptr<T> release() { return std::move(m_object); }
  KorvanSDK::AttributeType getAttributeType() const { return m_object->getAttributeType(false); }
  void clear() { m_object.reset(); }

  // Two empty containers are equal; two full ones compare their attributes deeply.
  friend bool operator==(const AttributeContainer& a, const AttributeContainer& b)
  {
    if (!a.m_object || !b.m_object)
      return !a.m_object && !b.m_object;
    return a.m_object->equals(*b.m_object);
  }

private:
  std::unique_ptr<T> m_object;
};

} // namespace Ombrix::Model
