#include "log4vrk/platform/I18NLocale.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace {

char16_t lowerAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c; }

}  // namespace

int I18NLocale::compareIgnoreCase(const I18NString& a, const I18NString& b) const {
  UErrorCode status = U_ZERO_ERROR;
  return u_strCaseCompare(a.view().data(), static_cast<std::int32_t>(a.length()), b.view().data(),
                          static_cast<std::int32_t>(b.length()), U_FOLD_CASE_DEFAULT, &status);
}

bool vrkEqualIgnoringCase(const I18NString& a, const I18NString& b) {
  return I18NLocale().compareIgnoreCase(a, b) == 0;
}

bool vrkEqualIgnoringAsciiCase(const I18NString& a, const I18NString& b) {
  if (a.length() != b.length()) return false;
  for (std::size_t i = 0; i < a.length(); ++i) {
    if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
  }
  return true;
}
