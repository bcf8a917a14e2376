#pragma once

#include <filesystem>
#include <memory>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace xel::serve {

/// A self-signed certificate for localhost, 127.0.0.1 and ::1 with a key of its own, good for
/// thirty days. The key never leaves memory.
class Certificate {
 public:
  /// Throws std::runtime_error when OpenSSL cannot make one.
  Certificate();

  X509* x509() const noexcept { return certificate_.get(); }
  EVP_PKEY* key() const noexcept { return key_.get(); }
  /// Writes the certificate as PEM, for clients to trust. Throws std::runtime_error.
  void write(const std::filesystem::path& file) const;

 private:
  struct Free {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  };
  std::unique_ptr<EVP_PKEY, Free> key_;
  std::unique_ptr<X509, Free> certificate_;
};

}  // namespace xel::serve
