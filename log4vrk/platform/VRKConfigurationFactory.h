// Where configured names lead.

#pragma once

#include <atomic>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Turns names of the configuration document into paths. One instance for the process.
///
/// Thread safety: any thread. What has been set is kept for good, so that nobody needs a lock to read it: set it once,
/// before the first configuration.
class LOG4VRK_EXPORT VRKConfigurationFactory {
 public:
  static VRKConfigurationFactory& getInstance();

  /// Makes relative names resolve below `directory`, which becomes absolute here and now; empty leaves them relative to
  /// the working directory, which is the default.
  void setBaseDirectory(const I18NString& directory);

  /// An absolute path comes back unchanged, and so does what was resolved before.
  I18NString resolvePath(const I18NString& name);

  /// Where libraries that the document names are looked for, in the order of the calls.
  void addLibraryDirectory(const I18NString& directory);
  /// The library in the first directory that has it; else the plain name, for the system's own search.
  I18NString resolveLibrary(const I18NString& fileName);

 private:
  VRKConfigurationFactory() = default;
  template <typename T, typename... Arguments>
  friend T& vrkImmortal(Arguments&&...);

  struct Settings {
    I18NString baseDirectory;
    std::vector<I18NString> libraryDirectories;
    const Settings* before;  // kept reachable: somebody may still read it
  };

  template <typename Change>
  void change(Change change);

  std::atomic<const Settings*> m_settings{new Settings{{}, {}, nullptr}};
};
