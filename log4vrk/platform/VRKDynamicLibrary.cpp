#include "log4vrk/platform/VRKDynamicLibrary.h"

#include <dlfcn.h>

void* VRKDynamicLibrary::open(const I18NString& path) { return ::dlopen(path.toUtf8().c_str(), RTLD_LAZY); }

void* VRKDynamicLibrary::symbol(void* handle, const char* name) {
  return handle != nullptr ? ::dlsym(handle, name) : nullptr;
}

bool VRKDynamicLibrary::close(void* handle) { return ::dlclose(handle) == 0; }
