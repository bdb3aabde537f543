// What the configurator made for one appender, held together.

#pragma once

#include <memory>
#include <vector>

class LOGAppenderSkeleton;
class LOGErrorHandler;
class LOGFilter;
class LOGLayout;

/// Owns an appender made by the configurator, with the layouts, filters and error handlers made for it. Every container
/// that has the appender attached shares the bundle, so that the last one to let go closes and frees it all. An
/// appender that a program made has no bundle: it stays the program's.
///
/// Thread safety: the configurator fills it before anybody else sees it.
class LOGAppenderBundle {
 public:
  /// Takes over the appender and makes it know its bundle.
  static std::shared_ptr<LOGAppenderBundle> make(std::unique_ptr<LOGAppenderSkeleton> appender);
  ~LOGAppenderBundle();
  LOGAppenderBundle(const LOGAppenderBundle&) = delete;
  LOGAppenderBundle& operator=(const LOGAppenderBundle&) = delete;

  LOGAppenderSkeleton* appender() const { return m_appender.get(); }
  void own(std::unique_ptr<LOGLayout> layout);
  void own(std::unique_ptr<LOGFilter> filter);
  void own(std::shared_ptr<LOGErrorHandler> handler);
  /// Keeps another bundle that this appender refers to.
  void own(std::shared_ptr<LOGAppenderBundle> other);
  /// The owner's share of a handler of this bundle, null for any other.
  std::shared_ptr<LOGErrorHandler> find(const LOGErrorHandler* handler) const;

 private:
  explicit LOGAppenderBundle(std::unique_ptr<LOGAppenderSkeleton> appender);

  // Freed from the last to the first.
  std::vector<std::shared_ptr<LOGAppenderBundle>> m_others;
  std::vector<std::unique_ptr<LOGLayout>> m_layouts;
  std::vector<std::unique_ptr<LOGFilter>> m_filters;
  std::vector<std::shared_ptr<LOGErrorHandler>> m_handlers;
  std::unique_ptr<LOGAppenderSkeleton> m_appender;
};
