#include "tests/support/Certificates.h"

#include <cstdlib>
#include <stdexcept>

namespace vrktest {

namespace {

constexpr const char* NEW_KEY = " -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes";

void run(const std::string& directory, const std::string& command) {
  const std::string line = "cd '" + directory + "' && openssl " + command + " >>openssl.log 2>&1";
  if (std::system(line.c_str()) != 0) throw std::runtime_error("failed: " + line);
}

}  // namespace

Certificates::Certificates() {
  makeAuthority("ca");
  sign("server", "localhost", "DNS:localhost,IP:127.0.0.1", 2);
  sign("expired", "localhost", "DNS:localhost,IP:127.0.0.1", -1);
  sign("other", "other.example", "DNS:other.example", 2);
  sign("client", "relp-client", "DNS:relp-client", 2);
}

void Certificates::makeAuthority(const std::string& name) const {
  run(m_dir.path(),
      "req -x509 -days 2 -subj /CN=" + name + NEW_KEY + " -keyout " + name + ".key -out " + name + ".pem");
}

void Certificates::sign(const std::string& name, const std::string& host, const std::string& alternatives,
                        int days) const {
  run(m_dir.path(), "req -subj /CN=" + host + " -addext subjectAltName=" + alternatives +
                        " -addext basicConstraints=CA:FALSE" + NEW_KEY + " -keyout " + name + ".key -out " + name +
                        ".csr");
  run(m_dir.path(), "x509 -req -in " + name + ".csr -CA ca.pem -CAkey ca.key -CAcreateserial -copy_extensions copy " +
                        "-days " + std::to_string(days) + " -out " + name + ".pem");
}

}  // namespace vrktest
