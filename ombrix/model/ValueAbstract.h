// Typed interface of value storage: read and write by chronology.
#pragma once

#include "ombrix/model/ValueAbstractBase.h"
#include "ombrix/sdk/Chronology.h"

#include <memory>

namespace Ombrix::Model::Data
{

template <typename T> class OMBRIX_API ValueAbstract : public ValueAbstractBase
{
public:
  // The value for `chronology`; std::out_of_range "Chronology Out Of Range" when none applies.
  virtual const T& get(KorvanSDK::Chronology chronology) const = 0;
  // The stored entry for `chronology`, created from the chronology before it when absent.
  virtual T& getForWrite(KorvanSDK::Chronology chronology) = 0;
  // Whether get(chronology) succeeds.
  virtual bool has(KorvanSDK::Chronology chronology) const = 0;
  virtual std::unique_ptr<ValueAbstract<T>> clone() const = 0;
  virtual bool equals(const ValueAbstract<T>& other) const = 0;
};

} // namespace Ombrix::Model::Data
