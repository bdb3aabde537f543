// Where the names in a configuration document lead.

#pragma once

#include <atomic>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Turns names of the configuration document into paths. There is one instance for the process. A program sets it up
/// before its first configuration.
///
/// Thread safety: any thread. Each change keeps all earlier settings in memory for good, so that reading takes no lock:
/// do not change them again and again.
class LOG4VRK_EXPORT VRKConfigurationFactory {
 public:
  static VRKConfigurationFactory& getInstance();

  /// Makes relative names of files lead below `directory`. A relative `directory` is made absolute at once. Empty is
  /// the default: names are then relative to the working directory at the time when a file is opened.
  void setBaseDirectory(const I18NString& directory);

  /// The path of a file. An absolute or empty name comes back unchanged, and so does a path that was resolved before.
  I18NString resolvePath(const I18NString& name);

  /// Adds a directory in which libraries that the document names are looked for, after those that were added before.
  void addLibraryDirectory(const I18NString& directory);
  /// The path of the library in the first directory that has it; the plain name where none has, so that the system
  /// searches its own directories.
  I18NString resolveLibrary(const I18NString& fileName);

 private:
  VRKConfigurationFactory() = default;
  template <typename T, typename... Arguments>
  friend T& vrkImmortal(Arguments&&...);

  struct Settings {
    I18NString baseDirectory;
    std::vector<I18NString> libraryDirectories;
    const Settings* before;  // never freed, because a thread may still be reading it; reachable for leak checkers
  };

  template <typename Change>
  void change(Change change);

  std::atomic<const Settings*> m_settings{new Settings{{}, {}, nullptr}};
};
