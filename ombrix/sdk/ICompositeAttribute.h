// The host SDK's view of an attribute that holds child attributes: counting them and reaching them by
// index, name and path. Results and failures as in IAttribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

#include <cstdint>

namespace KorvanSDK::Model
{

class OMBRIX_API ICompositeAttribute : public IAttribute
{
public:
  // Direct children, or with `recursive` the whole subtree below this attribute.
  ExceptionType getNumberOfAttributes(bool recursive, std::uint64_t& count)
  {
    return do_getNumberOfAttributes(recursive, count);
  }
  // Child `index`, or with `recursive` the index-th attribute of the subtree in depth-first pre-order.
  // OutOfRange "No Attribute Found for ... child_i='<index>'".
  ExceptionType getAttribute(std::uint64_t index, bool recursive, IAttribute*& attribute)
  {
    return do_getAttribute(index, recursive, attribute);
  }
  // The direct child named `name` (taken whole, "." included). RuntimeError "Invalid path ..." when
  // there is none.
  ExceptionType getAttributeByName(const char* name, IAttribute*& attribute)
  {
    return do_getAttributeByName(name, attribute);
  }
  // The attribute at the "."-joined `path` below this one, running through composites, entities and
  // (by entity index) links, lists and arrays; "" is this attribute. RuntimeError "Invalid path ..." or
  // a link's OutOfRange when nothing is there.
  ExceptionType getAttributeByPath(const char* path, IAttribute*& attribute)
  {
    return do_getAttributeByPath(path, attribute);
  }

protected:
  virtual ExceptionType do_getNumberOfAttributes(bool recursive, std::uint64_t& count) = 0;
  virtual ExceptionType do_getAttribute(std::uint64_t index, bool recursive, IAttribute*& attribute) = 0;
  virtual ExceptionType do_getAttributeByName(const char* name, IAttribute*& attribute) = 0;
  virtual ExceptionType do_getAttributeByPath(const char* path, IAttribute*& attribute) = 0;
};

} // namespace KorvanSDK::Model
