// AttributeReadError: the exception thrown for a content row of a CSV exchange file that names or
// describes an attribute that cannot be read into the model.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <stdexcept>
#include <string>

namespace Ombrix
{

class OMBRIX_API AttributeReadError : public std::runtime_error
{
public:
  explicit AttributeReadError(const std::string& message) : std::runtime_error(message) {}
};

} // namespace Ombrix
