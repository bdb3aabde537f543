// The selector that always gives the same repository.

#pragma once

#include "log4vrk/core/LOGRepositorySelector.h"

/// Thread safety: immutable.
/// Ownership: the repository is lent.
class LOG4VRK_EXPORT LOGDefaultRepositorySelector : public LOGRepositorySelector {
 public:
  explicit LOGDefaultRepositorySelector(LOGLoggerRepository* repository) : m_repository(repository) {}
  ~LOGDefaultRepositorySelector() override;

  LOGLoggerRepository* getLoggerRepository() override { return m_repository; }

 private:
  LOGLoggerRepository* const m_repository;
};
