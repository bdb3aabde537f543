// ${NAME} in the values of a document.

#pragma once

#include <string>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKIDOM.h"

/// Puts the values of variables in place of ${NAME} and ${NAME:-default}, in documents that ask for it. A variable is
/// the program's own, or else one of the environment. One that is empty counts as not set. What is put in is not looked
/// at again, so that a value cannot name further variables. $${ stands for ${ itself, and any other $ for itself.
///
/// Thread safety: any thread.
class LOGVariables {
 public:
  /// A variable of the program's own; an empty value takes it away.
  static void set(const I18NString& name, const I18NString& value);
  static bool isName(const I18NString& name);

  /// Whether the root element asks for it.
  static bool areWanted(const VRKIDOM_Element& root);
  /// The value attribute of an element; with `areWanted`, with variables put in. Where that is not possible the value
  /// is empty, and `problem` says why: otherwise that is empty.
  static I18NString valueOf(const VRKIDOM_Element& element, bool areWanted, std::string& problem);
};
