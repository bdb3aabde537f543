// A TLS connection.

#pragma once

#include <memory>
#include <string>

#include "log4vrk/platform/internal/VRKStream.h"

class VRKCrypto;
struct ssl_ctx_st;
struct ssl_st;
struct bio_st;

/// TLS 1.2 or newer over another stream. The server has to show a certificate for the host's name that leads to a known
/// authority.
///
/// Thread safety: not thread-safe.
class VRKTlsStream : public VRKStream {
 public:
  /// Names of PEM files, empty for none. Without authorities of its own a client takes OpenSSL's: those of the system,
  /// or those that the environment names in SSL_CERT_FILE and SSL_CERT_DIR.
  struct Settings {
    std::string authorities;
    std::string certificate;  // of the client, with those that lead to its authority
    std::string key;          // empty when it is in the certificate's file
  };

  VRKTlsStream(std::unique_ptr<VRKStream> stream, const std::string& host, const Settings& settings);
  ~VRKTlsStream() override;

  Progress advance() override;
  /// Both also send what is left from before.
  long read(char* buffer, std::size_t size) override;
  long write(const char* bytes, std::size_t count) override;
  int descriptor() const override { return m_stream->descriptor(); }
  bool hasToWrite() const override { return m_stream->hasToWrite() || !m_toSend.empty(); }

 private:
  bool setUp(const std::string& host, const Settings& settings);
  bool setUpCertificates(const Settings& settings);
  bool setUpHost(const std::string& host);
  bool fails(const std::string& what);
  long over(const std::string& what);
  std::string error() const;
  bool flush();
  long fill();

  const VRKCrypto* const m_crypto;
  const std::unique_ptr<VRKStream> m_stream;
  ssl_ctx_st* m_context = nullptr;
  ssl_st* m_tls = nullptr;
  bio_st* m_received = nullptr;  // m_tls's, as the next
  bio_st* m_made = nullptr;
  std::string m_toSend;  // made, and not yet taken by the stream below
  bool m_usable = false;
  bool m_ready = false;
};
