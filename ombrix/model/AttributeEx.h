// Binds a concrete attribute class to its type number, equality, streaming, visitor dispatch and
// host-facing interface: AttributeEx<Derived, N, Impl, Base> sits between Derived and its Base.
#pragma once

#include "ombrix/model/Attribute.h"
#include "ombrix/model/AttributeVisitorAbstract.h"
#include "ombrix/model/AttributeVisitorConstAbstract.h"

#include <memory>

namespace Ombrix::Model
{

template <class Derived, int TypeNumber, class Impl, class Base> class AttributeEx : public Base
{
public:
  static constexpr KorvanSDK::AttributeType attributeType = static_cast<KorvanSDK::AttributeType>(TypeNumber);

  using Base::Base;

  std::unique_ptr<KorvanSDK::Model::IAttribute> createSDKInterface() override
  {
    return std::make_unique<Impl>(static_cast<Derived&>(*this));
  }

protected:
  KorvanSDK::AttributeType do_GetAttributeType(bool) const override { return attributeType; }
  bool do_equals(const Attribute& other) const override
  {
    if (other.getAttributeType(false) != attributeType)
      return false;
    return static_cast<const Derived&>(*this).isEqual(static_cast<const Derived&>(other));
  }
  void do_write(FileSystem::DataOStream& out) const override
  {
    static_cast<const Derived&>(*this).toStream(out);
  }
  void do_read(FileSystem::DataIStream& in) override { static_cast<Derived&>(*this).fromStream(in); }
  void do_accept(AttributeVisitorConstAbstract& visitor) const override
  {
    visitor.visit(static_cast<const Derived&>(*this));
  }
  void do_accept(AttributeVisitorAbstract& visitor) override { visitor.visit(static_cast<Derived&>(*this)); }
};

} // namespace Ombrix::Model
