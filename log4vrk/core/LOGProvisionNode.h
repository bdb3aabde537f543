// The placeholder of an ancestor that has not been made yet.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKList.h"

/// The loggers that wait below a name. Owns none of them.
///
/// Thread safety: not thread-safe; under the lock of the table that holds it.
class LOG4VRK_EXPORT LOGProvisionNode : public LOGObject, public VRKList<LOGObject*> {
 public:
  explicit LOGProvisionNode(LOGObject* logger);
  LOGProvisionNode(const LOGProvisionNode&) = default;
  LOGProvisionNode& operator=(const LOGProvisionNode&) = default;
  ~LOGProvisionNode() override;

  LOGProvisionNode* clone() const override;
};
