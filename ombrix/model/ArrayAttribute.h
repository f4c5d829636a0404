// An attribute that holds an ordered array of entities (stored and handled as a list).
#pragma once

#include "ombrix/model/EntitySequenceAttribute.h"

namespace Ombrix::Model
{

class OMBRIX_API ArrayAttribute;
extern template class OMBRIX_API
    EntitySequenceAttribute<ArrayAttribute, 10, KorvanSDK::Model::IArrayAttribute>;

class OMBRIX_API ArrayAttribute
    : public EntitySequenceAttribute<ArrayAttribute, 10, KorvanSDK::Model::IArrayAttribute>
{
public:
  using EntitySequenceAttribute::EntitySequenceAttribute;
};

} // namespace Ombrix::Model
