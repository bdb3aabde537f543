// Which renderer renders which class.

#pragma once

#include <memory>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGHierarchy;
class LOGObject;
class LOGObjectRenderer;

/// The renderers by the name of the class that they render, and the libraries that renderers come from. All maps share
/// one table.
///
/// A renderer for the class OrderRenderer comes from the library libOrderRenderer.so, which is loaded when it is first
/// asked for and stays until clear().
///
/// Thread safety: any thread. Renderers are called without a lock, and are not freed, nor their library unloaded, while
/// somebody renders.
/// Ownership: renderers that came from a library are the map's; those that a program puts are the
/// program's.
class LOG4VRK_EXPORT LOGRendererMap {
 public:
  /// A new renderer from the library of that class; null when there is none.
  static LOGObjectRenderer* get(const I18NString& className);
  static LOGObjectRenderer* get(LOGObject* object);
  /// The text of the object by its renderer, else its toString(); new and owned by the caller. Null for null.
  static I18NString* findAndRender(LOGObject* object);
  /// The same text, lent by the object where it is its toString(); otherwise new, and left in `made`.
  static const I18NString* findAndRender(LOGObject* object, std::unique_ptr<I18NString>& made);
  /// The renderer that was put for the class, or the default one.
  static LOGObjectRenderer* getFromListRenderers(const I18NString& className);
  static LOGObjectRenderer* getFromListRenderers(LOGObject* object);

  /// The same for the life of a scope in which a thread renders: until its end the renderer is not freed, whoever
  /// replaces it or clears the map.
  class LOG4VRK_EXPORT Use {
   public:
    explicit Use(const I18NString& className);
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    LOGObjectRenderer* operator->() const { return m_renderer; }
    bool isDefault() const { return m_share == nullptr; }

   private:
    const std::shared_ptr<LOGObjectRenderer> m_share;  // null when it is the default renderer
    LOGObjectRenderer* const m_renderer;
  };

  static LOGObjectRenderer* getDefaultRenderer();
  /// The default renderer, whatever the name.
  static LOGObjectRenderer* searchInterface(const I18NString& className);

  /// Replaces the renderer of the class. An empty name or a null renderer changes nothing.
  static void put(const I18NString& className, LOGObjectRenderer* renderer);
  static void put(LOGObject* object, LOGObjectRenderer* renderer);
  /// Has objects of `renderedClass` rendered by a renderer from the library of `renderingClass`. A library that gives
  /// none is reported; a null repository raises VRKAssertError, after the library has been asked.
  static void addRenderer(LOGHierarchy* repository, const I18NString& renderingClass, const I18NString& renderedClass);

  /// The path of the library for the class. Returns 1.
  static int getLibName(const I18NString& className, I18NString& path);
  /// 1 when the library could be loaded.
  static int loadLib(const I18NString& className);
  /// 1 when a library has been noted for the class.
  static int isLibraryLoaded(const I18NString& className);
  /// A new renderer from a library that is loaded; null when it is not.
  static LOGObjectRenderer* getRendererFromFunction(const I18NString& className);
  /// Notes a loaded library: the class, its "getRenderer" function and the handle, which clear() closes. Where several
  /// are noted for a class, the first is asked for renderers.
  static void putFunction(const I18NString& className, void* function, void* handle);

  /// Forgets all renderers and unloads all libraries, as soon as nobody renders by them. A library by which the calling
  /// thread itself is rendering stays loaded, and so does one by which another still renders after two seconds.
  static void clear();
};
