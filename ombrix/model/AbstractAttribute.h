// The empty polymorphic root of every attribute.
#pragma once

#include "ombrix/OmbrixExport.h"

namespace Ombrix::Model
{

class OMBRIX_API AbstractAttribute
{
public:
  AbstractAttribute() = default;
  AbstractAttribute(const AbstractAttribute&) = default;
  AbstractAttribute& operator=(const AbstractAttribute&) = default;
  virtual ~AbstractAttribute() = default;
};

} // namespace Ombrix::Model
