#include "log4vrk/platform/internal/VRKDynamicLibrary.h"

#include <dlfcn.h>

#include <climits>
#include <string>

#include "log4vrk/platform/VRKThrowable.h"

namespace {

// The folder of this library's file, with a slash at its end; empty when it is not known. RTLD_DI_ORIGIN is absolute:
// the name that dladdr() tells may be relative to a working directory that has changed since the library was loaded.
std::string ownFolder() {
  static const char inside = 0;
  Dl_info information;
  void* library = nullptr;
  char folder[PATH_MAX] = "";
  if (::dladdr1(&inside, &information, &library, RTLD_DL_LINKMAP) == 0) return "";
  if (::dlinfo(library, RTLD_DI_ORIGIN, folder) != 0) return "";
  return std::string(folder) + "/";
}

}  // namespace

void* VRKDynamicLibrary::open(const I18NString& path) { return ::dlopen(path.toUtf8().c_str(), RTLD_LAZY); }

void* VRKDynamicLibrary::moduleFunction(const char* module, const char* name) {
  void* handle = ::dlopen((ownFolder() + module).c_str(), RTLD_LAZY);
  if (handle == nullptr) {
    const I18NString reason = ::dlerror();  // before the next attempt, whose "not found" would hide it
    handle = ::dlopen(module, RTLD_LAZY);
    if (handle == nullptr) throw VRKThrowable(I18NString(module) + " could not be loaded: " + reason, VRK_HERE);
  }
  void* const function = symbol(handle, name);
  if (function == nullptr) throw VRKThrowable(I18NString(module) + " is of another version", VRK_HERE);
  return function;
}

void* VRKDynamicLibrary::symbol(void* handle, const char* name) {
  return handle != nullptr ? ::dlsym(handle, name) : nullptr;
}

bool VRKDynamicLibrary::close(void* handle) { return ::dlclose(handle) == 0; }
