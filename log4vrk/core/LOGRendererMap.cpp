#include "log4vrk/core/LOGRendererMap.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <thread>
#include <unordered_map>
#include <vector>

#include "log4vrk/core/LOGDefaultRenderer.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKDynamicLibrary.h"
#include "log4vrk/platform/internal/VRKMutex.h"

namespace {

using Renderer = std::shared_ptr<LOGObjectRenderer>;
using Function = LOGObjectRenderer* (*)();

// A class may have several: whoever notes a library again adds one, and the first counts.
struct Library {
  I18NString className;
  Function getRenderer;
  void* handle;
  // Its count is how the last user is told from the others: every renderer that the library has made shares in it as
  // long as it lives, and so does every lookup that is calling into the library. At one there is the library alone, and
  // its code may go.
  std::shared_ptr<void> users = std::make_shared<char>();
  std::vector<Renderer> made = {};
};

struct State {
  std::unordered_map<I18NString, Renderer> table;
  std::list<Library> libraries;
  std::list<Library> keptOpen;  // a thread cleared the map while it was rendering
};

// For the clearing of a map.
constexpr long LOOK_AGAIN = 100;  // microseconds
constexpr std::chrono::seconds LONGEST_WAIT(2);

VRKMutex g_mutex;
State& g_state VRK_GUARDED_BY(g_mutex) = vrkImmortal<State>();
std::atomic<bool> g_empty{true};  // spares the look into the table where nobody has renderers

Library* findLibrary(const I18NString& className) VRK_REQUIRES(g_mutex) {
  for (Library& library : g_state.libraries) {
    if (library.className == className) return &library;
  }
  return nullptr;
}

// A library that is being asked for a renderer; it is not unloaded meanwhile.
struct Lookup {
  bool isKnown() const { return users != nullptr; }

  Function getRenderer = nullptr;
  std::shared_ptr<void> users;
};

Lookup lookUp(const I18NString& className) {
  const LOGLeafGuard guard(g_mutex);
  const Library* const library = findLibrary(className);
  return library != nullptr ? Lookup{library->getRenderer, library->users} : Lookup();
}

// The map's share in a renderer of a library; for a renderer of the program's, a share that frees nothing.
Renderer shareOf(LOGObjectRenderer* renderer) VRK_REQUIRES(g_mutex) {
  for (const Library& library : g_state.libraries) {
    for (const Renderer& made : library.made) {
      if (made.get() == renderer) return made;
    }
  }
  for (const auto& [className, entry] : g_state.table) {
    if (entry.get() == renderer) return entry;
  }
  return Renderer(Renderer(), renderer);
}

// A renderer that nobody will be given any more goes when its last render ends.
void dropReplaced(const Renderer& replaced) VRK_REQUIRES(g_mutex) {
  for (Library& library : g_state.libraries) {
    library.made.erase(std::remove(library.made.begin(), library.made.end(), replaced), library.made.end());
  }
}

Renderer find(const I18NString& className) {
  if (g_empty.load(std::memory_order_acquire)) return nullptr;
  const LOGLeafGuard guard(g_mutex);
  const auto found = g_state.table.find(className);
  return found != g_state.table.end() ? found->second : nullptr;
}

// Keeps a renderer that the library of the class has just made.
LOGObjectRenderer* keep(const I18NString& className, LOGObjectRenderer* renderer) {
  std::unique_ptr<LOGObjectRenderer> made(renderer);
  const LOGLeafGuard guard(g_mutex);
  Library* const library = findLibrary(className);
  if (!made || library == nullptr) return nullptr;
  // The renderer goes before its share in the library: its destructor is the library's code.
  Renderer shared(made.release(), [users = library->users](LOGObjectRenderer* last) { delete last; });
  library->made.push_back(std::move(shared));
  return renderer;
}

bool rendersByItself(const Library& library) {
  const auto& mine = LOGThreadState::current().renderers;
  return std::any_of(library.made.begin(), library.made.end(), [&](const Renderer& made) {
    return std::find(mine.begin(), mine.end(), made.get()) != mine.end();
  });
}

// True when no renderer of the library lives any more. What still renders by it is on another thread, and may be held
// up for long: then the library stays loaded, which costs nothing but its memory.
bool waitUntilUnused(const Library& library) {
  const auto end = std::chrono::steady_clock::now() + LONGEST_WAIT;
  while (library.users.use_count() > 1) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(LOOK_AGAIN));
  }
  return true;
}

}  // namespace

LOGObjectRenderer* LOGRendererMap::getDefaultRenderer() {
  static LOGDefaultRenderer& renderer = vrkImmortal<LOGDefaultRenderer>();
  return &renderer;
}

LOGObjectRenderer* LOGRendererMap::searchInterface(const I18NString&) { return getDefaultRenderer(); }

LOGRendererMap::Use::Use(const I18NString& className)
    : m_share(find(className)), m_renderer(m_share ? m_share.get() : getDefaultRenderer()) {
  if (m_share) LOGThreadState::current().renderers.push_back(m_renderer);
}

LOGRendererMap::Use::~Use() {
  if (m_share) LOGThreadState::current().renderers.pop_back();
}

I18NString* LOGRendererMap::findAndRender(LOGObject* object) {
  if (object == nullptr) return nullptr;
  std::unique_ptr<I18NString> made;
  const I18NString* const text = findAndRender(object, made);
  return made || text == nullptr ? made.release() : vrkNew<I18NString>(VRK_HERE, *text);
}

const I18NString* LOGRendererMap::findAndRender(LOGObject* object, std::unique_ptr<I18NString>& made) {
  if (object == nullptr) return nullptr;
  const Use renderer(object->instanceOf());
  if (renderer.isDefault()) return &object->toString();
  made.reset(renderer->doRender(object));
  return made.get();
}

LOGObjectRenderer* LOGRendererMap::getFromListRenderers(const I18NString& className) {
  const Renderer renderer = find(className);
  return renderer ? renderer.get() : getDefaultRenderer();
}

LOGObjectRenderer* LOGRendererMap::getFromListRenderers(LOGObject* object) {
  return getFromListRenderers(object->instanceOf());
}

void LOGRendererMap::put(const I18NString& className, LOGObjectRenderer* renderer) {
  if (className.isEmpty() || renderer == nullptr) return;
  Renderer replaced;  // may be freed here, after the lock
  const LOGLeafGuard guard(g_mutex);
  Renderer& entry = g_state.table[className];
  if (entry.get() == renderer) return;
  replaced = std::move(entry);
  entry = shareOf(renderer);
  if (replaced) dropReplaced(replaced);
  g_empty.store(false, std::memory_order_release);
}

void LOGRendererMap::put(LOGObject* object, LOGObjectRenderer* renderer) { put(object->instanceOf(), renderer); }

int LOGRendererMap::getLibName(const I18NString& className, I18NString& path) {
  path = VRKConfigurationFactory::getInstance().resolveLibrary("lib" + className + ".so");
  return 1;
}

int LOGRendererMap::loadLib(const I18NString& className) {
  I18NString path;
  getLibName(className, path);
  return VRKDynamicLibrary::open(path) != nullptr ? 1 : 0;
}

int LOGRendererMap::isLibraryLoaded(const I18NString& className) { return lookUp(className).isKnown() ? 1 : 0; }

LOGObjectRenderer* LOGRendererMap::getRendererFromFunction(const I18NString& className) {
  const Lookup lookup = lookUp(className);
  return lookup.getRenderer != nullptr ? keep(className, lookup.getRenderer()) : nullptr;
}

LOGObjectRenderer* LOGRendererMap::get(const I18NString& className) {
  if (isLibraryLoaded(className) != 0) return getRendererFromFunction(className);
  I18NString path;
  getLibName(className, path);
  // Opened twice, so that the library outlives this lookup whatever clear() does to the map meanwhile.
  void* const handle = VRKDynamicLibrary::open(path);
  void* const function = VRKDynamicLibrary::symbol(handle, "getRenderer");
  if (function == nullptr) return nullptr;
  LOGObjectRenderer* const renderer = reinterpret_cast<Function>(function)();
  if (renderer == nullptr) return nullptr;
  void* const mine = VRKDynamicLibrary::open(path);
  putFunction(className, function, handle);
  LOGObjectRenderer* const kept = keep(className, renderer);
  if (mine != nullptr) VRKDynamicLibrary::close(mine);
  return kept;
}

LOGObjectRenderer* LOGRendererMap::get(LOGObject* object) {
  return object != nullptr ? get(object->instanceOf()) : nullptr;
}

void LOGRendererMap::putFunction(const I18NString& className, void* function, void* handle) {
  try {
    if (VRKFault::hit(VRKFault::ALLOCATION)) throw std::bad_alloc();
    const LOGLeafGuard guard(g_mutex);
    g_state.libraries.push_back({className, reinterpret_cast<Function>(function), handle});
  } catch (const std::bad_alloc&) {
    LOGLogLog::debug("LOGRendererMap::putFunction: Could not allocate memory ");
  }
}

void LOGRendererMap::addRenderer(LOGHierarchy* repository, const I18NString& renderingClass,
                                 const I18NString& renderedClass) {
  LOGLogLog::debug("Rendering class: [" + renderingClass + "], Rendered class: [" + renderedClass + "].");
  LOGObjectRenderer* const renderer = get(renderingClass);
  VRK_ASSERT(repository);
  if (renderer == nullptr) {
    LOGLogLog::error("Could not instantiate renderer [" + renderingClass + "].");
    return;
  }
  repository->setRenderer(renderedClass, renderer);
}

void LOGRendererMap::clear() {
  LOGLogLog::debug("LOGRendererMap::clear() -- begin");
  State taken;
  {
    const LOGLeafGuard guard(g_mutex);
    taken.table.swap(g_state.table);
    taken.libraries.swap(g_state.libraries);
    g_empty = true;
  }
  taken.table.clear();
  if (taken.libraries.empty()) LOGLogLog::debug("LOGRendererMap::clear -- the lib list is empty.");
  while (!taken.libraries.empty()) {
    Library& library = taken.libraries.front();
    const bool inUse = rendersByItself(library);
    if (!inUse) library.made.clear();
    if (inUse || !waitUntilUnused(library)) {
      const LOGLeafGuard guard(g_mutex);
      g_state.keptOpen.splice(g_state.keptOpen.end(), taken.libraries, taken.libraries.begin());
      continue;
    }
    LOGLogLog::debug("LOGRendererMap::clear() -- unload rendering library: " + library.className);
    // Said when closing has succeeded, on purpose: existing tools look for this line.
    if (VRKDynamicLibrary::close(library.handle)) {
      LOGLogLog::debug("LOGRendererMap::clear ---- Could not close the library: " + library.className);
    }
    taken.libraries.pop_front();
  }
  LOGLogLog::debug("LOGRendererMap::clear() -- all libs are unloaded.");
}
