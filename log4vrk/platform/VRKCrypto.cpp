#include "log4vrk/platform/VRKCrypto.h"

#include <atomic>

#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKDynamicLibrary.h"
#include "log4vrk/platform/internal/VRKFault.h"

namespace {

// Which names libcrypto.so.3, so that one handle finds the functions of both.
constexpr const char* LIBRARY = "libssl.so.3";
// Threads that still send while the process exits must find everything in place.
constexpr unsigned long long NO_CLEANUP_AT_EXIT = 0x00080000;

template <typename Function>
bool bind(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(VRKDynamicLibrary::symbol(library, name));
  return function != nullptr;
}

}  // namespace

#define VRK_BIND(name) bind(library, #name, name)

bool VRKCrypto::load(void* library) {
  return VRK_BIND(OPENSSL_init_ssl) && VRK_BIND(TLS_client_method) && VRK_BIND(SSL_CTX_new) && VRK_BIND(SSL_CTX_free) &&
         VRK_BIND(SSL_CTX_ctrl) && VRK_BIND(SSL_CTX_set_verify) && VRK_BIND(SSL_CTX_set_default_verify_paths) &&
         VRK_BIND(SSL_CTX_set_default_passwd_cb) && VRK_BIND(SSL_CTX_set_default_passwd_cb_userdata) &&
         VRK_BIND(SSL_CTX_load_verify_file) && VRK_BIND(SSL_CTX_use_certificate_chain_file) &&
         VRK_BIND(SSL_CTX_use_PrivateKey_file) && VRK_BIND(SSL_CTX_check_private_key) && VRK_BIND(SSL_new) &&
         VRK_BIND(SSL_free) && VRK_BIND(SSL_ctrl) && VRK_BIND(SSL_set_bio) && VRK_BIND(SSL_set1_host) &&
         VRK_BIND(SSL_get0_param) && VRK_BIND(SSL_set_connect_state) && VRK_BIND(SSL_do_handshake) &&
         VRK_BIND(SSL_read) && VRK_BIND(SSL_write) && VRK_BIND(SSL_get_error) && VRK_BIND(SSL_get_verify_result) &&
         VRK_BIND(X509_VERIFY_PARAM_set_hostflags) && VRK_BIND(X509_VERIFY_PARAM_set1_ip_asc) &&
         VRK_BIND(X509_verify_cert_error_string) && VRK_BIND(BIO_s_mem) && VRK_BIND(BIO_new) && VRK_BIND(BIO_free) &&
         VRK_BIND(BIO_read) && VRK_BIND(BIO_write) && VRK_BIND(ERR_get_error) && VRK_BIND(ERR_clear_error) &&
         VRK_BIND(ERR_reason_error_string) && OPENSSL_init_ssl(NO_CLEANUP_AT_EXIT, nullptr) == 1;
}

const VRKCrypto* VRKCrypto::get() {
  static std::atomic<const VRKCrypto*> loaded{nullptr};
  if (VRKFault::hit(VRKFault::LIBRARY)) return nullptr;
  if (const VRKCrypto* const crypto = loaded) return crypto;
  void* const library = VRKDynamicLibrary::open(LIBRARY);
  if (library == nullptr) return nullptr;
  VRKCrypto& crypto = vrkImmortal<VRKCrypto>();
  if (!crypto.load(library)) {
    delete &crypto;
    return nullptr;
  }
  const VRKCrypto* before = nullptr;
  if (!loaded.compare_exchange_strong(before, &crypto)) delete &crypto;  // another thread was faster
  return loaded;
}
