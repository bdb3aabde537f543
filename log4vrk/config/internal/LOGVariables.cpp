#include "log4vrk/config/internal/LOGVariables.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

constexpr std::string_view BEGIN = "${", ESCAPED_BEGIN = "$${", DEFAULT = ":-";

VRKMutex g_mutex;
std::map<std::string, std::string, std::less<>>& g_variables VRK_GUARDED_BY(g_mutex) =
    vrkImmortal<std::map<std::string, std::string, std::less<>>>();

bool isName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
  });
}

std::string valueOfVariable(std::string_view name) {
  {
    const LOGLeafGuard guard(g_mutex);
    const auto found = g_variables.find(name);
    if (found != g_variables.end()) return found->second;
  }
  return VRKProcess::environment(std::string(name).c_str());
}

// What stands between the braces.
std::string valueOfItem(std::string_view item, std::string& problem) {
  const std::size_t colon = item.find(DEFAULT);
  const std::string_view name = item.substr(0, colon);
  if (!isName(name)) {
    problem = "${" + std::string(item) + "}: a name has letters, digits, _ and . only";
  } else if (item.find(BEGIN) != item.npos) {
    problem = "${" + std::string(name) + "}: a default has no variables in it";
  } else {
    std::string value = valueOfVariable(name);
    if (!value.empty() || colon != item.npos) return !value.empty() ? value : std::string(item.substr(colon + 2));
    problem = "${" + std::string(name) + "} is not set and has no default";
  }
  return {};
}

std::string putIn(std::string_view rest, std::string& problem) {
  std::string result;
  for (std::size_t dollar; (dollar = rest.find('$')) != rest.npos;) {
    result.append(rest.substr(0, dollar));
    rest.remove_prefix(dollar);
    if (rest.substr(0, ESCAPED_BEGIN.size()) == ESCAPED_BEGIN) {
      result.append(BEGIN);
      rest.remove_prefix(ESCAPED_BEGIN.size());
    } else if (rest.substr(0, BEGIN.size()) != BEGIN) {
      result += '$';
      rest.remove_prefix(1);
    } else {
      const std::size_t end = rest.find('}');
      if (end == rest.npos) {
        problem = "${ without }";
        return {};
      }
      result.append(valueOfItem(rest.substr(BEGIN.size(), end - BEGIN.size()), problem));
      if (!problem.empty()) return {};
      rest.remove_prefix(end + 1);
    }
  }
  return result.append(rest);
}

}  // namespace

void LOGVariables::set(const I18NString& name, const I18NString& value) {
  std::string key = name.toUtf8(), text = value.toUtf8();
  const LOGLeafGuard guard(g_mutex);
  if (text.empty()) {
    g_variables.erase(key);
  } else {
    g_variables[std::move(key)] = std::move(text);
  }
}

bool LOGVariables::isName(const I18NString& name) { return ::isName(name.toUtf8()); }

bool LOGVariables::areWanted(const VRKIDOM_Element& root) {
  return vrkEqualIgnoringAsciiCase(root.getAttribute(LOGDOMConfigurator::SUBSTITUTE_ATTR), "true");
}

I18NString LOGVariables::valueOf(const VRKIDOM_Element& element, bool areWanted, std::string& problem) {
  problem.clear();
  I18NString value = element.getAttribute(LOGDOMConfigurator::VALUE_ATTR);
  if (!areWanted) return value;
  const std::string text = value.toUtf8();
  return text.find('$') == text.npos ? value : I18NString(std::string_view(putIn(text, problem)));
}
