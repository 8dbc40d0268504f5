// tests/support/HttpServer.h - a server on a local port that answers one request after the other with the test's
// headers.
//
//   HttpServer server;
//   ChildProgram client({..., std::to_string(server.port())});
//   EXPECT_EQ(server.answer("Set-Cookie: a=1\r\n"), "b=2");       // the cookies that the client sent
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace norvik::test {

class HttpServer {
 public:
  HttpServer() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(socket_, plain, size), 0);
    EXPECT_EQ(listen(socket_, 8), 0);
    EXPECT_EQ(getsockname(socket_, plain, &size), 0);
    port_ = ntohs(address.sin_port);
  }
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  ~HttpServer() { close(socket_); }

  [[nodiscard]] int port() const { return port_; }

  /// Waits for a request, answers it with these header lines, and returns the text of its Cookie header, or "none".
  std::string answer(const std::string& headers, const char* status = "200 OK") const {
    pollfd wanted{socket_, POLLIN, 0};
    if (poll(&wanted, 1, 20'000) != 1) {
      ADD_FAILURE() << "no request came";
      return "";
    }
    const int client = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    std::string request;
    char bytes[4096];
    while (request.find("\r\n\r\n") == request.npos) {
      const ssize_t count = read(client, bytes, sizeof bytes);
      if (count <= 0) break;
      request.append(bytes, static_cast<std::size_t>(count));
    }
    const std::string answer =
        std::string("HTTP/1.1 ") + status + "\r\nContent-Length: 0\r\nConnection: close\r\n" + headers + "\r\n";
    EXPECT_EQ(write(client, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
    close(client);
    const std::string name = "\r\nCookie: ";
    const std::size_t start = request.find(name);
    if (start == request.npos) return "none";
    return request.substr(start + name.size(), request.find("\r\n", start + 2) - start - name.size());
  }

 private:
  int socket_;
  int port_ = 0;
};

}  // namespace norvik::test
