// Raised when a user of the model reads or writes a value its access type does not allow.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <stdexcept>
#include <string>

namespace Ombrix::Model
{

class OMBRIX_API AccessException : public std::runtime_error
{
public:
  explicit AccessException(const std::string& message) : std::runtime_error(message) {}
};

} // namespace Ombrix::Model
