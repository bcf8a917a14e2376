#include "serve/Certificate.h"

#include <cstdio>
#include <stdexcept>

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace xel::serve {
namespace {

constexpr long day = 24L * 3600;

void require(bool done) {
  if (!done) throw std::runtime_error("no certificate can be made");
}

void addExtension(X509* certificate, int kind, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, &context, kind, value), &X509_EXTENSION_free);
  require(extension && X509_add_ext(certificate, extension.get(), -1));
}

/// Clients that know an earlier certificate of the same name must not take this for it.
void setRandomSerial(X509* certificate) {
  const std::unique_ptr<BIGNUM, decltype(&BN_free)> serial(BN_new(), &BN_free);
  require(serial && BN_rand(serial.get(), 64, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) &&
          BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(certificate)));
}

}  // namespace

Certificate::Certificate() : key_(EVP_EC_gen("P-256")), certificate_(X509_new()) {
  require(key_ && certificate_);
  X509* const certificate = certificate_.get();
  require(X509_set_version(certificate, X509_VERSION_3));
  setRandomSerial(certificate);
  require(X509_gmtime_adj(X509_getm_notBefore(certificate), -day));
  require(X509_gmtime_adj(X509_getm_notAfter(certificate), 30 * day));
  require(X509_set_pubkey(certificate, key_.get()));
  X509_NAME* const name = X509_get_subject_name(certificate);
  require(X509_NAME_add_entry_by_txt(
      name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("xel serve"), -1, -1, 0));
  require(X509_set_issuer_name(certificate, name));
  addExtension(certificate, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(certificate, NID_key_usage, "critical,digitalSignature,keyCertSign");
  addExtension(certificate, NID_ext_key_usage, "serverAuth");
  addExtension(certificate, NID_subject_key_identifier, "hash");
  addExtension(certificate, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1");
  require(X509_sign(certificate, key_.get(), EVP_sha256()));
}

void Certificate::write(const std::filesystem::path& file) const {
  std::FILE* const stream = std::fopen(file.c_str(), "w");
  const bool written = stream && PEM_write_X509(stream, certificate_.get());
  if (!stream || std::fclose(stream) != 0 || !written) {
    throw std::runtime_error("the certificate cannot be written to " + file.string());
  }
}

}  // namespace xel::serve
