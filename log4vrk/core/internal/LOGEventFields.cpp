#include "log4vrk/core/internal/LOGEventFields.h"

bool LOGEventFields::has(LOGFields::Reader reader, std::string_view name) {
  for (LOGFields::Field field; reader.next(field);) {
    if (field.name == name) return true;
  }
  return false;
}

bool LOGEventFields::find(std::string_view name, LOGFields::Field& found) const {
  bool isThere = false;
  for (const std::string_view bytes : {context, own}) {
    LOGFields::Reader reader(bytes);
    for (LOGFields::Field field; reader.next(field);) {
      if (field.name != name) continue;
      found = field;
      isThere = true;
    }
  }
  return isThere;
}
