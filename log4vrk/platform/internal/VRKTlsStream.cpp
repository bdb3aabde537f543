#include "log4vrk/platform/internal/VRKTlsStream.h"

#include <arpa/inet.h>

#include <algorithm>

#include "log4vrk/platform/VRKCrypto.h"

namespace {

// As in OpenSSL's headers.
constexpr int VERIFY_PEER = 1;
constexpr int ERROR_WANT_READ = 2;
constexpr int ERROR_WANT_WRITE = 3;
constexpr int ERROR_ZERO_RETURN = 6;
constexpr int FILETYPE_PEM = 1;
constexpr int CTRL_SET_TLSEXT_HOSTNAME = 55;
constexpr int CTRL_SET_MIN_PROTO_VERSION = 123;
constexpr long NAMETYPE_HOST_NAME = 0;
constexpr long TLS_1_2 = 0x0303;
constexpr long VERIFIED = 0;
constexpr unsigned CHECK_FLAG_NEVER_CHECK_SUBJECT = 0x20;

constexpr std::size_t PIECE = 16384;  // no TLS record carries more

// Instead of OpenSSL's own, which asks on the program's terminal and waits there.
int noPassphrase(char*, int, int, void* wasAsked) {
  *static_cast<bool*>(wasAsked) = true;
  return -1;
}

bool isAddress(const std::string& host) {
  unsigned char bytes[sizeof(in6_addr)];
  return ::inet_pton(AF_INET, host.c_str(), bytes) == 1 || ::inet_pton(AF_INET6, host.c_str(), bytes) == 1;
}

}  // namespace

VRKTlsStream::VRKTlsStream(std::unique_ptr<VRKStream> stream, const std::string& host, const Settings& settings)
    : m_crypto(VRKCrypto::get()), m_stream(std::move(stream)) {
  if (m_crypto == nullptr) {
    m_failure = "there is no TLS library (libssl.so.3) on this machine";
    return;
  }
  m_crypto->ERR_clear_error();
  m_usable = setUp(host, settings);
}

VRKTlsStream::~VRKTlsStream() {
  if (m_tls != nullptr) m_crypto->SSL_free(m_tls);
  if (m_context != nullptr) m_crypto->SSL_CTX_free(m_context);
}

bool VRKTlsStream::fails(const std::string& what) {
  m_failure = what + ": " + error();
  return false;
}

// Why the last call failed; the queue of reasons is empty afterwards.
std::string VRKTlsStream::error() const {
  const unsigned long code = m_crypto->ERR_get_error();
  m_crypto->ERR_clear_error();
  const char* const reason = code != 0 ? m_crypto->ERR_reason_error_string(code) : nullptr;
  return reason != nullptr ? reason : "unknown reason";
}

bool VRKTlsStream::setUp(const std::string& host, const Settings& settings) {
  m_context = m_crypto->SSL_CTX_new(m_crypto->TLS_client_method());
  if (m_context == nullptr || m_crypto->SSL_CTX_ctrl(m_context, CTRL_SET_MIN_PROTO_VERSION, TLS_1_2, nullptr) != 1) {
    return fails("TLS cannot be set up");
  }
  m_crypto->SSL_CTX_set_verify(m_context, VERIFY_PEER, nullptr);
  if (!setUpCertificates(settings)) return false;
  m_tls = m_crypto->SSL_new(m_context);
  m_received = m_crypto->BIO_new(m_crypto->BIO_s_mem());
  m_made = m_crypto->BIO_new(m_crypto->BIO_s_mem());
  if (m_tls == nullptr || m_received == nullptr || m_made == nullptr) {
    if (m_received != nullptr) m_crypto->BIO_free(m_received);
    if (m_made != nullptr) m_crypto->BIO_free(m_made);
    return fails("TLS cannot be set up");
  }
  m_crypto->SSL_set_bio(m_tls, m_received, m_made);
  if (!setUpHost(host)) return fails("TLS cannot verify the name \"" + host + "\"");
  m_crypto->SSL_set_connect_state(m_tls);
  return true;
}

bool VRKTlsStream::setUpCertificates(const Settings& settings) {
  if (settings.authorities.empty()) {
    m_crypto->SSL_CTX_set_default_verify_paths(m_context);
  } else if (m_crypto->SSL_CTX_load_verify_file(m_context, settings.authorities.c_str()) != 1) {
    return fails("the certificates of authorities in " + settings.authorities + " cannot be used");
  }
  if (settings.certificate.empty()) return true;
  const std::string& key = settings.key.empty() ? settings.certificate : settings.key;
  bool wasAsked = false;
  m_crypto->SSL_CTX_set_default_passwd_cb(m_context, &noPassphrase);
  m_crypto->SSL_CTX_set_default_passwd_cb_userdata(m_context, &wasAsked);
  if (m_crypto->SSL_CTX_use_certificate_chain_file(m_context, settings.certificate.c_str()) != 1) {
    return fails("the client certificate " + settings.certificate + " cannot be used");
  }
  if (m_crypto->SSL_CTX_use_PrivateKey_file(m_context, key.c_str(), FILETYPE_PEM) != 1) {
    return fails("the key " + key + " cannot be used" + (wasAsked ? ", because it needs a passphrase" : ""));
  }
  m_crypto->SSL_CTX_set_default_passwd_cb_userdata(m_context, nullptr);
  if (m_crypto->SSL_CTX_check_private_key(m_context) == 1) return true;
  return fails("the key " + key + " is not that of the client certificate " + settings.certificate);
}

// A certificate that has the host only as its subject's common name is not for it.
bool VRKTlsStream::setUpHost(const std::string& host) {
  if (isAddress(host)) {
    return m_crypto->X509_VERIFY_PARAM_set1_ip_asc(m_crypto->SSL_get0_param(m_tls), host.c_str()) == 1;
  }
  m_crypto->X509_VERIFY_PARAM_set_hostflags(m_crypto->SSL_get0_param(m_tls), CHECK_FLAG_NEVER_CHECK_SUBJECT);
  std::string name = host;
  return !host.empty() && m_crypto->SSL_set1_host(m_tls, host.c_str()) == 1 &&
         m_crypto->SSL_ctrl(m_tls, CTRL_SET_TLSEXT_HOSTNAME, NAMETYPE_HOST_NAME, name.data()) == 1;
}

VRKStream::Progress VRKTlsStream::advance() {
  if (!m_usable) return FAILED;
  if (m_ready) return READY;
  const Progress below = m_stream->advance();
  if (below == FAILED) m_failure = m_stream->failure();
  if (below != READY) return below;
  for (;;) {
    const int result = m_crypto->SSL_do_handshake(m_tls);
    const int why = m_crypto->SSL_get_error(m_tls, result);
    if (result != 1 && why != ERROR_WANT_READ && why != ERROR_WANT_WRITE) {
      flush();  // the server is to hear why
      const long verified = m_crypto->SSL_get_verify_result(m_tls);
      m_failure = verified != VERIFIED ? "the server's certificate is not accepted: " +
                                             std::string(m_crypto->X509_verify_cert_error_string(verified))
                                       : "TLS handshake: " + error();
      return FAILED;
    }
    if (!flush()) return FAILED;
    m_ready = result == 1;
    if (m_ready) return READY;
    const long filled = fill();
    if (filled < 0) m_failure = "TLS handshake: " + m_failure;
    if (filled <= 0) return filled < 0 ? FAILED : PENDING;
  }
}

// Hands the stream below what TLS has made, as far as it takes it.
bool VRKTlsStream::flush() {
  char piece[PIECE];
  for (int count; (count = m_crypto->BIO_read(m_made, piece, sizeof piece)) > 0;) {
    m_toSend.append(piece, static_cast<std::size_t>(count));
  }
  while (!m_toSend.empty()) {
    const long taken = m_stream->write(m_toSend.data(), m_toSend.size());
    if (taken < 0) m_failure = m_stream->failure();
    if (taken <= 0) return taken == 0;
    m_toSend.erase(0, static_cast<std::size_t>(taken));
  }
  return true;
}

// Hands TLS what the stream below has received. As read().
long VRKTlsStream::fill() {
  char piece[PIECE];
  const long count = m_stream->read(piece, sizeof piece);
  if (count > 0) m_crypto->BIO_write(m_received, piece, static_cast<int>(count));
  if (count < 0) m_failure = m_stream->failure();
  return count;
}

long VRKTlsStream::read(char* buffer, std::size_t size) {
  if (!flush()) return -1;
  for (;;) {
    m_crypto->ERR_clear_error();
    const int count = m_crypto->SSL_read(m_tls, buffer, static_cast<int>(std::min(size, PIECE)));
    if (count > 0) return count;
    const int why = m_crypto->SSL_get_error(m_tls, count);
    if (why == ERROR_ZERO_RETURN) return over("the server ended the connection");
    if (why != ERROR_WANT_READ && why != ERROR_WANT_WRITE) return over("TLS: " + error());
    if (!flush()) return -1;
    const long filled = fill();
    if (filled <= 0) return filled;
  }
}

// One piece at a time, and none while the last is not gone, so that little is held here.
long VRKTlsStream::write(const char* bytes, std::size_t count) {
  if (!flush()) return -1;
  if (!m_toSend.empty() || count == 0) return 0;
  m_crypto->ERR_clear_error();
  const int size = static_cast<int>(std::min(count, PIECE));
  const int taken = m_crypto->SSL_write(m_tls, bytes, size);
  if (taken <= 0) {
    const int why = m_crypto->SSL_get_error(m_tls, taken);
    return why == ERROR_WANT_READ || why == ERROR_WANT_WRITE ? 0 : over("TLS: " + error());
  }
  return flush() ? taken : -1;
}

long VRKTlsStream::over(const std::string& what) {
  m_failure = what;
  return -1;
}
