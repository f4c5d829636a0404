// Owns the host-facing interface object of one attribute, created on first use.
#pragma once

#include "ombrix/sdk/IAttribute.h"

#include <memory>

namespace Ombrix::Model
{

class SDKInterfaceContainer
{
public:
  SDKInterfaceContainer() = default;
  // An attribute's interface object belongs to that attribute alone: copies start without one.
  SDKInterfaceContainer(const SDKInterfaceContainer&) {}
  SDKInterfaceContainer& operator=(const SDKInterfaceContainer&) { return *this; }
  SDKInterfaceContainer(SDKInterfaceContainer&&) noexcept {}
  SDKInterfaceContainer& operator=(SDKInterfaceContainer&&) noexcept { return *this; }

  KorvanSDK::Model::IAttribute* get() const { return m_interface.get(); }
  void reset(std::unique_ptr<KorvanSDK::Model::IAttribute> object) { m_interface = std::move(object); }

private:
  std::unique_ptr<KorvanSDK::Model::IAttribute> m_interface;
};

} // namespace Ombrix::Model
