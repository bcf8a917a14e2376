#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xel::test {

/// A listening TCP socket on a free port of the loopback interface, which answers nothing: what
/// connects to it waits.
class Listener {
 public:
  Listener() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket_, generic, length) != 0 || listen(socket_, 512) != 0 ||
        getsockname(socket_, generic, &length) != 0) {
      throw std::runtime_error("cannot listen on the loopback interface");
    }
    port_ = std::to_string(ntohs(address.sin_port));
  }
  ~Listener() { close(socket_); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int socket() const { return socket_; }
  const std::string& port() const { return port_; }
  std::string url() const { return "http://127.0.0.1:" + port_ + "/"; }

  /// Waits until so many have connected, and leaves them connected.
  void awaitConnections(int count) const {
    while (count-- > 0) static_cast<void>(accept(socket_, nullptr, nullptr));
  }

  /// Whether anything has connected.
  bool hasBeenReached() const {
    fcntl(socket_, F_SETFL, O_NONBLOCK);
    const int connection = accept(socket_, nullptr, nullptr);
    if (connection >= 0) close(connection);
    return connection >= 0;
  }

 private:
  int socket_;
  std::string port_;
};

/// An nginx of this process: plain HTTP, and HTTP/1.1 and HTTP/2 over TLS with a certificate for
/// 127.0.0.1 alone. Its sockets are listening before it starts, so nobody has to wait for it.
class NginxServer {
 public:
  static const NginxServer& instance() {
    static const NginxServer server;
    return server;
  }

  const std::string& plain() const { return plain_; }
  const std::string& overHTTP1() const { return overHTTP1_; }
  const std::string& overHTTP2() const { return overHTTP2_; }
  std::string caFile() const { return folder_ / "certificate.pem"; }

  NginxServer(const NginxServer&) = delete;
  NginxServer& operator=(const NginxServer&) = delete;

 private:
  NginxServer() {
    std::string name = std::filesystem::temp_directory_path() / "xel-nginx-XXXXXX";
    folder_ = mkdtemp(name.data());
    const std::string certify =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
        "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 -keyout " +
        name + "/key.pem -out " + caFile() + " 2>/dev/null";
    if (std::system(certify.c_str()) != 0) throw std::runtime_error("cannot run openssl");
    std::ofstream(folder_ / "text") << std::string(10'000, 'a');
    std::ofstream(folder_ / "large").close();
    std::filesystem::resize_file(folder_ / "large", std::size_t{65} << 20);

    const Listener plain, tls, http2;
    plain_ = "http://127.0.0.1:" + plain.port();
    overHTTP1_ = "https://127.0.0.1:" + tls.port();
    overHTTP2_ = "https://127.0.0.1:" + http2.port();
    std::ofstream(folder_ / "nginx.conf")
        << (geteuid() == 0 ? "user root root;" : "") << beforePorts
        << "listen 127.0.0.1:" << plain.port() << "; listen 127.0.0.1:" << tls.port()
        << " ssl; listen 127.0.0.1:" << http2.port() << " ssl http2; set $plain " << plain_ << ";"
        << afterPorts;
    // Sockets under these numbers are what nginx takes for those of its predecessor.
    std::string sockets = "NGINX=";
    for (const Listener* listener : {&plain, &tls, &http2}) {
      sockets += std::to_string(listener->socket()) + ';';
    }
    process_ = fork();
    if (process_ == 0) {
      setpgid(0, 0);
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      char* environment[] = {sockets.data(), nullptr};
      execle("/usr/sbin/nginx", "nginx", "-e", "error.log", "-p", name.c_str(), "-c", "nginx.conf",
             nullptr, environment);
      _exit(127);
    }
    setpgid(process_, process_);
  }

  ~NginxServer() {
    if (getpid() != owner_) return;
    // It may still be starting, and would then forget a request to end.
    kill(-process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  static constexpr auto beforePorts = R"(
load_module /usr/lib/nginx/modules/ngx_http_echo_module.so;
daemon off; pid nginx.pid; error_log stderr crit;
events { worker_connections 4096; }
http {
  access_log off; keepalive_requests 1000000;
  client_body_temp_path t1; proxy_temp_path t2; fastcgi_temp_path t3; uwsgi_temp_path t4; scgi_temp_path t5;
  ssl_certificate certificate.pem; ssl_certificate_key key.pem;
  default_type text/plain; gzip_types text/plain;
  server {
    root .;
)";
  static constexpr auto afterPorts = R"(
    location /text { gzip on; }
    location /large { }
    location /bomb { gzip on; alias large; }
    location /ok { add_header X-Connection $connection; return 200 "fine"; }
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
}
)";

  const pid_t owner_ = getpid();
  std::filesystem::path folder_;
  std::string plain_, overHTTP1_, overHTTP2_;
  pid_t process_ = -1;
};

}  // namespace xel::test
