#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
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

/// An nginx with a folder of its own. The sockets that it is given are listening before it starts,
/// so nobody has to wait for it.
class NginxProcess {
 public:
  NginxProcess() {
    std::string name = std::filesystem::temp_directory_path() / "xel-nginx-XXXXXX";
    folder_ = mkdtemp(name.data());
  }
  ~NginxProcess() {
    if (getpid() != owner_) return;
    if (process_ > 0) {
      // It may still be starting, and would then forget a request to end.
      kill(-process_, SIGKILL);
      waitpid(process_, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  NginxProcess(const NginxProcess&) = delete;
  NginxProcess& operator=(const NginxProcess&) = delete;

  const std::filesystem::path& folder() const { return folder_; }

  /// Runs a shell script in the folder.
  void prepare(const std::string& script) const {
    const std::string command = "cd " + folder_.string() + " && { " + script + "\n} 2>/dev/null";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("cannot run: " + script);
  }

  /// Starts with the servers of a configuration that listen at these ports.
  void start(const std::string& servers, std::initializer_list<const Listener*> listeners) {
    std::ofstream(folder_ / "nginx.conf")
        << (geteuid() == 0 ? "user root root;" : "") << common << servers << "}";
    // Sockets under these numbers are what nginx takes for those of its predecessor.
    std::string sockets = "NGINX=";
    for (const Listener* listener : listeners) {
      sockets += std::to_string(listener->socket()) + ';';
    }
    process_ = fork();
    if (process_ == 0) {
      setpgid(0, 0);
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      char* environment[] = {sockets.data(), nullptr};
      execle("/usr/sbin/nginx", "nginx", "-e", "error.log", "-p", folder_.c_str(), "-c",
             "nginx.conf", nullptr, environment);
      _exit(127);
    }
    setpgid(process_, process_);
  }

 private:
  static constexpr auto common = R"(
load_module /usr/lib/nginx/modules/ngx_http_echo_module.so;
daemon off; pid nginx.pid; error_log stderr crit;
events { worker_connections 4096; }
http {
  access_log off; keepalive_requests 1000000;
  client_body_temp_path t1; proxy_temp_path t2; fastcgi_temp_path t3; uwsgi_temp_path t4; scgi_temp_path t5;
  default_type text/plain; gzip_types text/plain;
)";

  const pid_t owner_ = getpid();
  std::filesystem::path folder_;
  pid_t process_ = -1;
};

}  // namespace xel::test
