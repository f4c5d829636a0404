// Untyped base of value storage.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/ValueType.h"

namespace Ombrix::Model::Data
{

class OMBRIX_API ValueAbstractBase
{
public:
  virtual ~ValueAbstractBase() = default;
  virtual ValueType getValueType() const = 0;
};

} // namespace Ombrix::Model::Data
