#include "log4vrk/core/LOGProvisionNode.h"

#include "log4vrk/platform/VRKThrowable.h"

LOGProvisionNode::LOGProvisionNode(LOGObject* logger) {
  instance("LOGProvisionNode");
  push_back(logger);
}

LOGProvisionNode::~LOGProvisionNode() = default;

LOGProvisionNode* LOGProvisionNode::clone() const { return vrkNew<LOGProvisionNode>(VRK_HERE, *this); }
