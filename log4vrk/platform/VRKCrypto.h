// OpenSSL 3, found at run time.

#pragma once

#include "log4vrk/platform/VRKExport.h"

// The library's own types, which nobody but it looks into.
struct ssl_ctx_st;
struct ssl_st;
struct ssl_method_st;
struct bio_st;
struct bio_method_st;
struct X509_VERIFY_PARAM_st;

/// The functions of libssl.so.3 and libcrypto.so.3 that a TLS client needs. The library is loaded when somebody first
/// asks, and is nobody's dependency until then; it stays loaded.
///
/// Thread safety: any thread.
class LOG4VRK_EXPORT VRKCrypto {
 public:
  /// Null when there is no such library, or when it lacks one of the functions. Then nothing is kept, and the next call
  /// looks again.
  static const VRKCrypto* get();

  // Named and typed as in OpenSSL's headers.
  int (*OPENSSL_init_ssl)(unsigned long long, const void*);
  const ssl_method_st* (*TLS_client_method)();
  ssl_ctx_st* (*SSL_CTX_new)(const ssl_method_st*);
  void (*SSL_CTX_free)(ssl_ctx_st*);
  long (*SSL_CTX_ctrl)(ssl_ctx_st*, int, long, void*);
  void (*SSL_CTX_set_verify)(ssl_ctx_st*, int, int (*)(int, void*));
  int (*SSL_CTX_set_default_verify_paths)(ssl_ctx_st*);
  void (*SSL_CTX_set_default_passwd_cb)(ssl_ctx_st*, int (*)(char*, int, int, void*));
  void (*SSL_CTX_set_default_passwd_cb_userdata)(ssl_ctx_st*, void*);
  int (*SSL_CTX_load_verify_file)(ssl_ctx_st*, const char*);
  int (*SSL_CTX_use_certificate_chain_file)(ssl_ctx_st*, const char*);
  int (*SSL_CTX_use_PrivateKey_file)(ssl_ctx_st*, const char*, int);
  int (*SSL_CTX_check_private_key)(const ssl_ctx_st*);
  ssl_st* (*SSL_new)(ssl_ctx_st*);
  void (*SSL_free)(ssl_st*);
  long (*SSL_ctrl)(ssl_st*, int, long, void*);
  void (*SSL_set_bio)(ssl_st*, bio_st*, bio_st*);
  int (*SSL_set1_host)(ssl_st*, const char*);
  X509_VERIFY_PARAM_st* (*SSL_get0_param)(ssl_st*);
  void (*SSL_set_connect_state)(ssl_st*);
  int (*SSL_do_handshake)(ssl_st*);
  int (*SSL_read)(ssl_st*, void*, int);
  int (*SSL_write)(ssl_st*, const void*, int);
  int (*SSL_get_error)(const ssl_st*, int);
  long (*SSL_get_verify_result)(const ssl_st*);
  void (*X509_VERIFY_PARAM_set_hostflags)(X509_VERIFY_PARAM_st*, unsigned);
  int (*X509_VERIFY_PARAM_set1_ip_asc)(X509_VERIFY_PARAM_st*, const char*);
  const char* (*X509_verify_cert_error_string)(long);
  const bio_method_st* (*BIO_s_mem)();
  bio_st* (*BIO_new)(const bio_method_st*);
  int (*BIO_free)(bio_st*);
  int (*BIO_read)(bio_st*, void*, int);
  int (*BIO_write)(bio_st*, const void*, int);
  unsigned long (*ERR_get_error)();
  void (*ERR_clear_error)();
  const char* (*ERR_reason_error_string)(unsigned long);

 private:
  bool load(void* library);
};
