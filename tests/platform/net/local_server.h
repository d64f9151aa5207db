// SPDX-License-Identifier: Zlib
// A small HTTP server on a free port of this machine. Its one thread answers one connection after the other,
// each as `answer` says, and closes it.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

namespace fenlight::platform {

class LocalServer {
  public:
    // Gets the connection and the request: its first line and its headers.
    using Answer = std::function<void(int connection, const std::string &request)>;

    // Without an answer the port is taken, but refuses connections.
    explicit LocalServer(Answer answer) : answer_(std::move(answer)) {
        // Proxies of whoever runs the tests know nothing of this server.
        for (const char *name : {"http_proxy", "all_proxy", "ALL_PROXY"}) unsetenv(name);
        socklen_t size = sizeof address_;
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        (void)bind(listener_, reinterpret_cast<sockaddr *>(&address_), size);
        (void)getsockname(listener_, reinterpret_cast<sockaddr *>(&address_), &size);
        if (!answer_) return;
        (void)listen(listener_, 16);
        thread_ = std::thread([this] { Serve(); });
    }
    ~LocalServer() {
        shutdown(listener_, SHUT_RDWR);
        if (thread_.joinable()) thread_.join();
        close(listener_);
    }
    LocalServer(const LocalServer &) = delete;
    LocalServer &operator=(const LocalServer &) = delete;

    std::string Url(const std::string &path) const {
        return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + path;
    }

    static void Send(int connection, const std::string &text) {
        (void)send(connection, text.data(), text.size(), MSG_NOSIGNAL);
    }
    static std::string Page(const std::string &body, const char *status = "200 OK") {
        return std::string("HTTP/1.1 ") + status + "\r\nContent-Length: " + std::to_string(body.size()) +
               "\r\nConnection: close\r\n\r\n" + body;
    }
    // Returns when the caller has gone.
    static void AwaitEnd(int connection) {
        char byte = 0;
        while (recv(connection, &byte, 1, 0) > 0) {
        }
    }

  private:
    void Serve() {
        for (int connection = 0; (connection = accept(listener_, nullptr, nullptr)) >= 0; close(connection)) {
            std::string request;
            char byte = 0;
            while (!request.ends_with("\r\n\r\n") && recv(connection, &byte, 1, 0) == 1) request += byte;
            answer_(connection, request);
            shutdown(connection, SHUT_WR);
            AwaitEnd(connection);
        }
    }

    const Answer answer_;
    const int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address_{};
    std::thread thread_;
};

}  // namespace fenlight::platform
