#include "log4vrk/platform/internal/VRKDynamicLibrary.h"

#include <dlfcn.h>

#include <climits>
#include <string>

namespace {

// With a slash at its end. Where the file was when it was loaded, whatever the working directory has become since.
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

void* VRKDynamicLibrary::openModule(const char* name, I18NString& reason) {
  if (void* const module = ::dlopen((ownFolder() + name).c_str(), RTLD_LAZY)) return module;
  reason = ::dlerror();
  return ::dlopen(name, RTLD_LAZY);
}

void* VRKDynamicLibrary::symbol(void* handle, const char* name) {
  return handle != nullptr ? ::dlsym(handle, name) : nullptr;
}

bool VRKDynamicLibrary::close(void* handle) { return ::dlclose(handle) == 0; }
