// The element children of a node of the document.

#pragma once

#include <vector>

#include "log4vrk/platform/VRKIDOM.h"

inline std::vector<VRKIDOM_Element> logChildElements(const VRKIDOM_Node& parent) {
  std::vector<VRKIDOM_Element> elements;
  const VRKIDOM_NodeList children = parent.getChildNodes();
  const long count = children.getLength();
  for (long i = 0; i < count; ++i) {
    const VRKIDOM_Node child = children.item(i);
    if (child.getNodeType() == VRKIDOM_Node::ELEMENT_NODE) elements.emplace_back(child);
  }
  return elements;
}
