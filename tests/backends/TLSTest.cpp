#include <string>
#include <vector>

#include <curl/curl.h>
#include <gtest/gtest.h>

#include "backends/CurlHTTPClientTest.h"
#include "backends/NginxProcess.h"
#include "backends/curl/CurlHandles.h"

namespace xel {
namespace {

using test::Listener;
using test::NginxProcess;

/// Makes an authority and the certificates that the servers show; each good but for one thing.
constexpr auto makeCertificates = R"(
set -e
cat >ca.cnf <<'END'
[ca]
default_ca = it
[it]
database = index.txt
new_certs_dir = .
rand_serial = yes
unique_subject = no
default_md = sha256
default_days = 2
policy = names
copy_extensions = copy
[names]
commonName = supplied
END
touch index.txt
new="-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=127.0.0.1"
for authority in trusted unknown; do
  openssl req -x509 $new -keyout $authority.key -out $authority.pem -days 2
done
certify() {
  name=$1 authority=$2 extension=$3
  shift 3
  openssl req $new -keyout $name.key -out $name.csr -addext $extension
  openssl ca -config ca.cnf -batch -notext -in $name.csr -out $name.pem \
    -cert $authority.pem -keyfile $authority.key "$@"
}
here=subjectAltName=IP:127.0.0.1
certify good trusted $here
certify expired trusted $here -startdate 20200101000000Z -enddate 20210101000000Z
certify early trusted $here -startdate 21000101000000Z -enddate 21010101000000Z
certify misnamed trusted subjectAltName=IP:127.0.0.2,DNS:localhost
certify strange unknown $here
openssl req -x509 $new -keyout self.key -out self.pem -days 2 -addext $here
)";

/// A server for each certificate, and one that speaks none but the TLS of 2006.
class TLSTest : public test::CurlHTTPClientTest {
 protected:
  void SetUp() override {
    CurlHTTPClientTest::SetUp();
    servers_.prepare(makeCertificates);
    servers_.start(
        serverAt(good_, "good", "TLSv1.2 TLSv1.3") + serverAt(expired_, "expired", "TLSv1.2") +
            serverAt(early_, "early", "TLSv1.2") + serverAt(misnamed_, "misnamed", "TLSv1.2") +
            serverAt(strange_, "strange", "TLSv1.2") + serverAt(self_, "self", "TLSv1.2") +
            serverAt(old_, "good", "TLSv1 TLSv1.1"),
        {&good_, &expired_, &early_, &misnamed_, &strange_, &self_, &old_});
    client_ = makeCurlHTTPClient({.caFile = caFile()}, loop_);
  }

  static std::string serverAt(const Listener& listener, const std::string& certificate,
                              const std::string& protocols) {
    return "server { listen 127.0.0.1:" + listener.port() + " ssl; ssl_certificate " + certificate +
           ".pem; ssl_certificate_key " + certificate + ".key; ssl_protocols " + protocols +
           "; ssl_ciphers DEFAULT@SECLEVEL=0; return 200 fine; }\n";
  }
  static std::string url(const Listener& listener) {
    return "https://127.0.0.1:" + listener.port() + "/";
  }
  std::string caFile() const { return servers_.folder() / "trusted.pem"; }

  NginxProcess servers_;
  const Listener good_, expired_, early_, misnamed_, strange_, self_, old_;
};

/// Whether libcurl gets an answer if it is told to be content with anything that is called TLS.
bool undemandingClientSucceeds(const std::string& url, const std::string& caFile) {
  const CurlEasy easy(curl_easy_init());
  curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy.get(), CURLOPT_NOBODY, 1L);
  curl_easy_setopt(easy.get(), CURLOPT_CAINFO, caFile.c_str());
  curl_easy_setopt(easy.get(), CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_0));
  curl_easy_setopt(easy.get(), CURLOPT_SSL_CIPHER_LIST, "DEFAULT@SECLEVEL=0");
  return curl_easy_perform(easy.get()) == CURLE_OK;
}

TEST_F(TLSTest, TrustsNoServerThatIsNotTheOneAskedFor) {
  const std::string plain = "https" + server_.plain().substr(4) + "/";
  const struct {
    std::string url;
    const char* description;
  } refused[] = {
      {url(expired_), "certificate has expired"},
      {url(early_), "certificate is not yet valid"},
      {url(misnamed_), "no alternative certificate subject name matches target host name"},
      {url(strange_), "unable to get local issuer certificate"},
      {url(self_), "self-signed certificate"},
      {url(old_), "protocol"},
      {plain, "wrong version number"},
  };
  EXPECT_EQ(fetch(test::get(url(good_))).response.body, "fine");
  EXPECT_TRUE(undemandingClientSucceeds(url(old_), caFile())) << "it is the protocol alone";
  for (const auto& [url, description] : refused) {
    const HTTPResult result = fetch(test::get(url));
    ASSERT_TRUE(result.error) << url;
    EXPECT_EQ(result.error->code, static_cast<int>(TransferError::tlsFailed));
    EXPECT_NE(result.error->description.find(description), std::string::npos)
        << result.error->description;
  }
}

}  // namespace
}  // namespace xel
