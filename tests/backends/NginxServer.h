#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "backends/NginxProcess.h"

namespace xel::test {

/// An nginx of this process: plain HTTP, and HTTP/1.1 and HTTP/2 over TLS with a certificate for
/// 127.0.0.1 alone.
class NginxServer {
 public:
  static const NginxServer& instance() {
    static const NginxServer server;
    return server;
  }

  const std::string& plain() const { return plain_; }
  const std::string& overHTTP1() const { return overHTTP1_; }
  const std::string& overHTTP2() const { return overHTTP2_; }
  std::string caFile() const { return process_.folder() / "certificate.pem"; }

  NginxServer(const NginxServer&) = delete;
  NginxServer& operator=(const NginxServer&) = delete;

 private:
  NginxServer() {
    process_.prepare(
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
        "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 -keyout key.pem "
        "-out certificate.pem");
    std::ofstream(process_.folder() / "text") << std::string(10'000, 'a');
    std::ofstream(process_.folder() / "large").close();
    std::filesystem::resize_file(process_.folder() / "large", std::size_t{65} << 20);

    const Listener plain, tls, http2;
    plain_ = "http://127.0.0.1:" + plain.port();
    overHTTP1_ = "https://127.0.0.1:" + tls.port();
    overHTTP2_ = "https://127.0.0.1:" + http2.port();
    process_.start("server { listen 127.0.0.1:" + plain.port() + "; listen 127.0.0.1:" +
                       tls.port() + " ssl; listen 127.0.0.1:" + http2.port() +
                       " ssl http2; set $plain " + plain_ + ";" + locations,
                   {&plain, &tls, &http2});
  }

  static constexpr auto locations = R"(
    ssl_certificate certificate.pem; ssl_certificate_key key.pem; root .;
    location /text { gzip on; }
    location /large { }
    location /bomb { gzip on; alias large; }
    location /ondemand/ { proxy_pass $plain/answer; proxy_set_header X-Port $server_port; }
    location /answer {
      return 200 '{"stream_id":"1","stream_type":"on_demand","stream_manifest":"https://media.example/1","time_events_url":"https://127.0.0.1:$http_x_port/document"}';
    }
    location /document { return 200 '{"ads":{}}'; }
    location /ok { add_header X-Connection $connection; return 200 "fine"; }
    location /never { echo_sleep 3600; }
    location /unhurried { echo_sleep 0.001; echo fine; }
    location /echo {
      proxy_pass $plain/ok;
      add_header X-Request "$server_protocol $request_method $request_uri";
      add_header X-Fields "$http_user_agent|$content_type|$http_x_empty|$http_expect";
      add_header X-Body $request_body;
      add_header X-Authorization $http_authorization;
    }
    location /304 { return 304; }
    location /redirect { absolute_redirect off; return 302 /echo; }
    location /redirect-to-ftp { return 302 ftp://127.0.0.1/x; }
    location /redirect-to-http { return 302 $plain/ok; }
    location /redirect-elsewhere { return 307 http://other.example/echo; }
    location /loop { return 302 /loop; }
  }
)";

  NginxProcess process_;
  std::string plain_, overHTTP1_, overHTTP2_;
};

}  // namespace xel::test
