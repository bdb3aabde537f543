// Certificates for tests of TLS, made by the openssl program.

#pragma once

#include <string>

#include "tests/support/TempDir.h"

namespace vrktest {

/// A directory with a certificate authority ("ca") and what it has signed: "server" (for localhost and 127.0.0.1),
/// "expired" (the same, but no longer valid), "other" (for other.example) and "client" (for relp-client). Keys have no
/// password. Making them takes a tenth of a second.
///
/// Errors: raises std::runtime_error when openssl fails.
class Certificates {
 public:
  Certificates();

  std::string certificate(const std::string& name) const { return m_dir.file(name + ".pem"); }
  std::string key(const std::string& name) const { return m_dir.file(name + ".key"); }

 private:
  void makeAuthority(const std::string& name) const;
  void sign(const std::string& name, const std::string& host, const std::string& alternatives, int days) const;

  TempDir m_dir;
};

}  // namespace vrktest
