// An attribute that holds an ordered list of entities.
#pragma once

#include "ombrix/model/EntitySequenceAttribute.h"

namespace Ombrix::Model
{

class OMBRIX_API ListAttribute;
extern template class OMBRIX_API EntitySequenceAttribute<ListAttribute, 8, KorvanSDK::Model::IListAttribute>;

class OMBRIX_API ListAttribute
    : public EntitySequenceAttribute<ListAttribute, 8, KorvanSDK::Model::IListAttribute>
{
public:
  using EntitySequenceAttribute::EntitySequenceAttribute;
};

} // namespace Ombrix::Model
