#include "log4vrk/platform/VRKConfigurationFactory.h"

#include <filesystem>

#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKThrowable.h"

VRKConfigurationFactory& VRKConfigurationFactory::getInstance() {
  static VRKConfigurationFactory& instance = vrkImmortal<VRKConfigurationFactory>();
  return instance;
}

// Readers take no lock, so settings are never changed: a changed copy takes their place in one step.
template <typename Change>
void VRKConfigurationFactory::change(Change change) {
  const Settings* before = m_settings;
  Settings* after = nullptr;
  do {
    delete after;  // another thread changed the settings meanwhile: again, by its settings
    after = new Settings(*before);
    after->before = before;
    change(*after);
  } while (!m_settings.compare_exchange_weak(before, after));
}

void VRKConfigurationFactory::setBaseDirectory(const I18NString& directory) {
  I18NString absolute;  // from now on, wherever the program's working directory goes later
  if (!directory.isEmpty())
    absolute = I18NString(std::string_view(std::filesystem::absolute(directory.toUtf8()).string()));
  change([&](Settings& settings) { settings.baseDirectory = absolute; });
}

I18NString VRKConfigurationFactory::resolvePath(const I18NString& name) {
  const I18NString& base = m_settings.load()->baseDirectory;
  return base.isEmpty() || name.isEmpty() || name[0] == u'/' ? name : base + "/" + name;
}

void VRKConfigurationFactory::addLibraryDirectory(const I18NString& directory) {
  change([&](Settings& settings) { settings.libraryDirectories.push_back(directory); });
}

I18NString VRKConfigurationFactory::resolveLibrary(const I18NString& fileName) {
  for (const I18NString& directory : m_settings.load()->libraryDirectories) {
    I18NString path = directory + "/" + fileName;
    if (VRKFmDir::exists(path, VRKFmDir::REGULAR_FILE)) return path;
  }
  return fileName;
}
