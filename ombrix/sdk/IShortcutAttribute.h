// The host SDK's view of a shortcut attribute: an attribute that stands for other attributes of its
// entity, named by paths. Its values are read and written through the IAttribute calls; these calls
// reach the targets themselves. Results and failures as in IAttribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

#include <cstdint>

namespace KorvanSDK::Model
{

class OMBRIX_API IShortcutAttribute : public IAttribute
{
public:
  // The number of target paths, resolvable or not.
  ExceptionType getNumberOfShortcuts(std::uint64_t& count) { return do_getNumberOfShortcuts(count); }
  // The target of path `index`. OutOfRange "No Shortcut_i='<index>'" past the last path; NullHandle
  // when the path names nothing in the model now.
  ExceptionType getShortcut(std::uint64_t index, IAttribute*& target)
  {
    return do_getShortcut(index, target);
  }
  // The target of the first path that resolves; NullHandle when none does.
  ExceptionType getFirstValidShortcut(IAttribute*& target) { return do_getFirstValidShortcut(target); }

protected:
  virtual ExceptionType do_getNumberOfShortcuts(std::uint64_t& count) = 0;
  virtual ExceptionType do_getShortcut(std::uint64_t index, IAttribute*& target) = 0;
  virtual ExceptionType do_getFirstValidShortcut(IAttribute*& target) = 0;
};

} // namespace KorvanSDK::Model
